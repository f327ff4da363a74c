#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "recorder/watch/checkers.h"

// What goes over the socket between a checker and the process that it is a copy of: a length of four bytes, and as many
// bytes of JSON. Both ends are this program.

namespace recorder {

std::string ToMessage(const CheckJob& job);
std::string ToMessage(const CheckAnswer& answer);

/// What a message without its length says. Throws Json::Exception or std::runtime_error.
CheckJob ReadJob(std::string_view text);
CheckAnswer ReadAnswer(std::string_view text);

/// Takes the first whole message off the front of what was received, without its length.
std::optional<std::string> TakeMessage(std::string& received);

}  // namespace recorder
