#include "recorder/ctl/token_command.h"

#include <iostream>
#include <memory>
#include <stdexcept>

#include "recorder/access/granting.h"
#include "recorder/access/users.h"
#include "recorder/ctl/only_user.h"
#include "recorder/ctl/state_folder.h"
#include "recorder/ctl/time_text.h"
#include "recorder/utility/clock.h"

namespace recorder {

namespace {

struct TokenOptions {
  std::string name;
  std::string user;   // "": the only one
  std::string until;  // "": without an end
};

void Add(const TokenOptions& options, const std::filesystem::path& stateFolder) {
  const std::string user = options.user.empty() ? OnlyUser(stateFolder) : options.user;
  const std::int64_t until = options.until.empty() ? 0 : EndOfDay(options.until);
  std::cout << AddToken(stateFolder, user, options.name, until).secret << "\n";
}

void PrintTokens(const std::filesystem::path& stateFolder) {
  for (const Grant& grant : ReadGrants(stateFolder)) {
    if (!grant.IsToken() || !grant.IsValid(SecondsNow())) continue;
    std::cout << grant.label << "\t" << grant.user << "\t" << TimeText(grant.created) << "\t"
              << TimeText(grant.lastUsed) << "\t" << TimeText(grant.until) << "\n";
  }
}

void Remove(const TokenOptions& options, const std::filesystem::path& stateFolder) {
  const auto isMeant = [&](const Grant& grant) { return grant.IsToken() && grant.label == options.name; };
  if (EndGrants(stateFolder, isMeant) == 0) throw std::runtime_error("there is no token " + options.name);
}

}  // namespace

void AddTokenCommands(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand("token", "Manage the tokens by which scripts log in (Authorization: Bearer)");
  command->require_subcommand(1);
  const auto options = std::make_shared<TokenOptions>();

  CLI::App* add = command->add_subcommand("add", "Make a token and print it, this once");
  add->add_option("name", options->name, "what it is for")->required();
  add->add_option("--user", options->user, "whose role it has, and with whom it ends (default: the only user)");
  add->add_option("--until", options->until, "its last day, in UTC, such as 2027-01-31 (default: it has no end)");
  add->footer("Example:\n  recorderctl token add backup --user admin --until 2027-01-31");
  add->callback([options, &configOption] { Add(*options, StateFolder(configOption)); });

  CLI::App* list = command->add_subcommand(
      "list", "List the tokens, one a line: name, user, and in UTC begin, last use (within half an hour), end");
  list->footer("Example:\n  recorderctl token list");
  list->callback([&configOption] { PrintTokens(StateFolder(configOption)); });

  CLI::App* remove = command->add_subcommand("remove", "Remove a token");
  remove->add_option("name", options->name, "its name")->required();
  remove->footer("Example:\n  recorderctl token remove backup");
  remove->callback([options, &configOption] { Remove(*options, StateFolder(configOption)); });
}

}  // namespace recorder
