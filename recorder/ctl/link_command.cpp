#include "recorder/ctl/link_command.h"

#include <iostream>
#include <memory>

#include "recorder/access/granting.h"
#include "recorder/access/users.h"
#include "recorder/ctl/only_user.h"
#include "recorder/ctl/serve/served_address.h"
#include "recorder/ctl/state_folder.h"

namespace recorder {

namespace {

/// Without a user, the link is for whoever makes the first one.
void PrintLink(const std::string& user, const std::filesystem::path& stateFolder) {
  const std::string address = ServedAddress::Read(stateFolder);
  const bool hasUsers = !ReadUsers(stateFolder).empty();
  const std::string whose = user.empty() && hasUsers ? OnlyUser(stateFolder) : user;
  std::cout << address << "#link=" << AddLink(stateFolder, whose).secret << "\n";
}

}  // namespace

void AddLinkCommand(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand(
      "link", "Print an address that signs a user in, once within 10 minutes; without a user, it makes the first one");
  const auto user = std::make_shared<std::string>();
  command->add_option("--user", *user, "whom it signs in (default: the only user)");
  command->footer("Example:\n  recorderctl link --user admin");
  command->callback([user, &configOption] { PrintLink(*user, StateFolder(configOption)); });
}

}  // namespace recorder
