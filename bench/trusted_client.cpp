#include "bench/trusted_client.h"

namespace bench {

using namespace rig;

namespace {

constexpr std::chrono::minutes kPairUse{1};  // the recorder takes a pair for five

}  // namespace

TrustedClient::TrustedClient(const TestRecorder& recorder, const std::string& name) : recorder_(recorder), name_(name) {
  recorder_.Trust({name_});
}

std::string TrustedClient::Request(const std::string& method, Json::Value parameters) {
  const auto now = std::chrono::steady_clock::now();
  if (pair_.cookie.empty() || now - made_ > kPairUse) {
    pair_ = recorder_.MakePair({name_});
    made_ = now;
  }
  parameters["client"] = "NVR";
  parameters["cookie"] = pair_.cookie;
  return HttpRequest("POST", kTrusted + method, {{"Cookie", "timestamp=" + pair_.timestamp}}, ToText(parameters));
}

}  // namespace bench
