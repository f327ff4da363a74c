#include "recorder/device/asked/onvif/soap.h"

#include <algorithm>
#include <array>
#include <optional>

#include "recorder/device/asked/onvif/answers.h"
#include "recorder/device/asked/onvif/username_token.h"
#include "recorder/net/login/camera_login.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/cause_table.h"
#include "recorder/utility/secrets.h"

namespace recorder::onvif {
namespace {

constexpr std::string_view kSoap12 = "http://www.w3.org/2003/05/soap-envelope";
constexpr std::string_view kSoap11 = "http://schemas.xmlsoap.org/soap/envelope/";

/// A UsernameToken shows a digest, so it counts as one of the usual kind, and is made whatever stronger one was seen: a
/// camera that has both for HTTP and RTSP still wants the token for its services.
constexpr LoginMethod kTokenMethod = LoginMethod::kMd5;

std::chrono::sys_seconds Now() { return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()); }

std::string ActionOf(const Service& service, const std::string& name) {
  return std::string(service.actionPrefix) + name + std::string(service.actionSuffix);
}

/// The envelope's body, or no element. A prefix that was never declared leaves the envelope without a namespace.
XmlElement BodyOf(XmlElement root) {
  const std::string nameSpace = root.Namespace();
  const bool isKnown = nameSpace == kSoap12 || nameSpace == kSoap11 || nameSpace.empty();
  const bool isEnvelope = root.Name() == "Envelope" && isKnown;
  return isEnvelope ? root.Child(nameSpace, "Body") : XmlElement();
}

/// True when the qualified name `code` says that the login is missing or wrong: ONVIF's own code, or one of WS-Security
/// (section 12).
bool IsAboutLogin(std::string_view code) {
  constexpr std::array<std::string_view, 4> kCodes{"NotAuthorized", "FailedAuthentication", "InvalidSecurity",
                                                   "MessageExpired"};
  return std::find(kCodes.begin(), kCodes.end(), code.substr(code.rfind(':') + 1)) != kCodes.end();
}

/// True when one of the fault's codes, which hold one another, is about the login.
bool IsLoginFault(XmlElement fault) {
  const std::string nameSpace = fault.Namespace();
  if (IsAboutLogin(fault.Child("", "faultcode").Text())) return true;  // SOAP 1.1
  for (XmlElement code = fault.Child(nameSpace, "Code"); code; code = code.Child(nameSpace, "Subcode")) {
    if (IsAboutLogin(code.Child(nameSpace, "Value").Text())) return true;
  }
  return false;
}

/// True when `text` ends as an envelope does. What the XML reader adds to a cut answer would pass for all there is.
bool IsWhole(std::string_view text) {
  const std::size_t end = text.find_last_not_of(std::string_view(" \t\r\n\0", 5));
  return text.substr(0, end + 1).ends_with("Envelope>");
}

Outcome OutcomeOfNoSoap(const HttpAnswer& answer) {
  const bool isMeantAsSoap =
      answer.contentType.find("soap") != std::string::npos || answer.body.find("Envelope") != std::string::npos;
  if (isMeantAsSoap) return Outcome::kNotUnderstood;
  const Outcome outcome = OutcomeOfHttp(answer.status);
  return outcome == Outcome::kOk || outcome == Outcome::kNotUnderstood ? Outcome::kNotThisProtocol : outcome;
}

}  // namespace

Reply ReadReply(const HttpAnswer& answer, std::string_view nameSpace, std::string_view name, bool* isReadByName) {
  Reply reply;
  reply.document = XmlDocument(answer.body, isReadByName);
  const XmlElement body = BodyOf(reply.document.Root());
  const XmlElement fault = body.Child(body.Namespace(), "Fault");
  reply.isFault = static_cast<bool>(fault);
  reply.isLoginWanted = answer.status == kHttpUnauthorized || IsLoginFault(fault);
  if (reply.isLoginWanted) {
    reply.outcome = Outcome::kLoginRefused;
  } else if (!body) {
    reply.outcome = OutcomeOfNoSoap(answer);
  } else if (!fault && IsWhole(answer.body)) {
    reply.content = body.Child(nameSpace, name);
    if (reply.content) reply.outcome = Outcome::kOk;
  }
  return reply;
}

