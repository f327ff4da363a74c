#include "simcam/onvif.h"

#include "simcam/onvif_answers.h"
#include "simcam/trouble.h"

namespace simcam {
namespace {

constexpr const char* kClock = "GetSystemDateAndTime";

const OnvifOperation* FindOperation(const std::string& path, const SoapRequest& soap, const OnvifConfig& onvif) {
  for (const auto* operations :
       {&DeviceOperations(), &Media1Operations(), &Media2Operations(), &AnalyticsOperations()}) {
    for (const OnvifOperation& operation : *operations) {
      const OnvifService& service = operation.service;
      if (soap.name == operation.name && soap.space == service.space && path == service.path && service.exists(onvif)) {
        return &operation;
      }
    }
  }
  return nullptr;
}

/// SOAP 1.2 names the action in the content type (RFC 3902), if at all.
std::string ActionOf(const Request& request) {
  const std::string type = request.Header("Content-Type");
  const size_t at = type.find("action=\"");
  return at == std::string::npos ? "" : type.substr(at + 8, type.find('"', at + 8) - at - 8);
}

bool ActionFits(const std::string& action, const OnvifOperation& operation) {
  if (action.empty()) return true;
  const bool event = &operation.service == &kEventService;
  return action == std::string(operation.service.action) + operation.name + (event ? "Request" : "");
}

HttpAnswer Xml(int status, const std::string& document, const std::string& headers = {}) {
  return {status, "application/soap+xml; charset=utf-8", document, headers};
}

std::string WithPort(const std::string& host, int port) {
  return host.find(':') == std::string::npos ? host + ":" + std::to_string(port) : host;
}

OnvifCamera DescribeCamera(const CameraConfig& config, int port, bool overTls, int tlsPort) {
  const OnvifConfig& onvif = *config.onvif;
  const std::string host = onvif.innerAddress.empty() ? "127.0.0.1" : onvif.innerAddress;
  const std::string web = overTls ? "https://" + WithPort(host, tlsPort) : "http://" + WithPort(host, port);
  const std::string login = onvif.snapshotUri == SnapshotUri::kWithLogin ? config.user + ":wrong@" : "";
  return {config, onvif, web, std::string(web).insert(web.find("//") + 2, login),
          "rtsp://" + WithPort(host.substr(0, host.find(':')), port)};
}

}  // namespace

HttpAnswer Onvif::Fault(const SoapFault& fault, const std::string& headers) const {
  return Xml(fault.status, SoapFaultAnswer(fault, camera_.onvif->prefixes), headers);
}

/// What an unknown asker is told; nothing for a known one.
std::optional<HttpAnswer> Onvif::Refusal(const Request& request, const SoapRequest& soap) {
  if (camera_.login.offer.empty()) return std::nullopt;
  const OnvifLogin kind = camera_.onvif->login;
  const std::string authorization = request.Header("Authorization");
  const SoapFault fault(kind == OnvifLogin::kEither ? 401 : camera_.onvif->faultStatus, "env:Sender",
                        "ter:NotAuthorized", "Sender not authorized");
  const bool byHttp = kind == OnvifLogin::kHttp || (kind == OnvifLogin::kEither && !authorization.empty());
  if (!byHttp && soap.token && login_.Settle(tokens_.Accept(*soap.token)).status == 200) return std::nullopt;
  if (kind == OnvifLogin::kToken) return Fault(fault);
  const Verdict verdict = login_.Check(request.method, request.target, byHttp ? authorization : "");
  if (verdict.status == 200) return std::nullopt;
  if (kind == OnvifLogin::kEither) return Fault(fault, verdict.Headers());
  return HttpAnswer{verdict.status, "text/plain", "login\n", verdict.Headers()};
}

HttpAnswer Onvif::Answer(const Request& request, bool overTls, int tlsPort) {
  const OnvifConfig& onvif = *camera_.onvif;
  const auto soap = ReadSoap(request.body);
  const bool withLogin = !request.Header("Authorization").empty() || (soap && soap->token);
  log_.CountRequest("HTTP", request.method, request.Path(), withLogin, soap ? soap->name : "");
  if (auto instead = TroubleInstead(onvif.trouble, request.target, tlsPort, overTls)) return *std::move(instead);
  if (request.method != "POST") return {405, "text/plain", "only POST\n"};
  // Before the request itself, since some clients ask for the login's challenge with an empty one.
  if (!soap || soap->name != kClock) {
    if (auto refusal = Refusal(request, soap.value_or(SoapRequest()))) return *std::move(refusal);
  }
  try {
    if (!soap) throw SoapFault(400, "env:Sender", "ter:WellFormed", "this is no SOAP 1.2 request");
    const OnvifOperation* operation = FindOperation(request.Path(), *soap, onvif);
    if (operation == nullptr || !ActionFits(ActionOf(request), *operation)) {
      throw SoapFault(500, "env:Receiver", "ter:ActionNotSupported", "there is no such action here");
    }
    const OnvifCamera camera = DescribeCamera(camera_, port_, overTls, tlsPort);
    HttpAnswer answer = Xml(200, SoapAnswer(operation->answer(camera, *soap), onvif.prefixes));
    Spoil(onvif.trouble, answer);
    return answer;
  } catch (const SoapFault& fault) {
    return Fault(fault);
  }
}

}  // namespace simcam
