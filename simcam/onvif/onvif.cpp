#include "simcam/onvif/onvif.h"

#include "simcam/onvif/operations.h"

namespace simcam {
namespace {

constexpr const char* kClock = "GetSystemDateAndTime";

/// SOAP 1.2 names the action in the content type (RFC 3902), if at all.
std::string ActionOf(const Request& request) {
  const std::string type = request.Header("Content-Type");
  const size_t at = type.find("action=\"");
  return at == std::string::npos ? "" : type.substr(at + 8, type.find('"', at + 8) - at - 8);
}

HttpAnswer Xml(int status, const std::string& document) {
  return {status, "application/soap+xml; charset=utf-8", document};
}

}  // namespace

void Onvif::Count(const Request& request) {
  const auto soap = ReadSoap(request.body);
  const bool withLogin = !request.Header("Authorization").empty() || (soap && soap->token);
  log_.CountRequest("HTTP", request.method, request.Path(), withLogin, soap ? soap->name : "");
}

/// What an unknown asker is told; nothing for a known one.
std::optional<HttpAnswer> Onvif::Refusal(const Request& request, const std::optional<UsernameToken>& token) {
  if (camera_.login.offer.empty()) return std::nullopt;
  const OnvifConfig& onvif = *camera_.onvif;
  const bool either = onvif.login == OnvifLogin::kEither;
  const std::string authorization = request.Header("Authorization");
  const bool byHttp = onvif.login == OnvifLogin::kHttp || (either && !authorization.empty());
  const bool mayBeKnown = !onvif.hasOwnUsers;
  if (!byHttp && token && login_.Settle(mayBeKnown && tokens_.Accept(*token)).status == 200) return std::nullopt;
  const SoapFault fault(either ? 401 : onvif.faultStatus, "env:Sender", "ter:NotAuthorized", "Sender not authorized");
  HttpAnswer refusal = Xml(fault.status, SoapFaultAnswer(fault, onvif.prefixes));
  if (onvif.login == OnvifLogin::kToken) return refusal;
  const bool isStranger = !mayBeKnown && byHttp && !authorization.empty();
  const Verdict verdict =
      isStranger ? login_.Settle(false) : login_.Check(request.method, request.target, byHttp ? authorization : "");
  if (verdict.status == 200) return std::nullopt;
  if (!either) return LoginAnswer(verdict);
  refusal.headers = verdict.Headers();
  return refusal;
}

HttpAnswer Onvif::AnswerWell(const Request& request, const Entrance& entrance) {
  const Prefixes prefixes = camera_.onvif->prefixes;
  if (request.method != "POST") return {405, "text/plain", "only POST\n"};
  const auto soap = ReadSoap(request.body);
  // Before the request itself, since some clients ask for the login's challenge with an empty one.
  if (!soap || soap->name != kClock) {
    if (auto refusal = Refusal(request, soap ? soap->token : std::nullopt)) return *std::move(refusal);
  }
  try {
    if (!soap) throw InvalidRequest("ter:WellFormed", "this is no SOAP 1.2 request");
    const OnvifCamera camera(camera_, entrance, syncPoints_);
    return Xml(200, SoapAnswer(AnswerOnvif(camera, request.Path(), ActionOf(request), *soap), prefixes));
  } catch (const SoapFault& fault) {
    return Xml(fault.status, SoapFaultAnswer(fault, prefixes));
  }
}

}  // namespace simcam
