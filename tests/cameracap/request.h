#pragma once

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

#include "cameracap/cameracap.h"
#include "tests/double/script.h"

// One request to the module, against the scripted recorder.

using scripted::Lines;
using scripted::List;
using scripted::Parse;
using scripted::Script;
using scripted::Transcript;

using Params = std::map<std::string, Json::Value>;

/// `params` with some of them replaced.
inline Params With(Params params, const Params& replaced) {
  for (const auto& [key, value] : replaced) params[key] = value;
  return params;
}

/// Runs one request and returns the data of its answer.
inline Json::Value Send(const std::string& method, const Params& params = {}) {
  NORV::APIRequest::Impl requestImpl{method, params};
  NORV::APIResponse::Impl responseImpl;
  NORV::APIRequest request{&requestImpl};
  NORV::APIResponse response{&responseImpl};
  HandleProcess(&request, &response);
  return responseImpl.data;
}

/// The line of an error answer.
inline std::string Error(int code) {
  return "SetError(" + std::to_string(code) + R"(, {"param1":"","param2":""}))" + "\n";
}

/// The line of a checked call that had no object, or no function of its signature.
inline std::string NullObject(int line, const std::string& name) {
  return "log interface/handlerutils:" + std::to_string(line) + " operator() \"[" + name +
         "] Error: Failed to run functor with DPObjectBase as NULL.\\n\"\n";
}
inline std::string NotRegistered(int line, const std::string& name) {
  return "log interface/handlerutils:" + std::to_string(line) + " operator() \"[" + name +
         "] Error: Some Functor is not registered properly. Check the template argument list and Function ID.\\n\"\n";
}

/// The handlers' own parameter reads.
inline std::string Reads() {
  std::istringstream lines{scripted::FullTranscript()};
  std::string reads;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("GetParam(", 0) == 0 && line.find("relayedCmd") == std::string::npos) reads += line + "\n";
  }
  return reads;
}

class ModuleTest : public testing::Test {
 protected:
  void SetUp() override { scripted::Reset(); }
  void TearDown() override {
    for (const std::string& fault : scripted::Finish()) ADD_FAILURE() << fault;
  }
};

template <class Base, class Row>
class RowTestOf : public Base, public testing::WithParamInterface<Row> {};
template <class Row>
using RowTest = RowTestOf<ModuleTest, Row>;

/// Names a row's test after its member `name`.
struct ByName {
  template <class Row>
  std::string operator()(const testing::TestParamInfo<Row>& info) const {
    return info.param.name;
  }
};
