#include "recorder/ctl/session_command.h"

#include <iostream>
#include <memory>
#include <stdexcept>

#include "recorder/access/granting.h"
#include "recorder/ctl/state_folder.h"
#include "recorder/ctl/time_text.h"
#include "recorder/utility/clock.h"

namespace recorder {

namespace {

struct SessionOptions {
  std::string id;
  std::string user;
};

void PrintSessions(const std::filesystem::path& stateFolder) {
  for (const Grant& grant : ReadGrants(stateFolder)) {
    if (grant.kind != Grant::Kind::kSession || !grant.IsValid(SecondsNow())) continue;
    std::cout << grant.id << "\t" << grant.user << "\t" << grant.label << "\t" << TimeText(grant.created) << "\t"
              << TimeText(grant.lastUsed) << "\t" << TimeText(grant.until) << "\n";
  }
}

void End(const SessionOptions& options, const std::filesystem::path& stateFolder) {
  if (options.id.empty() && options.user.empty()) throw std::runtime_error("name a session, or a user by --user");
  const auto count = EndGrants(stateFolder, [&](const Grant& grant) {
    return grant.kind == Grant::Kind::kSession &&
           (options.id.empty() ? grant.user == options.user : grant.id == options.id);
  });
  if (count == 0) throw std::runtime_error("there is no such session");
  std::cout << "ended " << count << " sessions\n";
}

}  // namespace

void AddSessionCommands(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand("session", "List and end the sessions of users who logged in on the page");
  command->require_subcommand(1);
  const auto options = std::make_shared<SessionOptions>();

  CLI::App* list = command->add_subcommand(
      "list",
      "List the sessions, one a line: id, user, address, and in UTC begin, last use (within half an hour), end");
  list->footer("Example:\n  recorderctl session list");
  list->callback([&configOption] { PrintSessions(StateFolder(configOption)); });

  CLI::App* end = command->add_subcommand("end", "End a session, or all of a user");
  CLI::Option* id = end->add_option("id", options->id, "the session's id");
  end->add_option("--user", options->user, "end all sessions of this user")->excludes(id);
  end->footer("Example:\n  recorderctl session end --user hall");
  end->callback([options, &configOption] { End(*options, StateFolder(configOption)); });
}

}  // namespace recorder
