#include "recorder/ctl/whole_help.h"

#include <memory>
#include <string>

namespace recorder {

namespace {

/// Puts the help of all commands behind the program's own.
class WholeHelp : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
    if (mode != CLI::AppFormatMode::All) return Formatter::make_help(app, name, mode);
    return Formatter::make_help(app, name, CLI::AppFormatMode::Normal) + HelpOfCommands(*app, name);
  }

 private:
  /// Of each command below `app` that has none below itself. `path` are the words that call `app`.
  std::string HelpOfCommands(const CLI::App& app, const std::string& path) const {
    std::string text;
    for (const CLI::App* command : app.get_subcommands(nullptr)) {
      const std::string name = path + " " + command->get_name();
      const bool isLast = command->get_subcommands(nullptr).empty();
      text += isLast ? "\n" + name + "\n\n" + Formatter::make_help(command, name, CLI::AppFormatMode::Normal)
                     : HelpOfCommands(*command, name);
    }
    return text;
  }
};

}  // namespace

void AddWholeHelp(CLI::App& app) {
  app.formatter(std::make_shared<WholeHelp>());
  app.set_help_all_flag("--help-all", "Print the help of every command and exit");
}

}  // namespace recorder
