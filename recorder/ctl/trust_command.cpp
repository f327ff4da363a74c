#include "recorder/ctl/trust_command.h"

#include <json/json.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

#include "recorder/ctl/password_input.h"
#include "recorder/ctl/state_folder.h"
#include "recorder/records/records.h"
#include "recorder/records/trust.h"
#include "recorder/utility/json_text.h"

namespace recorder {

namespace {

struct TrustOptions {
  std::string name;
  bool isGroup = false;
  bool hasKey = false;
  bool isJson = false;

  TrustKind Kind() const { return isGroup ? TrustKind::kServerGroup : TrustKind::kClient; }
};

SecretKey ReadKey() {
  std::string text = ReadPassword("Key");
  const WipeAtEnd wipe(text);
  const std::optional<SecretKey> key = SecretKey::FromHex(text);
  if (!key) throw std::runtime_error("a key is 64 hexadecimal digits on standard input");
  return *key;
}

void Add(const TrustOptions& options, Records records) {
  const SecretKey key = options.hasKey ? ReadKey() : SecretKey::Random();
  if (!records.AddKey(options.Kind(), options.name, key)) {
    throw std::runtime_error("there is a key of " + options.name + " already; remove it first");
  }
  if (!options.hasKey) std::cout << key.Hex() << "\n";
}

void Remove(const TrustOptions& options, Records records) {
  if (!records.RemoveKey(options.Kind(), options.name)) throw std::runtime_error("there is no key of " + options.name);
}

void List(const TrustOptions& options, const Records& records) {
  Json::Value list(Json::arrayValue);
  for (const auto& [kind, kindName] : {std::pair(TrustKind::kClient, "client"), {TrustKind::kServerGroup, "group"}}) {
    for (const TrustedKey& trusted : records.ListKeys(kind)) {
      Json::Value& entry = list.append(Json::Value(Json::objectValue));
      entry["kind"] = kindName;
      entry["name"] = trusted.name;
      if (!options.isJson) std::cout << kindName << '\t' << trusted.name << '\n';
    }
  }
  if (options.isJson) std::cout << ToText(list) << '\n';
}

void PrintPair(const TrustOptions& options, const Records& records) {
  const std::vector<TrustedKey> keys = records.ListKeys(options.Kind());
  const auto trusted =
      std::find_if(keys.begin(), keys.end(), [&](const TrustedKey& key) { return key.name == options.name; });
  if (trusted == keys.end()) throw std::runtime_error("there is no key of " + options.name);
  const TrustPair pair = MakePair(trusted->key);
  std::cout << "cookie " << pair.cookie << "\ntimestamp " << pair.timestamp << "\n";
}

}  // namespace

void AddTrustCommands(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand("trust", "Manage the keys of trusted clients and of the server group");
  command->require_subcommand(1);
  const auto options = std::make_shared<TrustOptions>();
  const auto addNamed = [&](const char* name, const char* description) {
    CLI::App* named = command->add_subcommand(name, description);
    named->add_option("name", options->name, "whom the key is for")->required();
    named->add_flag("--group", options->isGroup, "a server of this recorder's own group, not a client");
    return named;
  };

  CLI::App* add = addNamed("add", "Make a key and print it this once");
  add->add_flag("--key", options->hasKey, "read the key from standard input or a prompt instead of making one");
  add->footer(
      "Examples:\n"
      "  recorderctl trust add hall\n"
      "  recorderctl trust add north --group --key < north.key");
  add->callback([options, &configOption] { Add(*options, Records(StateFolder(configOption))); });
  CLI::App* remove = addNamed("remove", "Remove a key");
  remove->footer("Example:\n  recorderctl trust remove hall");
  remove->callback([options, &configOption] { Remove(*options, Records(StateFolder(configOption))); });
  CLI::App* list = command->add_subcommand("list", "List whose keys there are");
  list->add_flag("--json", options->isJson, "print JSON");
  list->footer("Example:\n  recorderctl trust list");
  list->callback([options, &configOption] { List(*options, Records(StateFolder(configOption))); });
  CLI::App* pair = addNamed("pair", "Print a cookie and timestamp that are valid for five minutes");
  pair->footer(
      "Example, for a client whose key was made with \"recorderctl trust add hall\":\n  recorderctl trust pair hall");
  pair->callback([options, &configOption] { PrintPair(*options, Records(StateFolder(configOption))); });
}

}  // namespace recorder
