#pragma once

#include <optional>

#include "simcam/config.h"
#include "simcam/http_answer.h"
#include "simcam/http_service.h"

namespace simcam {

/// What is answered instead of looking at the request at all; waits where the trouble is slowness. kRedirectTls leads
/// to the TLS port of 127.0.0.1, as long as the request did not come to that.
std::optional<HttpAnswer> TroubleInstead(Trouble trouble, const std::string& target, const Entrance& entrance);

/// Spoils a good XML answer.
void Spoil(Trouble trouble, HttpAnswer& answer);

}  // namespace simcam
