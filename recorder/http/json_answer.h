#pragma once

#include <json/value.h>

#include <exception>
#include <string>
#include <string_view>

#include "recorder/http/http_request.h"

namespace recorder {

// Answers as a CGI program gives them (RFC 3875 section 6): header lines, an empty line, the body.

/// Header lines of every answer. One may hold a picture of somebody's home: nothing on the way keeps it, and no browser
/// takes it for a script. By its id the request is found in the log.
std::string CommonHeaders();

/// `headers`: more header lines, each with its end. `text` is that of the JSON.
std::string JsonTextAnswer(int status, std::string_view text, std::string_view headers = {});
std::string JsonAnswer(int status, const Json::Value& json, const std::string& headers = {});

/// What a failure outside the module looks like: the HTTP status is its code.
Json::Value Failure(int status, const std::string& message);

std::string FailureAnswer(int status, const std::string& message, const std::string& parameter = {});

/// An answer of the recorder's own addresses.
struct OwnAnswer {
  int status = 200;
  Json::Value json;          ///< null: there is no JSON
  std::string headers = {};  ///< more lines, each with its end
  std::string body = {};     ///< where there is no JSON; `headers` tell its type and length
};

std::string ToCgi(const OwnAnswer& answer);

/// Why a request is refused. What is no HttpError is a fault of the recorder: the log gets its text.
OwnAnswer Refusal(const std::exception& error);

}  // namespace recorder
