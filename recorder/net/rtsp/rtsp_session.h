#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/net/rtsp/rtsp_headers.h"
#include "recorder/net/rtsp/rtsp_login.h"
#include "recorder/net/rtsp/rtsp_parser.h"
#include "recorder/net/rtsp/rtsp_target.h"
#include "recorder/net/rtsp/rtsp_transport.h"
#include "recorder/net/rtsp/sdp.h"
#include "recorder/net/server_name.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// One RTSP 1.0 session (RFC 2326) for the video of one camera, without socket or clock: the caller has them, or stands
/// in for them. It begins Describe, Setup, Play and Read, in this order, and does what Next() says until that is kDone.
/// After a failure the session is of no more use, but for Teardown().
///
/// Owner:   `logins` must outlive it.
/// Thread:  one at a time.
/// Time:    as it is told. It never waits beyond its deadline.
/// Failure: an Outcome; nothing throws but std::bad_alloc. kNotUnderstood includes a connection that ended early.
/// Memory:  besides what RtspParser holds, at most 8 MiB of packets that came before PLAY was answered.
/// Secrets: no password passes through here but in what RtspLogins makes of it. A wrong one is one attempt.
class RtspSession {
 public:
  enum class Step {
    kConnect,  ///< connect to Port(), inside TLS if IsTls(), closing an earlier connection first, and tell Connected()
    kSend,     ///< send Outgoing() and tell Sent()
    kReceive,  ///< wait until Until() for bytes, and tell Received(), Ended() or, when none came, nothing
    kOpenPorts,  ///< open a pair of UDP ports at the connection's local address, and tell PortsOpened()
    kDone,       ///< what was begun has ended with Result()
  };

  /// How the camera closed a connection.
  enum class Ending {
    kUsual,
    kUnread,  ///< it cannot have read all that was sent
  };

  RtspSession(RtspTarget target, Clock::time_point deadline, RtspLogins& logins);

  /// From now on the session gives up at `time` unless the camera has spoken RTSP by then.
  void AnswerBy(Clock::time_point time) { answerBy_ = time; }
  /// True once the camera has spoken RTSP.
  bool HasAnswered() const { return hasSpoken_; }

  /// Connects, logs in if asked to, follows redirects within the camera's host, and reads what the camera offers.
  /// kNoVideo when there is no video, kEncryptedStream when it comes encrypted alone.
  void Describe();
  /// The same of another path, over the connection of a Describe that was answered, and with its login. Where the
  /// camera has closed that meanwhile, this is kNotUnderstood.
  void DescribeOther(std::string_view path);
  /// What the camera's software says of itself.
  const ServerName& Server() const { return server_; }
  /// False once it was seen that the camera has closed the connection.
  bool IsOpen() const { return isOpen_; }
  /// What Describe found.
  const SdpVideo& Video() const { return video_; }
  const std::string& Audio() const { return audio_; }
  /// Asks for a session with the video: over this connection, or over UDP where the camera refuses that.
  /// kTransportRefused when it refuses both.
  void Setup();
  /// Starts the video.
  void Play();
  /// Takes the next packet, and keeps the session alive meanwhile. kTransportRefused when none has come over UDP in
  /// half of the time.
  void Read();
  /// What Read found; valid until the next call that is not const.
  const InterleavedPacket& Packet() const { return packet_; }

  /// What is to be done next, `now`.
  Step Next(Clock::time_point now);
  Outcome Result() const { return result_; }

  int Port() const { return target_.port; }
  bool IsTls() const { return target_.isTls; }
  void Connected(Outcome outcome) { outcome == Outcome::kOk ? SendRequest() : Finish(outcome); }

  std::span<const std::uint8_t> Outgoing() const;
  /// kNotUnderstood: the camera has closed the connection; kTimedOut: it took nothing until the deadline.
  void Sent(Outcome outcome);

  Clock::time_point Until() const;
  Clock::time_point Deadline() const { return hasSpoken_ ? deadline_ : std::min(deadline_, answerBy_); }
  /// Room for what comes. Received() tells how many bytes did.
  std::span<std::uint8_t> Space() { return parser_.Space(); }
  void Received(std::size_t size) { parser_.Filled(size); }
  void Ended(Ending ending);

