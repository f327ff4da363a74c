#pragma once

#include <cstddef>
#include <cstdint>

#include "recorder/utility/limits.h"

// What a worker says to its media process over their socket, and what that answers. Both are of one build and on one
// machine, so a head goes over as it lies in memory. A request is its head and `size` bytes. An answer is its head,
// notes for the log (lines), packets for the camera and a picture, one behind the other. Before the first request an
// answer comes by itself: kDone, with the parts of the sandbox that are missing as `first`.

namespace recorder {

enum class MediaRequest : std::uint32_t {
  kOpenStream,     ///< a session description of one video. kDone: `first` is its four-character code, 0 for none known
  kPacket,         ///< an RTP packet; no answer
  kControlPacket,  ///< an RTCP packet; no answer
  kOpenBody,       ///< a body of HTTP begins; `number` is the largest picture in bytes; no answer
  kFeed,           ///< more of it; no answer
  kFinish,         ///< it has ended; no answer
  kTake,           ///< what came of packets or body; of packets with `number` 1: a point of recovery will do. Any of
                   ///< the first five; of a body `first` is 1 once something began like a picture
  kClose,          ///< stream and body can go; no answer
  kMeasure,        ///< a JPEG. kDone: `first` is its width, `second` its height; or kRefused
  kUnit,           ///< of a stream that is measured: the next unit of its packets. kDone: `first` is its RTP time,
                   ///< `second` is 1 when decoding can begin there, else 0; or kNothing
  kUnitSize,       ///< of the last unit where decoding could begin. kDone: as kMeasure; or kRefused
  kDecode,         ///< `number` bytes of configuration and a key frame. kPicture or kRefused
  kCount
};

enum class MediaStatus : std::uint32_t {
  kNothing,     ///< more is needed
  kPicture,     ///< the picture is in the answer: a JPEG
  kNoKeyFrame,  ///< units came, and none was a key frame
  kDamaged,     ///< a key frame came, and was not whole
  kRefused,     ///< no picture can be made of it
  kDone,
  kNoMemory,  ///< it would take more memory than the process may have
  kCount
};

/// Parts of the sandbox, as bits.
enum SandboxPart : std::uint32_t {
  kSandboxLimits = 1,
  kSandboxLandlock = 2,
  kSandboxFilter = 4,
};

struct MediaRequestHead {
  MediaRequest request;
  std::uint32_t number;
  std::uint32_t size;
};

struct MediaAnswerHead {
  MediaStatus status;
  std::uint32_t first;
  std::uint32_t second;
  std::uint32_t notesSize;
  std::uint32_t packetsSize;  ///< each has its length before it, 16 bits as they lie in memory
  std::uint32_t pictureSize;
};

/// Bytes of notes and of packets in an answer: a few lines, and a receiver report every few seconds.
inline constexpr std::size_t kLargestNotes = 2 * kKiB;
inline constexpr std::size_t kLargestControl = 16 * kKiB;

/// What a media process may use: bytes of addresses, of which its libraries take 190 MiB, and seconds of processor
/// time, after half of which another takes its place.
inline constexpr std::size_t kMediaMemory = 512 * kMiB;
inline constexpr int kMediaCpuSeconds = 60;

}  // namespace recorder
