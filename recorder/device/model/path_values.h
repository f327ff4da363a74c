#pragma once

#include <string_view>

namespace recorder {

/// True for a value that stands in the paths of many cameras, whoever owns them: small numbers, a size of pictures, and
/// words for streams, codecs and ways to send ("profile_1", "1920x1080", "tcp"). Capitals make no difference; a
/// placeholder is none of them. Pure; any thread.
bool IsCommonValue(std::string_view value);

}  // namespace recorder
