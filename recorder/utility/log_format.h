#pragma once

namespace recorder {

/// How an entry of the log is written.
enum class LogFormat {
  kText,  ///< for people
  kJson,  ///< a JSON object a line, for programs
};

}  // namespace recorder
