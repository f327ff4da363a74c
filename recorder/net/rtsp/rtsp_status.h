#pragma once

// Status codes of RTSP (RFC 2326 section 7.1.1) that a session tells apart.

namespace recorder {

constexpr bool IsSuccess(int status) { return status >= 200 && status < 300; }

/// True for a status that leads to another address.
constexpr bool IsRtspRedirect(int status) { return status >= 300 && status < 400; }

/// True for one that asks for a login.
constexpr bool IsChallenge(int status) { return status == 401; }

/// True for an answer to DESCRIBE by which some cameras want to be asked first what they can do.
constexpr bool WantsOptions(int status) { return status == 400 || status == 455; }

/// True for an answer to SETUP by which cameras refuse what it asks for: not each has 461 (unsupported transport).
constexpr bool RefusesTransport(int status) { return status == 406 || status == 461 || status == 500; }

}  // namespace recorder
