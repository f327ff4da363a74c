#pragma once

#include <string>

#include "recorder/device/find/find.h"

namespace recorder {

// What was found, for people: without control characters of the camera's. Pure.

/// One line about what has just ended.
std::string TextOf(FindStep step, const FindResult& soFar);

/// What it means, and what to do.
std::string TextOf(FindWarning warning, const FindResult& result);

/// A stream's address, as other programs take it, without the login.
std::string AddressOf(const std::string& host, const ListedStream& stream);

/// Lines of what is known of the camera at `host`, then a table of its streams, with tabs between.
std::string TextOf(const std::string& host, const FindResult& result);

}  // namespace recorder
