#pragma once

#include <CLI/CLI.hpp>

namespace recorder {

/// `discover`: asks the local network for ONVIF cameras and prints them, as a list that `camera import` takes or in
/// JSON. Needs no configuration.
void AddDiscoverCommand(CLI::App& app);

}  // namespace recorder
