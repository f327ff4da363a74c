#include "tests/sessions/session_run.h"

#include "recorder/net/camera_address.h"
#include "recorder/net/rtsp/rtsp_session.h"
#include "tests/sessions/sim_camera.h"

namespace sessions {
namespace {

using recorder::LoginMethod;
using recorder::RtspSession;

constexpr int kMostSteps = 200'000;
constexpr int kMostConnections = 20;  // to four addresses, where redirects lead
constexpr Clock::time_point kStart{std::chrono::hours(1)};

std::string_view Text(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

class Trial : private recorder::RtspLogins {
 public:
  Trial(Chance& chance, bool tells) : chance_(chance), tells_(tells) {
    if (plan_.answerBy.count() > 0) session_.AnswerBy(kStart + plan_.answerBy);
  }

  Run Go() {
    Tell(plan_.isRight ? "has the right login" : "has a wrong login");
    bool isGoing = Do(&RtspSession::Describe) && Do(&RtspSession::Setup) && Do(&RtspSession::Play);
    for (std::size_t i = 0; isGoing && i < plan_.packetsWanted; ++i) {
      isGoing = Do(&RtspSession::Read);
      const auto isNext = [&] { return Text(session_.Packet().bytes) == SimCamera::Packet(i, plan_.packetSize); };
      Expect(!isGoing || plan_.IsLoose() || isNext(), "another packet");
    }
    CheckEnd();
    SayGoodbye();
    CheckLogins();
    CheckSteadiness();
    return {mistake_, std::string(NameOf(session_.Result())), story_};
  }

 private:
  bool Do(void (RtspSession::*begin)()) {
    isPlaying_ |= begin == &RtspSession::Play;
    (session_.*begin)();
    for (;;) {
      Expect(++steps_ < kMostSteps && connections_ <= kMostConnections, "goes on without end");
      if (!mistake_.empty()) return false;
      switch (session_.Next(now_)) {
        case RtspSession::Step::kConnect:
          Connect();
          break;
        case RtspSession::Step::kSend:
          Send();
          break;
        case RtspSession::Step::kReceive:
          Receive();
          break;
        case RtspSession::Step::kOpenPorts:
          session_.PortsOpened(plan_.hasPorts ? 5000 : 0);
          break;
        case RtspSession::Step::kDone:
          return session_.Result() == Outcome::kOk;
      }
    }
  }

  void Connect() {
    ++connections_;
    Tell("connects to ", std::to_string(session_.Port()));
    Expect(session_.Port() == 554 || session_.Port() == allowedPort_, "connects where it may not");
    Expect(session_.IsTls() == (session_.Port() == recorder::kRtspsPort), "leaves TLS, or enters it unasked");
    if (plan_.connects == Outcome::kTimedOut) now_ = session_.Deadline();
    if (plan_.connects == Outcome::kOk) camera_.Connect(session_.Port());
    session_.Connected(plan_.connects);
  }

  void Send() {
    const std::string_view bytes = Text(session_.Outgoing());
    Tell("says ", bytes);
    ++sendings_;
    const bool stops = sendings_ == plan_.stopsAt;
    const bool fails = sendings_ == plan_.failsAt;
    if (stops) now_ = std::max(now_, session_.Deadline());
    if (fails) camera_.Fail(now_);
    if (!stops && !fails) camera_.Send(bytes, now_);
    session_.Sent(stops ? Outcome::kTimedOut : fails ? Outcome::kNotUnderstood : Outcome::kOk);
  }

  void Receive() {
    const Clock::time_point until = session_.Until();
    Expect(until <= session_.Deadline() && session_.Deadline() <= kStart + plan_.deadline, "waits beyond the deadline");
    const bool isPause = !isPlaying_ && until < session_.Deadline();
    Expect(!isPause || !IsSteady(session_.Port()), "pauses before a camera that is known to stay");
    if (camera_.TakeDatagram(until, now_, datagram_)) {
      Tell("takes a datagram");
      return session_.Arrived({false, {reinterpret_cast<const std::uint8_t*>(datagram_.data()), datagram_.size()}});
    }
    const std::span<std::uint8_t> space = session_.Space();
    std::size_t size = 0;
    switch (camera_.Receive(until, now_, space, size)) {
      case Wire::Event::kNothing:
        return Tell("hears nothing");
      case Wire::Event::kBytes:
        Tell("hears ", Text(space.first(size)));
        return session_.Received(size);
      case Wire::Event::kEnd:
        const bool isUnread = camera_.WasClosedUnread();
        Tell("hears the end", isUnread ? ", unread" : "");
        return session_.Ended(isUnread ? RtspSession::Ending::kUnread : RtspSession::Ending::kUsual);
    }
  }

  void CheckEnd() {
    const Outcome outcome = session_.Result();
    Tell("ends with ", NameOf(outcome));
    Expect(now_ <= session_.Deadline(), "ends behind the deadline");
    Expect(outcome != Outcome::kTimedOut || now_ == session_.Deadline() || plan_.connects == outcome,
           "times out early");
    if (plan_.IsLoose() || plan_.Allowed().contains(outcome)) return;
    std::string wanted;
    for (const Outcome allowed : plan_.Allowed()) wanted += " " + std::string(NameOf(allowed));
    Expect(wanted.empty(), "ends with " + std::string(NameOf(outcome)) + " instead of" + wanted);
  }

  void SayGoodbye() {
    if (connections_ == 0 || plan_.connects != Outcome::kOk) return;
    const std::string bytes = session_.Teardown();
    Tell("takes its leave: ", bytes);
    camera_.Send(bytes, now_);
  }

  void CheckLogins() {
    const bool isMisled = plan_.IsLoose() || (!plan_.login.changesNonce.empty() && plan_.login.changesAlways);
    Expect(camera_.Login().Wrong() <= (isMisled ? 2 : 1), "tries a wrong login again");
    Expect(!camera_.Login().WasBasicBehindDigest(), "shows the password to a camera that knows Digest");
    const bool isSentMore = isMisled || !plan_.optionsFirst.empty() || plan_.resetsAt + plan_.failsAt > 0;
    Expect(isSentMore || !camera_.Login().MisusesNonces(),
           "counts a nonce from another one, or goes on with stale ones");
    Expect(camera_.Mistake().empty(), "sends what no camera should be sent: " + camera_.Mistake());
  }

  /// Of a camera that always closes behind its challenge, and took the login all the same.
  void CheckSteadiness() {
    const LoginPlan& login = plan_.login;
    const bool isMet = !login.offer.empty() && !login.asksAtPlay && plan_.redirect.text.empty();
    const bool leaves = isMet && login.after401 == End::kCloses && !login.closesOnce;
    const bool isTaken = session_.Result() == Outcome::kOk;
    Expect(!leaves || !isTaken || steadyPort_ == 0, "thinks that a camera stays that has left");
  }

  void Expect(bool holds, const std::string& otherwise) {
    if (!holds && mistake_.empty()) mistake_ = otherwise;
  }

  void Tell(std::string_view what, std::string_view bytes = "") {
    if (!tells_) return;
    constexpr std::size_t kMostTold = 600;
    story_ += std::to_string((now_ - kStart) / milliseconds(1)) + " ms: " + std::string(what);
    for (const char c : bytes.substr(0, kMostTold))
      if (c != '\r') story_ += c == '\n' ? std::string("\n    ") : std::string(1, c >= ' ' && c <= '~' ? c : '.');
    story_ += '\n';
  }

  bool HasLogin() const override { return plan_.hasLogin; }
  void Remember(const std::vector<recorder::LoginChallenge>& challenges) override {
    for (const auto& challenge : challenges) knowsDigest_ |= challenge.isDigest;
  }
  bool MayLogIn(LoginMethod method) override { return method != LoginMethod::kBasic || !knowsDigest_; }
  std::optional<std::string> Authorization(const recorder::LoginChallenge& challenge, std::string_view method,
                                           std::string_view uri, unsigned int use) override {
    return (challenge.isDigest ? "Digest " : "Basic ") + std::string(plan_.isRight ? "right " : "wrong ") +
           std::string(method) + ' ' + std::string(uri) + ' ' + std::to_string(use) + ' ' + challenge.nonce;
  }
  void Worked(LoginMethod /*method*/) override {}
  void AllowPort(int port) override { allowedPort_ = port; }
  bool IsSteady(int port) const override { return steadyPort_ == port; }
  void RememberSteady(int port, bool isSteady) override { steadyPort_ = isSteady ? port : 0; }

  Chance& chance_;
  const bool tells_;
  const CameraPlan plan_ = MakePlan(chance_);
  SimCamera camera_{plan_, chance_};
  RtspSession session_{{"cam", 554, "/live", "test"}, kStart + plan_.deadline, *this};
  Clock::time_point now_ = kStart;
  std::string datagram_;
  int steps_ = 0;
  int connections_ = 0;
  std::size_t sendings_ = 0;
  bool isPlaying_ = false;
  int allowedPort_ = 0;
  int steadyPort_ = plan_.isThoughtSteady ? 554 : 0;
  bool knowsDigest_ = false;
  std::string mistake_;
  std::string story_;
};

}  // namespace

Run RunSession(Chance chance, bool tells) { return Trial(chance, tells).Go(); }

}  // namespace sessions
