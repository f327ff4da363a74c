#include <functional>
#include <map>
#include <string>

#include "recorder/http/api_request.h"
#include "recorder/http/json_answer.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/text.h"
#include "tests/fuzz/fuzz.h"

// A request as a web server hands it over: lines "VARIABLE=value", an empty line, the body.

namespace recorder {
namespace {

using Variables = std::map<std::string, std::string, std::less<>>;

/// Takes the variables off the front of `input`. The body's length is the true one unless the input tells another.
Variables TakeVariables(std::string_view& input) {
  Variables variables;
  while (!input.empty()) {
    std::string_view line = TakeUntil(input, '\n');
    if (line.empty()) break;
    const std::string_view name = TakeUntil(line, '=');
    variables.emplace(name, line);
  }
  variables.emplace("CONTENT_LENGTH", std::to_string(input.size()));
  return variables;
}

void CheckRefusal(const HttpError& error) {
  Require(error.Status() >= 400 && error.Status() < 500);
  Require(IsUtf8(ToCgi(Refusal(error))));
}

void ReadForm(std::string_view form) try {
  for (const Json::Value& value : ParseForm(form)) Require(FormValue(value.asString()) == value);
} catch (const HttpError& error) {
  CheckRefusal(error);
}

}  // namespace

void RunInput(std::string_view input) try {
  static const ModuleLibrary module(MODULE_FILE);
  const Variables variables = TakeVariables(input);
  ReadForm(input);
  const auto variable = [&](const char* name) {
    const auto found = variables.find(name);
    return found == variables.end() ? nullptr : found->second.c_str();
  };
  const auto readBody = [&](std::size_t size) { return std::string(input.substr(0, size)); };
  const HttpRequest request = ReadHttpRequest({variable, readBody, {}}, LargestBody);
  CheckSameSite(request, {"recorder.example"});
  const ApiCall call = ToApiCall(request, module, true);
  Require(call.params.isObject() && IsUtf8(ToText(call.params)));
} catch (const HttpError& error) {
  CheckRefusal(error);
}

}  // namespace recorder
