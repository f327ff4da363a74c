#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace recorder {

/// `discover`: looks for cameras in the network and prints them, as a list that `camera import` takes or in JSON. Needs
/// no configuration; with one, its address policy holds, and stored cameras are told.
void AddDiscoverCommand(CLI::App& app, const std::string& configOption);

}  // namespace recorder
