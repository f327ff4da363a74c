#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "cameracap/cameracap.h"
#include "tests/double/script.h"
#include "tests/recorder/rows.h"

// One request to the module, against the scripted recorder.

using namespace scripted;

using Params = std::map<std::string, Json::Value>;

/// `params` with some of them replaced.
inline Params With(Params params, const Params& replaced) {
  for (const auto& [key, value] : replaced) params[key] = value;
  return params;
}

/// What a request says of its camera, in the words of every method.
inline const Params kCamera = Members(R"({
  "camId": 7, "camPort": 80, "camIP": "10.0.0.9", "camUser": "root", "camUserName": "root", "camPass": "pw",
  "camPassword": "pw", "camPassWord": "pw", "vendor": "Acme", "model": "X100", "camModel": "Acme X100",
  "camChannel": "9", "camSourcePath": "/src", "camVideoType": "H.264", "camStreamingType": "RTSP", "camCapCmd": 0,
  "jsonResponse": true})");

/// Runs one request and returns the data of its answer.
inline Json::Value Send(const std::string& method, const Params& params = {}) {
  Exchange exchange{{method, params}};
  HandleProcess(&exchange.request, &exchange.response);
  return exchange.responseImpl.data;
}

// --- Pieces of transcripts ------------------------------------------------------------------------------------------

/// What every request of a logged-in user begins with.
inline const std::string kAdmitted = "GetParam(\"relayedCmd\",false); IsCmsHost(); IsAuthorized(); GetAPIMethod(); ";

/// The line of an error answer.
inline std::string Error(int code) { return "SetError(" + std::to_string(code) + R"(,{"param1":"","param2":""}))"; }

/// `text` with `from` replaced by `to` wherever it is.
inline std::string Swap(std::string text, const std::string& from, const std::string& to) {
  for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

/// The lines of a transcript up to the first call of a function, inclusive.
inline std::string Until(const std::string& function, const std::string& transcript) {
  const std::string lines = Lines(transcript);
  const size_t start = ("\n" + lines).find("\n" + function + "(");
  return lines.substr(0, lines.find('\n', start) + 1);
}

// --- Cases ----------------------------------------------------------------------------------------------------------

struct ModuleTest : testing::Test {
  void SetUp() override { Reset(); }
  void TearDown() override {
    for (const std::string& fault : Finish()) ADD_FAILURE() << fault;
  }
};

/// One case. What is `given` in place of the usual: parameters (lower case) and answers (upper case).
struct Row {
  Row(const char* nameOf, Params givenOf, std::string lines)
      : name(nameOf), given(std::move(givenOf)), expected(std::move(lines)) {}
  std::string name;
  Params given;
  std::string expected;  ///< transcript
  std::string method;
};

struct RowTest : ModuleTest, testing::WithParamInterface<Row> {
  void SetUp() override {
    ModuleTest::SetUp();
    for (const auto& [name, value] : GetParam().given) Script(name, {value});
  }
};

/// Sends a row's request. The transcript ends with the raw answer on standard output, or with "thrown", if any.
struct MethodTest : RowTest {};

/// Rows of one method about the usual camera, with more that is given to all and lines that all begin with.
inline auto Rows(const std::string& method, const std::string& opening, std::vector<Row> rows,
                 const Params& given = {}) {
  for (Row& row : rows) {
    row.method = method;
    row.given = With(With(kCamera, given), row.given);
    row.expected.insert(0, opening);
  }
  return testing::ValuesIn(rows);
}