  /// `rtpPort`: the even one of the pair; 0 when there is none.
  void PortsOpened(int rtpPort);
  /// How the packets come, once Setup has succeeded.
  const RtspTransport& Transport() const { return transport_; }
  /// Tells of a packet that came over UDP; it has to stay as long as Packet() is wanted.
  void Arrived(const InterleavedPacket& packet);

  /// Ends what was begun, also for a reason that lies outside.
  void Finish(Outcome outcome);

  /// One RTCP packet as the connection carries it.
  std::vector<std::uint8_t> ControlFrame(std::span<const std::uint8_t> packet) const {
    return transport_.ControlFrame(packet);
  }
  /// What is to be sent when the connection is given up; "" when there is no session, or its login is not proven.
  std::string Teardown();

 private:
  enum class Goal { kOptions, kDescribe, kSetup, kPlay, kRead };
  enum class State {
    kConnecting,
    kSending,
    kListening,
    kPausing,  ///< before the request is sent again: perhaps the camera closes the connection
    kOpening,  ///< ports of UDP
    kDone,
  };
  struct Request {
    std::string_view method;
    std::string uri;
    std::string headers;
  };
  struct EarlyPacket {
    bool isControl;
    std::vector<std::uint8_t> bytes;
  };

  void Begin(Goal goal, Request request);
  void BeginDescribe();
  void Connect();
  void Pause();
  void Reconnect();
  void Repeat(const RtspMessage& refusal);
  void SendRequest();
  Outcome Compose(const Request& request, std::string& text);
  Step Await();
  void KeepAlive();

  void Take(RtspParser::Item item);
  void TakePacket(const InterleavedPacket& packet);
  void TakeMessage(const RtspMessage& message);
  void TakeName(const RtspMessage& answer);
  void AnswerRequest(const RtspMessage& request);
  void TakeAnswer(const RtspMessage& answer);
  Outcome MeaningOf(const RtspMessage& answer);
  void AskOptions(const RtspMessage& refusal);
  void LeaveOptions(const RtspMessage& answer);
  void FollowRedirect(const RtspMessage& answer);
  Outcome ReadDescription(const RtspMessage& answer);
  Outcome ReadGrant(const RtspMessage& answer);
  bool IsAskingForUdp() const { return goal_ == Goal::kSetup && transport_.IsUdp(); }

  /// True while what the camera does next tells whether it takes the login. To OPTIONS many answer whatever login is
  /// with it, unless it was OPTIONS that they asked one for.
  bool IsLoginOnTrial() const { return login_.IsOnTrial() && IsTelling(); }
  bool IsTelling() const { return goal_ != Goal::kOptions || login_.IsWantedHere(); }
  void LogIn(const RtspMessage& refusal);

  RtspTarget target_;
  std::string uri_;
  const Clock::time_point deadline_;
  RtspLogins& logins_;

  Clock::time_point answerBy_ = Clock::time_point::max();
  bool hasSpoken_ = false;  // the camera, RTSP
  bool isOpen_ = false;

  Clock::time_point now_;
  Goal goal_ = Goal::kDescribe;
  State state_ = State::kDone;
  Outcome result_ = Outcome::kOk;
  Request request_;  // what is asked now
  Clock::time_point sentAt_;
  Clock::time_point pauseUntil_ = Clock::time_point::max();
  int redirects_ = 0;               // that were followed
  bool hasAnsweredCamera_ = false;  // a request of its own, behind this one
  bool hasAskedOptions_ = false;
  std::string outgoing_;
  RtspParser parser_;
  unsigned int lastSequence_ = 0;

  RtspLogin login_;
  ServerName server_;

  SdpVideo video_;
  std::string audio_;
  std::string base_;
  RtspSessionId session_;
  RtspTransport transport_;
  Clock::time_point packetBy_ = Clock::time_point::max();  // the first over UDP
  Clock::time_point keepAliveAt_ = Clock::time_point::max();
  InterleavedPacket packet_;
  std::deque<EarlyPacket> early_;  // came before PLAY was answered
  std::size_t earlySize_ = 0;
  std::vector<std::uint8_t> current_;  // the early packet that was handed out
};

}  // namespace recorder
