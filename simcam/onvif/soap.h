#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "simcam/config.h"

namespace simcam {

constexpr const char* kTt = "http://www.onvif.org/ver10/schema";

/// WS-Security, UsernameToken profile 1.0: who asks.
struct UsernameToken {
  std::string user;
  std::string password;
  std::string passwordType;
  std::string nonce;  ///< in base64, as sent
  std::string created;
};

/// A SOAP 1.2 request: its body's element, and what stands in it and in the header.
struct SoapRequest {
  struct Parameter {
    std::string space;  ///< its namespace
    std::string name;
    std::string text;
  };

  std::string space;  ///< the namespace of the body's element
  std::string name;
  std::vector<Parameter> parameters;  ///< elements below it that have no elements themselves
  std::optional<UsernameToken> token;

  // Of WS-Discovery: the addressing header (August 2004), and the device types of a Probe as "{namespace}name".
  std::string action;
  std::string messageId;
  std::vector<std::string> types;

  /// All parameters of that name in the request's own namespace.
  [[nodiscard]] std::vector<std::string> All(std::string_view parameter) const;
  /// The one parameter of that name; throws SoapFault where it is missing.
  std::string Need(std::string_view parameter, std::string_view parameterSpace) const;
  std::string Need(std::string_view parameter) const { return Need(parameter, space); }
};

/// A refusal, by ONVIF's words; without the prefix "ter:" for what is not of SOAP itself.
struct SoapFault : std::runtime_error {
  SoapFault(int httpStatus, const char* faultCode, std::string faultSubcode, const std::string& reason)
      : std::runtime_error(reason), status(httpStatus), code(faultCode), subcode(std::move(faultSubcode)) {}

  int status;
  const char* code;     ///< "env:Sender" or "env:Receiver"
  std::string subcode;  ///< one within the other, by blanks: "ter:InvalidArgVal ter:NoProfile"
};

/// For what the camera does not know or have.
inline SoapFault NotSupported(const std::string& reason) {
  return {500, "env:Receiver", "ter:ActionNotSupported", reason};
}

/// For a request that is not as it should be.
inline SoapFault InvalidRequest(const char* subcode, const std::string& reason) {
  return {400, "env:Sender", subcode, reason};
}

/// Reads a request; nothing for what is no SOAP 1.2 or has a document type.
std::optional<SoapRequest> ReadSoap(const std::string& xml);

/// Whole documents. What is in them is written with the usual prefixes of SOAP, ONVIF and WS-Notification; they get
/// their declarations here, and strange names if wanted.

std::string SoapAnswer(const std::string& body, Prefixes prefixes, const std::string& header = {});
std::string SoapFaultAnswer(const SoapFault& fault, Prefixes prefixes);

}  // namespace simcam
