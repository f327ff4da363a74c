#pragma once

#include <json/json.h>

#include <chrono>
#include <string>

#include "rig/recorder.h"

namespace bench {

/// Asks as a trusted recorder: without a login, whose check costs the web server more than most answers. One thread.
class TrustedClient {
 public:
  /// Makes `recorder` trust a client named `name`. Throws std::runtime_error.
  TrustedClient(const rig::TestRecorder& recorder, const std::string& name);

  /// A whole HTTP request, which is good for some minutes.
  std::string Request(const std::string& method, Json::Value parameters);

 private:
  const rig::TestRecorder& recorder_;
  const std::string name_;
  rig::TestRecorder::Pair pair_;
  std::chrono::steady_clock::time_point made_;
};

}  // namespace bench
