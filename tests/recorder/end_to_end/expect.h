#pragma once

#include <gtest/gtest.h>

#include <string>

#include "rig/cameras.h"
#include "rig/recorder.h"

/// Asks, and expects the code that `method` tells and its cause, which is "ok" for code 0.
inline rig::Answer ExpectAnswer(const rig::TestRecorder& recorder, const char* method, const Json::Value& params,
                                int code, const std::string& cause) {
  rig::Answer answer = recorder.Post(method, params);
  EXPECT_EQ(rig::CodeIn(answer, method), code) << method;
  EXPECT_EQ(answer.cause, code == 0 ? "ok" : cause) << method;
  return answer;
}
