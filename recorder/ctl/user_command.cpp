#include "recorder/ctl/user_command.h"

#include <json/json.h>

#include <iostream>
#include <memory>
#include <stdexcept>

#include "recorder/access/password_hash.h"
#include "recorder/access/users.h"
#include "recorder/ctl/password_input.h"
#include "recorder/ctl/state_folder.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/secrets.h"

namespace recorder {

namespace {

struct UserOptions {
  std::string name;
  std::string role;  // "": an admin if it is the first user, else a user; of one who is there already, his own
  bool isRandom = false;
  bool isJson = false;
};

PasswordHasher HasherOf(const std::string& configOption) {
  return [cost = LoadConfig(FindConfigFile(configOption)).hashCost](const std::string& password) {
    return HashPassword(password, cost);
  };
}

/// Adds the user, or gives him the new password.
void Store(const UserOptions& options, const std::string& password, const std::filesystem::path& folder,
           const PasswordHasher& hash) {
  const std::vector<User> users = ReadUsers(folder);
  const std::optional<Role> role = ParseRole(options.role);
  if (FindUser(users, options.name) != nullptr) {
    ChangeUser(folder, options.name, {password, role}, hash);
  } else {
    AddUser(folder, options.name, password, role.value_or(users.empty() ? Role::kAdmin : Role::kUser), hash);
  }
}

void Add(const UserOptions& options, const std::string& configOption) {
  std::string password = options.isRandom ? RandomPassword() : ReadPassword("Password of " + options.name);
  const WipeAtEnd wipe(password);
  if (password.empty()) throw std::runtime_error("no password on standard input; --random makes one");
  Store(options, password, StateFolder(configOption), HasherOf(configOption));
  if (options.isRandom) std::cout << password << "\n";
}

void List(const UserOptions& options, const std::filesystem::path& stateFolder) {
  Json::Value list(Json::arrayValue);
  for (const User& user : ReadUsers(stateFolder)) {
    Json::Value entry(Json::objectValue);
    entry["name"] = user.name;
    entry["role"] = std::string(NameOf(user.role));
    list.append(entry);
    if (!options.isJson) std::cout << user.name << "\t" << NameOf(user.role) << "\n";
  }
  if (options.isJson) std::cout << ToText(list) << "\n";
}

void DefineAdd(CLI::App& command, const std::shared_ptr<UserOptions>& options, const std::string& configOption) {
  CLI::App* add =
      command.add_subcommand("add", "Add a user, or give one a new password, read from standard input or a prompt");
  add->add_option("name", options->name, "user name")->required();
  add->add_option("--role", options->role, "what he may do (default: admin for the first user, user for others)")
      ->check(CLI::IsMember({"admin", "user"}));
  add->add_flag("--random", options->isRandom, "make a random password and print it");
  add->footer(
      "A password has at least 8 characters. A new password or role ends the user's sessions.\n"
      "Examples:\n"
      "  recorderctl user add admin\n"
      "  recorderctl user add hall --role user --random");
  add->callback([options, &configOption] { Add(*options, configOption); });
}

}  // namespace

void AddUserCommands(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand("user", "Manage the users who may log in");
  command->require_subcommand(1);
  const auto options = std::make_shared<UserOptions>();
  DefineAdd(*command, options, configOption);

  CLI::App* remove = command->add_subcommand("remove", "Remove a user, with his sessions and tokens");
  remove->add_option("name", options->name, "user name")->required();
  remove->footer("Example:\n  recorderctl user remove hall");
  remove->callback([options, &configOption] { RemoveUser(StateFolder(configOption), options->name); });

  CLI::App* list = command->add_subcommand("list", "List the users and their roles, one a line");
  list->add_flag("--json", options->isJson, "print JSON");
  list->footer("Example:\n  recorderctl user list");
  list->callback([options, &configOption] { List(*options, StateFolder(configOption)); });
}

}  // namespace recorder
