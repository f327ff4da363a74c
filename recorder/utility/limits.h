#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>

namespace recorder {

// All limits of size, with unit and reason. What is longer or more is refused, cut or left out where it is read. How
// much a name or a value of a format may hold stands with its format; limits of time are settings.

inline constexpr std::size_t kKiB = 1024;
inline constexpr std::size_t kMiB = 1024 * kKiB;

// --- What callers send ----------------------------------------------------------------------------------------------

/// Bytes of a request's body: parameters of one camera are a few hundred. The web server and the workers hold to it.
inline constexpr std::size_t kLargestBody = 64 * kKiB;
/// Bytes of a body that holds a list of cameras: several thousand rows.
inline constexpr std::size_t kLargestListBody = kMiB;
inline constexpr char kBodyTooLarge[] = "the body is larger than 64 KiB, or 1 MiB for a list of cameras";
/// Parameters of a form: no method has 20, and each is looked for among those before it.
inline constexpr std::size_t kMostParameters = 1000;
/// Objects and lists around a value of JSON: its reader calls itself for each.
inline constexpr int kDeepestJson = 64;

// --- What we answer and log -----------------------------------------------------------------------------------------

/// Bytes of the header that tells the causes of a list; a longer one is not sent. Clients and proxies take 8 KiB of
/// headers, mostly.
inline constexpr std::size_t kLargestCauses = 6 * kKiB;
/// Bytes of a log line: up to this size a write to a pipe is not mixed with others' (POSIX write()).
inline constexpr std::size_t kLongestLogLine = PIPE_BUF;
/// Connections that wait for a free worker; the web server itself has fewer.
inline constexpr int kLongestQueue = 1024;

// --- What is kept ---------------------------------------------------------------------------------------------------

/// Bytes of a file that is read whole: it is held in memory, and its size must fit into an int.
inline constexpr std::size_t kLargestFile = 32 * kMiB;
/// Bytes of a text of a record, such as a name, a path or a password.
inline constexpr std::size_t kLongestRecordText = kKiB;
/// Bytes of a secret that is typed.
inline constexpr std::size_t kLongestSecretLine = kKiB;
/// Bytes of the password of a user: bcrypt does not see more.
inline constexpr std::size_t kLongestUserPassword = 72;

// --- What cameras send ----------------------------------------------------------------------------------------------

/// Bytes that all cameras together may send to one request, or to one thread of a list. A picture has at most 32 MiB,
/// and a stream of 50 Mbit/s brings 90 MiB in the 15 s until a picture must be there.
inline constexpr std::uint64_t kCameraBytes = 128 * kMiB;

}  // namespace recorder
