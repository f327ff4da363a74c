#include "recorder/ctl/completion_command.h"

#include <algorithm>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/ctl/method_parameters.h"

namespace recorder {

namespace {

/// What can follow the words `path` of a command line, the first word left out.
struct Branch {
  std::string path;
  std::string words;
};

std::string OptionsOf(const CLI::App& app) {
  std::string words;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) words += "--" + name + " ";
  }
  return words;
}

/// The command `app`, which stands behind the commands `path`, and each below it.
void AddCommands(const CLI::App& app, const std::string& path, std::vector<Branch>& branches) {
  std::string words;
  for (const CLI::App* subcommand : app.get_subcommands(nullptr)) words += subcommand->get_name() + " ";
  branches.push_back({path, words + OptionsOf(app)});
  for (const CLI::App* subcommand : app.get_subcommands(nullptr)) {
    AddCommands(*subcommand, path + " " + subcommand->get_name(), branches);
  }
}

/// `names`, which have blanks between them, each as the beginning of `key=value`.
std::string AsKeys(std::string_view names) {
  if (names.empty()) return "";
  std::string keys;
  for (const char c : names) keys += c == ' ' ? std::string("= ") : std::string(1, c);
  return keys + "= ";
}

/// The methods of `call`, and the parameters of each.
void AddMethods(std::vector<Branch>& branches) {
  const auto call = std::find_if(branches.begin(), branches.end(), [](const Branch& b) { return b.path == " call"; });
  const Branch before = *call;
  for (const MethodParameters& row : kMethodParameters) call->words += std::string(row.method) + " ";
  for (const auto& [method, names] : kMethodParameters) {
    branches.push_back({before.path + " " + std::string(method), AsKeys(names) + before.words});
  }
}

void PrintBashCompletion(const std::vector<Branch>& branches) {
  std::string paths;
  for (const Branch& branch : branches) paths += (paths.empty() ? "\"" : "|\"") + branch.path + '"';
  std::cout << "_recorderctl() {\n"
               "  local path= word words\n"
               "  case \" ${COMP_WORDS[*]:COMP_CWORD-1:2} \" in *' = '*) return ;; esac  # a value\n"
               "  for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
               "    case \"$path $word\" in\n"
               "    "
            << paths
            << ") path+=\" $word\" ;;\n"
               "    esac\n"
               "  done\n"
               "  case \"$path\" in\n";
  for (const Branch& branch : branches) {
    std::cout << "    \"" << branch.path << "\") words='" << branch.words << "' ;;\n";
  }
  std::cout << "  esac\n"
               "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"${COMP_WORDS[COMP_CWORD]}\")\n"
               "  case \"${COMPREPLY[*]}\" in *=) compopt -o nospace ;; esac\n"
               "}\n"
               "complete -o default -F _recorderctl recorderctl\n";
}

void RunCompletion(const CLI::App& app) {
  std::vector<Branch> branches;
  AddCommands(app, "", branches);
  AddMethods(branches);
  PrintBashCompletion(branches);
}

}  // namespace

void AddCompletionCommand(CLI::App& app) {
  app.add_subcommand("completion", "Print what makes bash complete these commands")
      ->footer("Example:\n  eval \"$(recorderctl completion)\"")
      ->callback([&app] { RunCompletion(app); });
}

}  // namespace recorder
