#pragma once

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "recorder/net/rtsp/rtsp_session.h"

namespace recorder {

inline const std::string kClosed = "closed";
inline const std::string kUnread = "unread";
inline const std::string kQuiet = "quiet";  // until the session acts by itself

/// A session with a camera that says one part of a script whenever it is waited for, then nothing more. A part is
/// bytes, or one of the words above.
class RtspStory : private RtspLogins {
 public:
  /// `isSteady`: the camera is known to keep its connection open behind a challenge.
  explicit RtspStory(std::vector<std::string> script, bool isSteady = false)
      : script_(std::move(script)), isSteady_(isSteady) {
    bool isGoing = Run(&RtspSession::Describe) && Run(&RtspSession::Setup) && Run(&RtspSession::Play);
    for (; isGoing && (isGoing = Run(&RtspSession::Read));) Tell(std::to_string(session_.Packet().bytes.size()));
    told_ += NameOf(session_.Result());
  }

  /// A port where the session connects, with an "s" for TLS, a letter with the login's nonce and use where it sends,
  /// the size of each packet, the outcome.
  const std::string& Told() const { return told_; }
  const std::vector<std::string>& Sent() const { return sent_; }
  /// What is known now.
  bool IsSteady() const { return isSteady_; }

 private:
  bool Run(void (RtspSession::*begin)()) {
    (session_.*begin)();
    for (;;) {
      switch (session_.Next(now_)) {
        case RtspSession::Step::kConnect:
          Tell(std::to_string(session_.Port()) + (session_.IsTls() ? "s" : ""));
          session_.Connected(Outcome::kOk);
          break;
        case RtspSession::Step::kSend:
          sent_.emplace_back(session_.Outgoing().begin(), session_.Outgoing().end());
          Tell(sent_.back().front() + std::exchange(login_, ""));
          session_.Sent(Outcome::kOk);
          break;
        case RtspSession::Step::kReceive:
          if (next_ == script_.size()) {
            now_ = session_.Until();
          } else {
            Hear(script_[next_++]);
          }
          break;
        case RtspSession::Step::kOpenPorts:
          Tell("ports");
          session_.PortsOpened(5000);
          break;
        case RtspSession::Step::kDone:
          return session_.Result() == Outcome::kOk;
      }
    }
  }

  void Hear(const std::string& part) {
    if (part == kClosed) return session_.Ended(RtspSession::Ending::kUsual);
    if (part == kQuiet) {
      now_ = session_.Until();
      return;
    }
    if (part == kUnread) return session_.Ended(RtspSession::Ending::kUnread);
    if (part.size() > session_.Space().size()) throw std::length_error("a part that no single read would bring");
    std::copy(part.begin(), part.end(), session_.Space().begin());
    session_.Received(part.size());
  }

  void Tell(const std::string& word) { told_ += word + ' '; }

  bool HasLogin() const override { return true; }
  void Remember(const std::vector<LoginChallenge>& /*challenges*/) override {}
  bool MayLogIn(LoginMethod /*method*/) override { return true; }
  std::optional<std::string> Authorization(const LoginChallenge& challenge, std::string_view /*method*/,
                                           std::string_view /*uri*/, unsigned int use) override {
    return login_ = challenge.nonce + std::to_string(use);
  }
  void Worked(LoginMethod /*method*/) override {}
  bool IsSteady(int /*port*/) const override { return isSteady_; }
  void RememberSteady(int /*port*/, bool isSteady) override { isSteady_ = isSteady; }
  void AllowPort(int /*port*/) override {}

  const std::vector<std::string> script_;
  bool isSteady_;
  std::size_t next_ = 0;
  Clock::time_point now_;
  RtspSession session_{{"cam", 554, "/live", "test"}, Clock::time_point(std::chrono::seconds(70)), *this};
  std::string login_;
  std::string told_;
  std::vector<std::string> sent_;
};

}  // namespace recorder
