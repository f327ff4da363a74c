#include "recorder/ctl/serve/server_errors.h"

#include <json/json.h>

#include <string>
#include <utility>

#include "recorder/utility/files.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/limits.h"

namespace recorder {

namespace {

/// What the web server itself refuses, with the reason that it gives in the shape of all answers.
constexpr std::pair<int, const char*> kServerErrors[] = {
    {400, "the request is malformed"},
    {401, kNotLoggedIn},
    {403, "this address is not served, or the cookie \"timestamp\" of a trusted recorder is missing"},
    {404, "no such address"},
    {411, "the length of the body is missing"},
    {413, kBodyTooLarge},
    {431, "the address and the headers are longer than 8 KiB"},
    {500, "the worker that had this request ended; its log says why"},
    {501, "this server knows neither such a method nor such an encoding of a body"},
    {503, "all workers are busy or ended; try again"},
    {505, "this server speaks HTTP/1.0 and 1.1"},
};

}  // namespace

void WriteServerErrors(const std::filesystem::path& folder) {
  for (const auto& [status, reason] : kServerErrors) {
    Json::Value json(Json::objectValue);
    json["success"] = false;
    json["error"]["code"] = status;
    json["error"]["message"] = reason;
    ReplaceFile(folder / ("error-" + std::to_string(status) + ".html"), ToText(json));
  }
}

}  // namespace recorder
