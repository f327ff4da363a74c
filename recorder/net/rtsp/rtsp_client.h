#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/net/camera_address.h"
#include "recorder/net/login/login.h"
#include "recorder/net/rtsp/rtsp_parser.h"
#include "recorder/net/rtsp/sdp.h"
#include "recorder/net/socket.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// One RTSP 1.0 session (RFC 2326) for the video of one camera, its packets interleaved in the connection. Call
/// Describe, Setup, Play, then Read as often as wanted; after a failure the object is of no more use.
///
/// Owner:   holds one connection from Describe on; the destructor says TEARDOWN without waiting for the answer.
/// Thread:  one thread at a time; it must be that of the request, whose RequestScope is asked.
/// Time:    no call outlasts the deadline given to the constructor, the name's lookup included.
/// Failure: an Outcome; nothing throws but std::bad_alloc. kNotUnderstood includes a connection that ended early.
/// Secrets: the password goes into the Authorization header, to the camera's own host only. A wrong one is one attempt.
class RtspClient {
 public:
  /// `path` is what follows host and port, with its query; bytes that an address cannot hold are percent-encoded.
  RtspClient(CameraAddress address, std::string_view path, Clock::time_point deadline,
             std::string userAgent = "recorder");
  ~RtspClient();
  RtspClient(const RtspClient&) = delete;
  RtspClient& operator=(const RtspClient&) = delete;

  /// Connects, logs in if asked to, follows redirects within the camera's host, and reads what the camera offers.
  /// kNoVideo when there is no video.
  [[nodiscard]] Outcome Describe();

  /// What Describe found.
  const SdpVideo& Video() const { return video_; }

  /// Asks for a session with the video.
  [[nodiscard]] Outcome Setup();

  /// Starts the video.
  [[nodiscard]] Outcome Play();

  /// Waits for the next packet, which is valid until the next call, and keeps the session alive meanwhile.
  [[nodiscard]] Outcome Read(InterleavedPacket& packet);

  /// Sends one RTCP packet to the camera; a failure shows in the next Read.
  void SendControl(std::span<const std::uint8_t> packet);

 private:
  struct EarlyPacket {
    bool isControl;
    std::vector<std::uint8_t> bytes;
  };

  Outcome Remembered(Outcome outcome) const;
  Outcome Connect();
  Outcome DescribeHere();
  Outcome FollowRedirect();
  Outcome ReadDescription();
  Outcome Request(std::string_view method, const std::string& uri, const std::string& headers);
  Outcome Exchange(std::string_view method, const std::string& uri, const std::string& headers);
  Outcome AwaitAnswer();
  Outcome Fill(Clock::time_point until);
  Outcome TakeChallenge(bool loginWasSent);
  Outcome SendRequest(std::string_view method, const std::string& uri, const std::string& headers,
                      Clock::time_point until);
  void AnswerRequest(const RtspMessage& request);
  Outcome KeepEarly(const InterleavedPacket& packet);
  bool GrantsInterleaved(std::string_view transport);
  void ReadSession(std::string_view session);
  void KeepAlive();
  Outcome NextPacket(InterleavedPacket& packet);

  CameraAddress address_;
  std::string uri_;
  const Clock::time_point deadline_;
  const std::string userAgent_;

  Socket socket_;
  RtspParser parser_;
  bool isClosed_ = false;  // by the camera
  unsigned int lastSequence_ = 0;

  std::optional<LoginChallenge> challenge_;
  unsigned int nonceUses_ = 0;
  bool loginIsProven_ = false;

  SdpVideo video_;
  std::string base_;
  std::string session_;
  std::chrono::milliseconds sessionTimeout_;
  Clock::time_point keepAliveAt_ = Clock::time_point::max();
  std::uint8_t rtcpChannel_ = 1;
  std::deque<EarlyPacket> early_;  // came before PLAY was answered
  std::size_t earlySize_ = 0;
  std::vector<std::uint8_t> current_;  // the early packet that was handed out
};

}  // namespace recorder
