#pragma once

#include <string>

#include "recorder/http/request_note.h"
#include "recorder/login/login_service.h"

namespace recorder {

/// An answer as a CGI program gives it (RFC 3875 section 6).
struct TimedAnswer {
  std::string text;
  bool isLate = false;  ///< to be held back for a moment: a password came that was not looked at
};

/// Answers a request below /recorder/1/ and notes who asks. Any thread.
TimedAnswer AnswerLogin(LoginService& service, const HttpRequest& request, RequestNote& note);

/// Answers the web server whether a request with name and password may go on (FastCGI 1.0, section 6.3): it hands the
/// user, his role and the request's id to whoever serves that then. Any thread.
TimedAnswer Authorize(LoginService& service, const HttpRequest& request, RequestNote& note);

}  // namespace recorder
