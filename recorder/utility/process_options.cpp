#include "recorder/utility/process_options.h"

#include <CLI/CLI.hpp>

namespace recorder {

std::optional<int> ReadOptions(const ProcessText& process, const std::vector<ProcessOption>& options, int argc,
                               char** argv) {
  CLI::App app(process.about, process.name);
  app.set_version_flag("--version", std::string(process.name) + " " PROJECT_VERSION);
  for (const ProcessOption& option : options) {
    app.add_option(option.name, option.value, option.text)->envname(option.variable);
  }
  try {
    app.parse(argc, argv);
    return std::nullopt;
  } catch (const CLI::ParseError& end) {
    return app.exit(end);
  }
}

}  // namespace recorder
