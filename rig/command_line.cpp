#include "rig/command_line.h"

#include <CLI/CLI.hpp>

namespace rig {

namespace {

struct Adding {
  CLI::App& app;
  const ProgramOption& option;

  void operator()(bool* value) const { app.add_flag(option.name, *value, option.text); }
  template <class Number>
  void operator()(Number* value) const {
    app.add_option(option.name, *value, option.text)
        ->check(CLI::Range(option.least, option.most))
        ->capture_default_str();
  }
};

}  // namespace

std::optional<int> ReadCommandLine(const std::string& program, const std::string& about,
                                   const std::vector<ProgramOption>& options, int argc, char** argv) {
  CLI::App app(about, program);
  for (const ProgramOption& option : options) std::visit(Adding{app, option}, option.value);
  try {
    app.parse(argc, argv);
    return std::nullopt;
  } catch (const CLI::ParseError& end) {
    return app.exit(end);
  }
}

}  // namespace rig
