#pragma once

#include <cstdint>
#include <span>

namespace recorder {

/// True when libjpeg reads all data of a JPEG with all its markers, and finds none of it missing or damaged. What it
/// can put right without a guess, such as bytes too many, does not count. Takes the time of reading the data, hardly
/// any to make a picture of it. Any thread.
bool DecodesWhole(std::span<const std::uint8_t> jpeg);

}  // namespace recorder
