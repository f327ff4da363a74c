#include "recorder/ctl/health_command.h"

#include <iostream>
#include <stdexcept>

#include "recorder/ctl/health_question.h"
#include "recorder/ctl/serve/served_address.h"
#include "recorder/ctl/state_folder.h"

namespace recorder {

void AddHealthCommand(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand(
      "health", "Ask the server that this configuration is of, on this machine, whether it is alive");
  command->footer(
      "The exit status is 0 when it is, else 1, with the reason. It is made for checks of a container. "
      "Where the server is asked stands in the configuration's state folder, which has to be readable.");
  command->callback([&configOption] {
    const std::string reason = WhyNotAlive(ServedAddress::ReadLocal(StateFolder(configOption)));
    if (!reason.empty()) throw std::runtime_error("the recorder does not answer: " + reason);
    std::cout << "alive\n";
  });
}

}  // namespace recorder
