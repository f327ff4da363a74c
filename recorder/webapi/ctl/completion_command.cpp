#include "recorder/webapi/ctl/completion_command.h"

#include <iostream>
#include <string>

namespace recorder {

namespace {

/// What can follow the command `app`: its subcommands and its options.
std::string WordsAfter(const CLI::App& app) {
  std::string words;
  for (const CLI::App* subcommand : app.get_subcommands(nullptr)) words += subcommand->get_name() + " ";
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) words += "--" + name + " ";
  }
  return words;
}

/// One branch of the shell's `case` for `app`, which stands behind the commands `path`, and one for each below it.
void PrintBranches(const CLI::App& app, const std::string& path) {
  std::cout << "    \"" << path << "\") words='" << WordsAfter(app) << "' ;;\n";
  for (const CLI::App* subcommand : app.get_subcommands(nullptr)) {
    PrintBranches(*subcommand, path + " " + subcommand->get_name());
  }
}

void PrintCommands(const CLI::App& app, const std::string& path) {
  for (const CLI::App* subcommand : app.get_subcommands(nullptr)) {
    const std::string command = path + " " + subcommand->get_name();
    std::cout << "|\"" << command << '"';
    PrintCommands(*subcommand, command);
  }
}

void PrintBashCompletion(const CLI::App& app) {
  std::cout << "_recorderctl() {\n"
               "  local path= word words\n"
               "  for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
               "    case \"$path $word\" in\n"
               "    \"\"";
  PrintCommands(app, "");
  std::cout << ") path+=\" $word\" ;;\n"
               "    esac\n"
               "  done\n"
               "  case \"$path\" in\n";
  PrintBranches(app, "");
  std::cout << "  esac\n"
               "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"${COMP_WORDS[COMP_CWORD]}\")\n"
               "}\n"
               "complete -o default -F _recorderctl recorderctl\n";
}

}  // namespace

void AddCompletionCommand(CLI::App& app) {
  app.add_subcommand("completion", "Print what makes bash complete these commands")
      ->footer("Example:\n  eval \"$(recorderctl completion)\"")
      ->callback([&app] { PrintBashCompletion(app); });
}

}  // namespace recorder
