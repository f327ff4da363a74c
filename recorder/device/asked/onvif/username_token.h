#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace recorder::onvif {

/// The login of one request in its envelope's header (WS-Security UsernameToken Profile 1.0), which shows the password
/// to nobody: a digest of it, of `created`, the camera's own time, and of a fresh nonce.
std::string UsernameToken(const std::string& user, const std::string& password, std::chrono::sys_seconds created);

/// Base64 of the SHA-1 of nonce, time and password.
std::string PasswordDigest(std::string_view nonce, std::string_view created, std::string_view password);

}  // namespace recorder::onvif
