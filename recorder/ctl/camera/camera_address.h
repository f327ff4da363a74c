#pragma once

#include <string>
#include <string_view>

namespace recorder {

// Addresses and paths as people write them into a list, with a login in them for one. The page reads them alike: its
// address.js, and path-login.js, which says what is found in a path.

/// An address in its parts; "" for what is not there.
struct AddressParts {
  std::string host;  ///< without brackets
  std::string port;
  std::string user;
  std::string password;
  std::string path;  ///< with its query; the whole address, without login, of rtsps
};

/// Splits "host", "host:port", "[v6]:port", a bare v6 address, or a whole address (RFC 3986), whose scheme stands for a
/// port, and whose login may stand in its path, too (see SplitPath). A text that holds a login which cannot be told
/// from the rest ("@" behind the host) is not split: all of it is the host.
AddressParts SplitAddress(std::string_view text);

/// A path and the login that was in it; "" for what is not there.
struct PathParts {
  std::string user;
  std::string password;
  std::string path;
};

/// Takes the login out of a path that names one: "/user=a&password=X", "/live?username=a&password=X", "/a:X@live".
PathParts SplitPath(std::string_view path);

}  // namespace recorder
