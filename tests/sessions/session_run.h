#pragma once

#include <string>

#include "tests/sessions/chance.h"

namespace sessions {

/// How one session went.
struct Run {
  std::string mistake;  ///< the promise that was not kept; "" when all were
  std::string outcome;
  std::string story;  ///< what was said and heard, when, and how it ended
};

/// Lets a session talk with a camera that `chance` makes, over a network and by a clock that are as little real.
Run RunSession(Chance chance, bool tells);

}  // namespace sessions
