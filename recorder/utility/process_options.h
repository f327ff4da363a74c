#pragma once

#include <optional>
#include <string>
#include <vector>

namespace recorder {

/// A process of the recorder, as --version and --help tell of it.
struct ProcessText {
  const char* name;
  const char* about;
};

/// An option with a value.
struct ProcessOption {
  const char* name;
  std::string& value;  ///< where it goes; what stands there is kept where nobody gives the option
  const char* text;
  const char* variable = "";  ///< of the environment, which gives the value instead; "": none
};

/// Reads what a process was started with, into the values of its options. Gives the process's exit status where it has
/// nothing else to do: what --help or --version asks for has been printed, or a mistake has been named. recorderctl,
/// which has commands, reads its own.
std::optional<int> ReadOptions(const ProcessText& process, const std::vector<ProcessOption>& options, int argc,
                               char** argv);

}  // namespace recorder
