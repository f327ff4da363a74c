#pragma once

#define NO_FCGI_DEFINES
#include <fcgiapp.h>

#include <string>

#include "recorder/http/exchange.h"

namespace recorder {

/// A request over FastCGI, for as long as that lives.
Exchange FastCgiExchange(FCGX_Request& request);

/// Sends `answer`, or what is left of it, and ends the request.
void Finish(FCGX_Request& request, const std::string& answer);

}  // namespace recorder
