#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>

namespace recorder {

// All limits of size, with unit and reason. What is longer or more is refused, cut or left out where it is read. How
// much a name or a value of a format may hold stands with its format, and a limit of time where it is used.

inline constexpr std::size_t kKiB = 1024;
inline constexpr std::size_t kMiB = 1024 * kKiB;

// --- What callers send ----------------------------------------------------------------------------------------------

/// Bytes of a request's body: parameters of one camera are a few hundred. The web server and the workers hold to it.
inline constexpr std::size_t kLargestBody = 64 * kKiB;
/// Bytes of a body that holds a list of cameras: several thousand rows.
inline constexpr std::size_t kLargestListBody = kMiB;
inline constexpr char kBodyTooLarge[] = "the body is larger than 64 KiB, or 1 MiB for a list of cameras";
/// What whoever is not logged in is told.
inline constexpr char kNotLoggedIn[] = "log in as a user of this recorder";
/// Parameters of a form: no method has 20, and each new one is compared with all before it.
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
/// Ports of a stored camera, beside its record's own, whose certificates are pinned.
inline constexpr int kMostPinnedPorts = 8;
/// What is known of a stored camera and its streams.
inline constexpr std::size_t kMostFacts = 64;
/// Bytes of a secret that is typed.
inline constexpr std::size_t kLongestSecretLine = kKiB;
/// Characters of a user's new password: whoever has one of before goes on with it.
inline constexpr std::size_t kShortestUserPassword = 8;
/// Bytes of a user's name and of his password: longer than anybody types.
inline constexpr std::size_t kLongestUserName = 128;
inline constexpr std::size_t kLongestUserPassword = 256;
/// Sessions of one user, tokens of one, links of one: more than devices and scripts of one person.
inline constexpr int kMostGrantsOfAUser = 100;
/// Pairs of user and address whose wrong passwords are counted; passwords are checked too slowly for that many within
/// the time that they are remembered.
inline constexpr std::size_t kMostGuessers = 16'384;
/// Logins by name and password that are remembered for a minute.
inline constexpr std::size_t kMostRememberedLogins = 1000;

/// Capability files of cameras; the oldest go. One has some KiB.
inline constexpr std::size_t kMostKeptFiles = 10'000;

// --- What cameras send ----------------------------------------------------------------------------------------------

/// Bytes that all cameras together may send to one request, or to one thread of a list. A picture has at most 32 MiB,
/// and a stream of 50 Mbit/s brings 90 MiB in the 15 s until a picture must be there.
inline constexpr std::uint64_t kCameraBytes = 128 * kMiB;

/// The same where a stream is measured for 12 s: 170 Mbit/s.
inline constexpr std::uint64_t kMeasuredBytes = 256 * kMiB;

/// Bytes of a picture in a stream, one access unit: a key frame of 8K at the best quality has fewer.
inline constexpr std::size_t kLargestUnit = 32 * kMiB;
/// Bytes of parameter sets that wait for their picture: they have some hundred.
inline constexpr std::size_t kLargestParameterSets = 64 * kKiB;
/// Pixels of a picture: 8K and no more. A camera's claim must not cost any memory it likes.
inline constexpr std::int64_t kMostPixels = std::int64_t{1} << 25;

/// Bytes that a decoder holds to judge a JPEG: 3 a pixel of a progressive one, and a few rows of any other.
inline constexpr int kMostJpegMemory = 64 << 20;

/// Pixels of a side of a JPEG, as libjpeg writes it: 16 bits, and a little less.
inline constexpr int kLongestJpegSide = 65'500;

/// Bytes of all header lines of one answer of HTTP, login methods included.
inline constexpr std::size_t kLargestHttpHeaders = 64 * kKiB;
/// Bytes of a body of HTTP that is a picture: one of 20 megapixels has up to ten million. Each of the ten threads
/// of a list holds one, and copies of it while it is judged.
inline constexpr std::size_t kLargestHttpPicture = 12 * kMiB;
/// Bytes of delimiter and header lines before a part of a multipart body, as far as they are looked for.
inline constexpr std::size_t kLargestPartLines = 16 * kKiB;

/// Bytes of the header lines of one message of RTSP, and of its body, a stream's description.
inline constexpr std::size_t kLargestRtspHeaders = 16 * kKiB;
inline constexpr std::size_t kLargestRtspBody = 64 * kKiB;
/// Bytes of packets that come before the answer to PLAY and are kept, with what each costs in memory.
inline constexpr std::size_t kMostEarlyBytes = 8 * kMiB;
/// RTP packets over UDP that wait for one before them: networks exchange neighbours.
inline constexpr std::size_t kMostLateRtp = 64;
/// Cameras of which one process knows how they challenge for a login.
inline constexpr std::size_t kMostSteadyCameras = 1024;

/// Bytes of an answer in XML: a camera with hundreds of profiles sends less.
inline constexpr std::size_t kLargestXml = kMiB;
/// Bytes of one tag.
inline constexpr std::size_t kLongestXmlTag = 8 * kKiB;
/// Bytes of all tags around an element.
inline constexpr std::size_t kLongestOpenXmlTags = 16 * kKiB;
/// Attributes of a tag: the parser compares each with all others.
inline constexpr std::size_t kMostXmlAttributes = 200;
/// Elements and attributes of an answer: the parser's tree has some 250 bytes for each.
inline constexpr std::size_t kMostXmlParts = 25'000;

/// Entries that are taken of a list in an answer over ONVIF or PSIA; a list for people to choose from has fewer.
inline constexpr std::size_t kMostOnvifProfiles = 1024;
inline constexpr std::size_t kMostResolutions = 256;
inline constexpr std::size_t kMostPsiaEntries = 256;

/// Bytes of a datagram: UDP has no more.
inline constexpr std::size_t kLargestDatagram = 64 * kKiB;
/// Cameras that one search of the network finds, those of them behind one address, addresses of one of them, and bytes
/// of a name in what they say.
inline constexpr std::size_t kMostFoundCameras = 1000;
inline constexpr std::size_t kMostFoundAtAddress = 16;
inline constexpr std::size_t kMostFoundAddresses = 16;
inline constexpr std::size_t kLongestFoundName = 128;

}  // namespace recorder
