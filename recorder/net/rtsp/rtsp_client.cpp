#include "recorder/net/rtsp/rtsp_client.h"

#include <tuple>
#include <utility>

#include "recorder/net/login/camera_login.h"

namespace recorder {

RtspClient::RtspClient(CameraAddress address, std::string_view path, Clock::time_point deadline, std::string userAgent)
    : address_(std::move(address)),
      session_({address_.host, address_.port, std::string(path), std::move(userAgent)}, deadline, *this) {}

RtspClient::~RtspClient() {
  const std::string teardown = session_.Teardown();
  std::ignore =
      socket_.Write(std::span(reinterpret_cast<const std::uint8_t*>(teardown.data()), teardown.size()), Clock::now());
}

Outcome RtspClient::Describe() {
  session_.Describe();
  return Run();
}

Outcome RtspClient::Setup() {
  session_.Setup();
  return Run();
}

Outcome RtspClient::Play() {
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
  std::ignore = socket_.Write(session_.ControlFrame(packet), session_.Deadline());
}

/// Does what the session says until it has what it was asked for, or failed.
Outcome RtspClient::Run() {
  for (;;) {
    switch (session_.Next(Clock::now())) {
      case RtspSession::Step::kConnect:
        session_.Connected(Connect(session_.Port()));
        break;
      case RtspSession::Step::kSend:
        session_.Sent(socket_.Write(session_.Outgoing(), session_.Deadline()));
        break;
      case RtspSession::Step::kReceive:
        Receive();
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

Outcome RtspClient::Connect(int port) {
  address_.port = port;
  const auto refusal = RequestScope::Current().Refusal(address_.host, port, address_.user, address_.password);
  return refusal ? *refusal : socket_.Connect(address_.host, port, session_.Deadline());
}

void RtspClient::Receive() {
  std::size_t received = 0;
  const bool isTimely = socket_.Read(session_.Space(), session_.Until(), received) == Outcome::kOk;
  if (!isTimely) return;  // the session sees what time it is
  if (received == 0) {
    return session_.Ended(socket_.WasClosedUnread() ? RtspSession::Ending::kUnread : RtspSession::Ending::kUsual);
  }
  session_.Received(received);
  const bool isTaken = RequestScope::Current().Spend(received, address_.host);
  if (!isTaken) session_.Finish(Outcome::kNotUnderstood);
}

bool RtspClient::HasLogin() const { return recorder::HasLogin(address_); }

void RtspClient::Remember(const std::vector<LoginChallenge>& challenges) { RememberChallenges(address_, challenges); }

bool RtspClient::MayLogIn(LoginMethod method) { return recorder::MayLogIn(address_, method); }

std::optional<std::string> RtspClient::Authorization(const LoginChallenge& challenge, std::string_view method,
                                                     std::string_view uri, unsigned int use) {
  return MakeAuthorization(address_, challenge, method, uri, {MakeClientNonce(), use});
}

void RtspClient::Worked(LoginMethod method) { LoginWorked(address_, method); }

void RtspClient::AllowPort(int port) { RequestScope::Current().AllowPort(address_.host, port); }

}  // namespace recorder
