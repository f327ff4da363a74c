#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace rig {

/// An option of a program of tests or benchmarks.
struct ProgramOption {
  const char* name;  ///< such as "--rounds"
  /// Where the number that follows goes; what stands there is kept without it. A bool's option has no number, and
  /// clears it where the name begins with "!".
  std::variant<bool*, int*, unsigned int*, std::uint64_t*> value;
  const char* text = "";
  std::int64_t least = 0;
  std::int64_t most = std::numeric_limits<std::int64_t>::max();
};

/// Reads a command line into the values of its options. Gives the program's exit status where it has nothing else to
/// do: what --help asks for has been printed, or a mistake has been named. Programs read theirs by this, since CLI11's
/// templates take longer to compile, and to check, than most of them.
std::optional<int> ReadCommandLine(const std::string& program, const std::string& about,
                                   const std::vector<ProgramOption>& options, int argc, char** argv);

}  // namespace rig
