#include "recorder/ctl/health_command.h"

#include <iostream>
#include <stdexcept>

#include "recorder/ctl/health_question.h"
#include "recorder/ctl/serve/served_address.h"
#include "recorder/ctl/state_folder.h"

namespace recorder {

void AddHealthCommand(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand("health", "Ask the server that runs on this machine whether it is alive");
  command->footer("The exit status is 0 when it is, else 1, with the reason. It is made for checks of a container.");
  command->callback([&configOption] {
    const std::string reason = WhyNotAlive(ServedAddress::ReadLocal(StateFolder(configOption)));
    if (!reason.empty()) throw std::runtime_error("the recorder does not answer: " + reason);
    std::cout << "alive\n";
  });
}

}  // namespace recorder
