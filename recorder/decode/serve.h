#pragma once

#include <functional>
#include <optional>
#include <span>

#include "recorder/decode/answerer.h"

namespace recorder {

/// What is done for a request; see Answerer::Answer.
using Handler = std::function<std::optional<Reply>(const MediaRequestHead& head, std::span<const std::uint8_t> bytes)>;

/// Answers what comes over standard input, a socket, until that is closed. `missing`: the parts of the sandbox that
/// this process lacks. What is logged meanwhile goes into the answers.
void ServeMedia(std::uint32_t missing, Answerer& answerer, const Handler& handle);

}  // namespace recorder
