#include <cstdio>

#include "tests/fuzz/fuzz.h"
#include "tests/sessions/session_run.h"

// The choices of which a camera, a network and a clock are made, with any bytes in an answer.

namespace recorder {

void RunInput(std::string_view input) {
  const std::string mistake = sessions::RunSession(sessions::Chance(input), false).mistake;
  if (!mistake.empty()) std::printf("%s\n", mistake.c_str());
  Require(mistake.empty());
}

}  // namespace recorder