std::string Element(const std::string& name, const std::string& text) {
  return "<" + name + ">" + XmlEscaped(text) + "</" + name + ">";
}

Reply SoapClient::AskClock() {
  hasAskedClock_ = true;
  Reply reply = Call(kDevicePath, kDevice, "GetSystemDateAndTime");
  if (const auto time = ReadClock(reply.content)) TakeClock(*time - Now());
  return reply;
}

void SoapClient::TakeClock(std::optional<std::chrono::seconds> offset) {
  hasAskedClock_ = true;
  isClockKnown_ = offset.has_value();
  clockOffset_ = offset.value_or(std::chrono::seconds(0));
}

Reply SoapClient::Call(const std::string& path, const Service& service, const std::string& name,
                       const std::string& arguments) {
  const bool wasLoggedIn = session_.IsLoggedIn();
  Reply reply = Send(path, service, name, arguments);
  if (reply.isLoginWanted && !session_.IsLoggedIn() && !usesToken_ && HasLogin(camera_)) {
    if (!hasAskedClock_) AskClock();
    usesToken_ = true;
    reply = Send(path, service, name, arguments);
  }
  if (wasLoggedIn) return reply;  // what this one request lacks is not the login
  if (reply.isLoginWanted || (usesToken_ && reply.outcome == Outcome::kLoginRefused)) {
    EndRefused(reply);
  } else if (usesToken_ && reply.IsSoap()) {
    session_.LoginAccepted();
    if (reply.outcome == Outcome::kOk) LoginWorked(camera_, kTokenMethod);
  } else if (usesToken_) {
    EndUnproven(reply);
  }
  return reply;
}

Reply SoapClient::Send(const std::string& path, const Service& service, const std::string& name,
                       const std::string& arguments) {
  const std::string contentType = "application/soap+xml; charset=utf-8; action=\"" + ActionOf(service, name) + '"';
  const auto login = usesToken_ ? HttpSession::Login::kInBody : HttpSession::Login::kByHttp;
  const HttpAnswer answer = session_.Post(path, contentType, Envelope(service, name, arguments), login);
  Reply reply;
  if (answer.outcome == Outcome::kOk) {
    reply = ReadReply(answer, service.nameSpace, name + "Response", &readsByName_);
    hasSpoken_ = hasSpoken_ || reply.IsSoap();
    return reply;
  }
  reply.outcome = answer.outcome;
  reply.isLast = EndsConversation(answer.outcome);
  return reply;
}

std::string SoapClient::Envelope(const Service& service, const std::string& name, const std::string& arguments) const {
  std::string header;
  if (service.hasAddressing) {
    header += R"(<Action xmlns="http://www.w3.org/2005/08/addressing">)" + ActionOf(service, name) + "</Action>";
  }
  if (usesToken_) header += Token();
  if (!header.empty()) header = "<s:Header>" + header + "</s:Header>";
  return R"(<?xml version="1.0" encoding="UTF-8"?><s:Envelope xmlns:s=")" + std::string(kSoap12) + "\">" + header +
         "<s:Body><" + name + " xmlns=\"" + std::string(service.nameSpace) + "\">" + arguments + "</" + name +
         "></s:Body></s:Envelope>";
}

/// "" where there is no password to make it of: the camera will refuse that.
std::string SoapClient::Token() const {
  std::optional<std::string> password = PasswordFor(camera_);
  if (!password) return "";
  const WipeAtEnd wipe(*password);
  return UsernameToken(camera_.user, *password, Now() + clockOffset_);
}

/// The login was refused, or there is none to send: nobody asks this camera again in this request. A camera whose clock
/// we could not read may have refused only our time.
void SoapClient::EndRefused(Reply& reply) const {
  reply.outcome = usesToken_ && !isClockKnown_ ? Outcome::kClockUnknown : Outcome::kLoginRefused;
  reply.isLast = true;
  RequestScope::Current().Remember(camera_.host, camera_.user, reply.outcome);
}

/// Some refuse by closing: a login that was not accepted is not sent again in this request, by nobody.
void SoapClient::EndUnproven(Reply& reply) const {
  reply.isLast = true;
  RequestScope::Current().Remember(camera_.host, camera_.user, Outcome::kLoginRefused);
}

}  // namespace recorder::onvif
