#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/net/camera_address.h"
#include "recorder/net/rtsp/rtp_order.h"
#include "recorder/net/rtsp/rtsp_session.h"
#include "recorder/net/tls_socket.h"
#include "recorder/net/udp_pair.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// An RtspSession with one camera over a socket, inside TLS where its address says so or a redirect leads there, and
/// over UDP where the camera sends its packets so alone. Call Describe, Setup, Play, then Read as often as wanted;
/// after a failure the object is of no more use.
///
/// Owner:   holds one connection from Describe on, and two UDP ports from Setup on where the camera refuses to send by
///          the connection; the destructor closes them, and says TEARDOWN without waiting for the answer.
/// Thread:  one thread at a time; it must be that of the request, whose RequestScope is asked.
/// Time:    no call outlasts the deadline given to the constructor, the name's lookup included.
/// Failure: an Outcome; nothing throws but std::bad_alloc. kNotUnderstood includes a connection that ended early.
/// Secrets: the password goes into the Authorization header, to the camera's own host only. A wrong one is one attempt.
///          Nothing is sent to a camera whose certificate is kCertificateChanged.
class RtspClient : private RtspLogins {
 public:
  /// `path` is what follows host and port, with its query; bytes that an address cannot hold are percent-encoded.
  RtspClient(CameraAddress address, std::string_view path, Clock::time_point deadline,
             std::string userAgent = "recorder");
  ~RtspClient() override;
  RtspClient(const RtspClient&) = delete;
  RtspClient& operator=(const RtspClient&) = delete;

  /// From now on the client gives up at `time` unless the camera has spoken RTSP by then. That is not remembered for
  /// the request, since it says nothing of later contacts.
  void AnswerBy(Clock::time_point time) { session_.AnswerBy(time); }
  /// True once the camera has spoken RTSP.
  bool HasAnswered() const { return session_.HasAnswered(); }

  /// Connects, logs in if asked to, follows redirects within the camera's host, and reads what the camera offers.
  /// kNoVideo when there is no video, kEncryptedStream when it comes encrypted alone.
  [[nodiscard]] Outcome Describe();

  /// The same of another path, over the connection of a Describe that was answered, and with its login. Where the
  /// camera has closed that meanwhile, this is kNotUnderstood.
  [[nodiscard]] Outcome DescribeOther(std::string_view path);

  /// What the camera's software says of itself.
  const ServerName& Server() const { return session_.Server(); }
  /// False once it was seen that the camera has closed the connection.
  bool IsOpen() const { return session_.IsOpen(); }

  /// What Describe found.
  const SdpVideo& Video() const { return session_.Video(); }
  /// The encoding of the audio beside it, as FindAudio has it.
  const std::string& Audio() const { return session_.Audio(); }

  /// Asks for a session with the video: over this connection, or over UDP where the camera refuses that.
  /// kTransportRefused when it refuses both.
  [[nodiscard]] Outcome Setup();

  /// True when the packets come over UDP.
  bool IsOverUdp() const { return session_.Transport().IsUdp(); }

  /// Starts the video.
  [[nodiscard]] Outcome Play();

  /// Waits for the next packet, which is valid until the next call, and keeps the session alive meanwhile. Over UDP
  /// they come in their order, some perhaps not at all; kTransportRefused when none has come in half of the time.
  [[nodiscard]] Outcome Read(InterleavedPacket& packet);

  /// Sends one RTCP packet to the camera; a failure shows in the next Read.
  void SendControl(std::span<const std::uint8_t> packet);

 private:
  Outcome Run();
  void RememberResult();
  Outcome Connect();
  Outcome Send();
  Outcome BeginTls();
  void OpenPorts();
  void Receive();
  void ReceiveBytes();
  void ReceiveDatagram();
  void Spend(std::size_t received);

  bool HasLogin() const override;
  void Remember(const std::vector<LoginChallenge>& challenges) override;
  bool MayLogIn(LoginMethod method) override;
  std::optional<std::string> Authorization(const LoginChallenge& challenge, std::string_view method,
                                           std::string_view uri, unsigned int use) override;
  void Worked(LoginMethod method) override;
  bool IsSteady(int port) const override;
  void RememberSteady(int port, bool isSteady) override;
  void AllowPort(int port) override;

  CameraAddress address_;  // its port and TLS are those of the connection
  RtspSession session_;
  TlsSocket socket_;

  std::optional<UdpPair> ports_;
  RtpOrder order_;                    // over UDP
  std::vector<std::uint8_t> packet_;  // the one that the session has, over UDP
};

}  // namespace recorder
