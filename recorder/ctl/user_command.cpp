#include "recorder/ctl/user_command.h"

#include <json/json.h>

#include <iostream>
#include <memory>
#include <stdexcept>

#include "recorder/ctl/password_input.h"
#include "recorder/ctl/state_folder.h"
#include "recorder/ctl/users.h"
#include "recorder/http/cgi_answer.h"
#include "recorder/utility/secrets.h"

namespace recorder {

namespace {

struct UserOptions {
  std::string name;
  bool isRandom = false;
  bool isJson = false;
};

void Add(const UserOptions& options, const std::filesystem::path& stateFolder) {
  std::string password = options.isRandom ? RandomPassword() : ReadPassword("Password of " + options.name);
  const WipeAtEnd wipe(password);
  if (password.empty()) throw std::runtime_error("no password on standard input; --random makes one");
  StoreUser(stateFolder, options.name, password);
  if (options.isRandom) std::cout << password << "\n";
}

void Remove(const std::string& name, const std::filesystem::path& stateFolder) {
  if (!RemoveUser(stateFolder, name)) throw std::runtime_error("there is no user " + name);
}

void List(const UserOptions& options, const std::filesystem::path& stateFolder) {
  Json::Value list(Json::arrayValue);
  for (const std::string& name : ListUsers(stateFolder)) {
    list.append(name);
    if (!options.isJson) std::cout << name << "\n";
  }
  if (options.isJson) std::cout << ToText(list) << "\n";
}

}  // namespace

void AddUserCommands(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand("user", "Manage the users who may log in");
  command->require_subcommand(1);
  const auto options = std::make_shared<UserOptions>();

  CLI::App* add =
      command->add_subcommand("add", "Add a user, or give one a new password, read from standard input or a prompt");
  add->add_option("name", options->name, "user name")->required();
  add->add_flag("--random", options->isRandom, "make a random password and print it");
  add->footer("Examples:\n  recorderctl user add admin\n  recorderctl user add hall --random");
  add->callback([options, &configOption] { Add(*options, StateFolder(configOption)); });

  CLI::App* remove = command->add_subcommand("remove", "Remove a user");
  remove->add_option("name", options->name, "user name")->required();
  remove->footer("Example:\n  recorderctl user remove hall");
  remove->callback([options, &configOption] { Remove(options->name, StateFolder(configOption)); });

  CLI::App* list = command->add_subcommand("list", "List the users, one a line");
  list->add_flag("--json", options->isJson, "print JSON");
  list->footer("Example:\n  recorderctl user list");
  list->callback([options, &configOption] { List(*options, StateFolder(configOption)); });
}

}  // namespace recorder
