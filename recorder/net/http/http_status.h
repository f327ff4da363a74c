#pragma once

namespace recorder {

// Status codes of HTTP (RFC 9110 section 15) that the recorder tells apart.
inline constexpr long kHttpOk = 200;
inline constexpr long kHttpUnauthorized = 401;

/// True for a status that leads to another address.
bool IsRedirect(long status);

}  // namespace recorder
