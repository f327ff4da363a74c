#pragma once

#include <string>

#include "recorder/utility/outcome.h"

namespace recorder {

/// Whether notices may be sent to `url`: http or https, a host, and no login in it.
bool IsNoticeUrl(const std::string& url);

struct PostResult {
  /// kOk: an answer 2xx came; kNotUnderstood: any other one, or it hung up. kBlocked: the address policy allows none of
  /// the host's addresses. kNotThisProtocol: no HTTP, or a certificate that this machine does not trust.
  Outcome outcome = Outcome::kUnreachable;
  long status = 0;  ///< of HTTP; 0: no answer came
};

/// Sends JSON in a POST, with the header X-Signature: "sha256=" and the HMAC-SHA-256 of the body (RFC 2104) by
/// `secret`, in hexadecimal. Redirects are not followed. Waits for 10 s at most. Any thread; call curl_global_init
/// before there are several.
PostResult PostSigned(const std::string& url, const std::string& secret, const std::string& body);

}  // namespace recorder
