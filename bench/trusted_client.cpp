#include "bench/trusted_client.h"

#include <sstream>
#include <stdexcept>

namespace bench {

namespace {

constexpr std::chrono::minutes kPairUse{1};  // the recorder takes a pair for five

}  // namespace

TrustedClient::TrustedClient(const end_to_end::TestRecorder& recorder, const std::string& name)
    : recorder_(recorder), name_(name) {
  recorder_.Trust({name_});
  RenewPair();
}

std::string TrustedClient::Request(const std::string& method, Json::Value parameters) {
  if (std::chrono::steady_clock::now() - made_ > kPairUse) RenewPair();
  parameters["client"] = "NVR";
  parameters["cookie"] = cookie_;
  const std::string body = end_to_end::ToText(parameters);
  return "POST /trusted/NORV.Vistrel.CameraCap/1/" + method +
         " HTTP/1.1\r\nHost: 127.0.0.1\r\nCookie: timestamp=" + timestamp_ +
         "\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

/// `trust pair` prints the lines "cookie ..." and "timestamp ...".
void TrustedClient::RenewPair() {
  std::string label;
  std::istringstream pair(recorder_.Control({"trust", "pair", name_}).output);
  if (!(pair >> label >> cookie_ >> label >> timestamp_)) throw std::runtime_error("no pair: " + pair.str());
  made_ = std::chrono::steady_clock::now();
}

}  // namespace bench
