#pragma once

#include <optional>

#include "simcam/config.h"
#include "simcam/http_answer.h"

namespace simcam {

/// What is answered instead of looking at the request at all; waits where the trouble is slowness. kRedirectTls leads
/// to `tlsPort` of 127.0.0.1, as long as the request did not come from there (`overTls`).
std::optional<HttpAnswer> TroubleInstead(Trouble trouble, const std::string& target, int tlsPort, bool overTls);

/// Spoils a good XML answer.
void Spoil(Trouble trouble, HttpAnswer& answer);

}  // namespace simcam
