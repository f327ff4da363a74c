#pragma once

#include <string>

namespace recorder {

/// Refuses a user who has half of the calling worker's pool at work for him while the line before it is long: so one
/// user, whose requests are answered though he may have gone, takes neither all of that line nor all connections of the
/// web server. Throws HttpError (429).
void RefuseCrowd(const std::string& user);

}  // namespace recorder
