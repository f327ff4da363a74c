#pragma once

#include <cstddef>

namespace sessions {

/// What this thread's sessions hold. The operators of held_memory.cpp count; in a program without them it stays 0.
struct HeldMemory {
  std::size_t bytes = 0;
  std::size_t most = 0;
  bool isCounting = false;
};
inline thread_local HeldMemory heldMemory;

/// What is taken from the heap while it lives is held by a session, until it is given back.
class Counting {
 public:
  Counting() { heldMemory.isCounting = true; }
  ~Counting() { heldMemory.isCounting = false; }
  Counting(const Counting&) = delete;
  Counting& operator=(const Counting&) = delete;
};

}  // namespace sessions
