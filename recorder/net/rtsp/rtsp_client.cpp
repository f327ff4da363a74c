#include "recorder/net/rtsp/rtsp_client.h"

#include <algorithm>
#include <array>
#include <exception>
#include <tuple>
#include <utility>

#include "recorder/net/login/camera_login.h"
#include "recorder/net/rtsp/steady_cameras.h"

namespace recorder {
namespace {

/// A receiver report without a block (RFC 3550 section 6.4.2), from nobody yet.
constexpr std::array<std::uint8_t, 8> kEmptyReport = {0x80, 201, 0, 1, 0, 0, 0, 0};

}  // namespace

RtspClient::RtspClient(CameraAddress address, std::string_view path, Clock::time_point deadline, std::string userAgent)
    : address_(std::move(address)),
      session_({address_.host, address_.port, std::string(path), std::move(userAgent), address_.isTls}, deadline,
               *this) {}

RtspClient::~RtspClient() {
  try {
    const std::string teardown = session_.Teardown();
    std::ignore =
        socket_.Write(std::span(reinterpret_cast<const std::uint8_t*>(teardown.data()), teardown.size()), Clock::now());
  } catch (const std::exception&) {
    return;  // such as for the records, which lend the login: without a TEARDOWN the camera ends the session by itself
  }
}

Outcome RtspClient::Describe() {
  session_.Describe();
  return Run();
}

Outcome RtspClient::DescribeOther(std::string_view path) {
  session_.DescribeOther(path);
  return Run();
}

Outcome RtspClient::Setup() {
  session_.Setup();
  const Outcome outcome = Run();
  const RtspPorts camera = session_.Transport().CameraPorts();
  if (ports_) ports_->Expect(camera.rtp, camera.rtcp);
  return outcome;
}

/// A firewall lets in what comes from where something was sent to.
Outcome RtspClient::Play() {
  if (ports_) ports_->SendRtp(kEmptyReport);
  if (ports_) ports_->SendRtcp(kEmptyReport);
  session_.Play();
  return Run();
}

Outcome RtspClient::Read(InterleavedPacket& packet) {
  session_.Read();
  const Outcome outcome = Run();
  packet = session_.Packet();
  return outcome;
}

void RtspClient::SendControl(std::span<const std::uint8_t> packet) {
  if (ports_) return ports_->SendRtcp(packet);
  std::ignore = socket_.Write(session_.ControlFrame(packet), session_.Deadline());
}

/// Does what the session says until it has what it was asked for, or failed.
Outcome RtspClient::Run() {
  for (;;) {
    switch (session_.Next(Clock::now())) {
      case RtspSession::Step::kConnect:
        session_.Connected(Connect());
        break;
      case RtspSession::Step::kSend:
        session_.Sent(Send());
        break;
      case RtspSession::Step::kReceive:
        Receive();
        break;
      case RtspSession::Step::kOpenPorts:
        OpenPorts();
        break;
      case RtspSession::Step::kDone:
        RememberResult();
        return session_.Result();
    }
  }
}

void RtspClient::RememberResult() {
  RequestScope& scope = RequestScope::Current();
  const bool isShare = session_.Result() == Outcome::kTimedOut && session_.Deadline() < scope.Deadline();
  if (!isShare) scope.Remember(address_.host, address_.user, session_.Result());
}

Outcome RtspClient::Connect() {
  address_.port = session_.Port();
  address_.isTls = session_.IsTls();
  const auto refusal = RequestScope::Current().Refusal(address_.host, address_.port, address_.user, address_.password);
  if (refusal) return *refusal;
  const Outcome outcome = socket_.Connect(address_.host, address_.port, session_.Deadline());
  return outcome == Outcome::kOk && address_.isTls ? BeginTls() : outcome;
}

Outcome RtspClient::Send() {
  if (!RequestScope::Current().TakeRequest()) return Outcome::kTimedOut;
  return socket_.Write(session_.Outgoing(), session_.Deadline());
}

Outcome RtspClient::BeginTls() {
  const Outcome outcome = socket_.BeginTls(address_.host, session_.Deadline());
  return outcome == Outcome::kOk ? TrustCertificate(address_, socket_.Certificate()) : outcome;
}

void RtspClient::OpenPorts() {
  ports_ = UdpPair::OpenBeside(socket_.Descriptor());
  session_.PortsOpened(ports_ ? ports_->RtpPort() : 0);
}

void RtspClient::Receive() {
  if (!ports_) return ReceiveBytes();
  if (auto packet = order_.Take(Clock::now())) {
    packet_ = std::move(*packet);
    return session_.Arrived({false, packet_});
  }
  const bool hasBytes = ports_->Wait(socket_.Descriptor(), std::min(session_.Until(), order_.Until()));
  hasBytes ? ReceiveBytes() : ReceiveDatagram();
}

void RtspClient::ReceiveBytes() {
  std::size_t received = 0;
  const bool isTimely = socket_.Read(session_.Space(), session_.Until(), received) == Outcome::kOk;
  Spend(socket_.TakeCount());
  if (!isTimely) return;  // the session sees what time it is
  if (received == 0) {
    return session_.Ended(socket_.WasClosedUnread() ? RtspSession::Ending::kUnread : RtspSession::Ending::kUsual);
  }
  session_.Received(received);
}

void RtspClient::ReceiveDatagram() {
  const auto datagram = ports_->Receive();
  if (!datagram) return;
  if (datagram->isControl) {
    packet_.assign(datagram->bytes.begin(), datagram->bytes.end());
    session_.Arrived({true, packet_});
  } else {
    order_.Add(datagram->bytes, Clock::now());
  }
  Spend(datagram->bytes.size());
}

void RtspClient::Spend(std::size_t received) {
  const bool isTaken = RequestScope::Current().Spend(received, address_.host);
  if (!isTaken) session_.Finish(Outcome::kNotUnderstood);
}

bool RtspClient::HasLogin() const { return recorder::HasLogin(address_); }

void RtspClient::Remember(const std::vector<LoginChallenge>& challenges) { RememberChallenges(address_, challenges); }

bool RtspClient::MayLogIn(LoginMethod method) { return recorder::MayLogIn(address_, method); }

std::optional<std::string> RtspClient::Authorization(const LoginChallenge& challenge, std::string_view method,
                                                     std::string_view uri, unsigned int use) {
  if (method == "DESCRIBE") RequestScope::Current().Rungs().Enter(Rung::kLogin);
  return MakeAuthorization(address_, challenge, method, uri, {MakeClientNonce(), use});
}

void RtspClient::Worked(LoginMethod method) { LoginWorked(address_, method); }

bool RtspClient::IsSteady(int port) const { return SteadyCameras::OfProcess().Has(address_.host, port); }

void RtspClient::RememberSteady(int port, bool isSteady) {
  SteadyCameras& cameras = SteadyCameras::OfProcess();
  isSteady ? cameras.Add(address_.host, port) : cameras.Remove(address_.host, port);
}

void RtspClient::AllowPort(int port) { RequestScope::Current().AllowPort(address_.host, port); }

}  // namespace recorder
