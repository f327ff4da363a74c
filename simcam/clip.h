#pragma once

#include <map>
#include <memory>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "simcam/picture.h"

namespace simcam {

/// A stream encoded beforehand, here or elsewhere; it begins with a key frame and can be repeated without end. Constant
/// once made.
struct Clip {
  struct Unit {
    std::shared_ptr<GstBuffer> buffer;  ///< one access unit
    bool key = false;
  };
  Caps caps;
  std::vector<Unit> units;
};

/// A clip as RTP packets.
struct RtpClip {
  struct Unit {
    std::vector<std::string> packets;  ///< whole RTP packets; sender's fields are for him to fill in, the
                                       ///< timestamp on top of what stands there
    bool key = false;
  };
  std::string media;  ///< the SDP's media section, without a control address
  std::vector<Unit> units;

  /// kbit/s of payload, of the whole clip.
  [[nodiscard]] int BitRate(int fps) const;
};

/// Thrown when the program is to end while a clip is being made.
struct Stopped {};

/// Makes clips, each once; keeps them in a folder if it has one. One thread.
class ClipStore {
 public:
  ClipStore(std::string folder, std::stop_token stop) : folder_(std::move(folder)), stop_(std::move(stop)) {}

  /// Both throw Stopped, ConfigError if the stream's file is not as configured, or std::runtime_error if GStreamer
  /// fails.

  std::shared_ptr<const Clip> Get(const StreamConfig& stream);
  std::shared_ptr<const RtpClip> GetRtp(const StreamConfig& stream, Fault fault);

 private:
  [[nodiscard]] Sample PullUnlessStopped(const Pipeline& pipeline) const;
  [[nodiscard]] std::shared_ptr<Clip> Collect(const std::string& description) const;
  void EncodeToFile(const StreamConfig& stream, const std::string& path) const;

  std::string folder_;  ///< empty: none
  std::stop_token stop_;
  std::map<std::string, std::shared_ptr<const Clip>> clips_;
  std::map<std::string, std::shared_ptr<const RtpClip>> rtpClips_;
};

}  // namespace simcam
