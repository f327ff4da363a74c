#pragma once

#include <json/value.h>

#include <string>
#include <string_view>

#include "recorder/device/find/find.h"

namespace recorder {

// What was found, as programs get it. Pure; any thread.

/// The names by which callers are told.
std::string_view NameOf(FindLogin login);
std::string_view NameOf(FindWarning warning);
std::string_view NameOf(FindStep step);

/// What is known when a step has ended.
Json::Value StepJson(FindStep step, const FindResult& soFar);

/// All that was found at `host`, each stream with what its record has to say.
Json::Value FindJson(const std::string& host, const FindResult& result);

}  // namespace recorder
