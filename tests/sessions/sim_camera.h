#pragma once

#include <charconv>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tests/sessions/answers.h"
#include "tests/sessions/sim_login.h"
#include "tests/sessions/wire.h"

namespace sessions {

inline void Replace(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
}

/// What stands in `text` behind `name`, up to one of `ends`.
inline std::string_view Behind(std::string_view text, std::string_view name, const char* ends = "\r") {
  const std::size_t at = text.find(name);
  if (at == std::string_view::npos) return "";
  text.remove_prefix(at + name.size());
  return text.substr(0, text.find_first_of(ends));
}

inline int Number(std::string_view text, int otherwise) {
  std::from_chars(text.data(), text.data() + text.size(), otherwise);
  return otherwise;
}

/// One request as it came.
struct Heard {
  std::string_view method;
  std::string uri;
  std::string_view headers;

  std::string_view Header(std::string_view name) const { return Behind(headers, "\r\n" + std::string(name) + ": "); }
};

/// A camera as its plan has it, with the network before it. Whoever asks it says at which time.
class SimCamera {
 public:
  SimCamera(const CameraPlan& plan, Chance& chance) : plan_(plan), chance_(chance), login_(plan.login) {}

  void Connect(int port) {
    asksForLogin_ = asksForLogin_ && port == port_;
    port_ = port;
    login_.ConnectionEnds();
    wire_.emplace(plan_, chance_);
    received_.clear();
    isDeaf_ = isUnread_ = isReset_ = false;
    hasOptions_ = hasOptions_ && !plan_.isOptionsOfConnection;
    nextAt_ = Clock::time_point::max();
  }

  /// What comes for a camera that does not read it breaks the connection; it is told of that when it has closed.
  void Send(std::string_view bytes, Clock::time_point now) {
    const Clock::time_point at = now + plan_.delay;
    if (plan_.login.isUnread && bytes.find("\r\nAuthorization: ") != std::string_view::npos) wire_->Close(at);
    if (wire_->IsClosed(at)) isUnread_ = true;
    if (isDeaf_ && !wire_->IsClosed(at)) isReset_ = true;
    if (isDeaf_ || wire_->IsClosed(at)) return;
    Play(at);
    heardAt_ = at;
    received_ += bytes;
    for (std::size_t end = 0; (end = received_.find("\r\n\r\n")) != std::string::npos;) {
      const std::string request = received_.substr(0, end + 4);
      received_.erase(0, end + 4);
      Hear(request, at);
    }
    if (!received_.empty()) mistake_ = "a request with a body: " + received_;
  }

  void Fail(Clock::time_point now) { Leave(End::kResets, now); }
  Wire::Event Receive(Clock::time_point until, Clock::time_point& now, std::span<std::uint8_t> space,
                      std::size_t& size) {
    if (wire_->IsEmpty() && nextAt_ <= until) Play(nextAt_);
    return wire_->Receive(until, now, space, size);
  }

  /// Takes a packet that comes over UDP before all else that comes until `until`, which `now` becomes the time of.
  bool TakeDatagram(Clock::time_point until, Clock::time_point& now, std::string& datagram) {
    if (isUdp_ && datagrams_.empty() && wire_->IsEmpty() && nextAt_ <= until) Play(nextAt_);
    if (datagrams_.empty() || std::max(now, datagrams_.front().first) > std::min(until, wire_->NextAt())) return false;
    now = std::max(now, datagrams_.front().first);
    datagram = std::move(datagrams_.front().second);
    datagrams_.pop_front();
    return true;
  }

  /// True when the connection ended without a reset, and not all that was sent was read.
  bool WasClosedUnread() const { return isUnread_ && !isReset_; }

  const SimLogin& Login() const { return login_; }
  /// What a request was that no camera should be sent; "" for none.
  const std::string& Mistake() const { return mistake_; }

  static std::string Packet(std::size_t number, std::size_t size) {
    std::string packet(size, static_cast<char>(number));
    packet[0] = '\x80';  // RTP version 2
    return packet;
  }

 private:
  static constexpr std::size_t kFlood = 9U << 20;
  static inline const Answer kDone = {"RTSP/1.0 200 OK\r\n\r\n"};

  void Hear(std::string_view request, Clock::time_point at) {
    CheckForm(request);
    if (request.starts_with("RTSP/1.0 ") || isDeaf_) return;
    const Heard heard{Behind(request, "", " "), std::string(Behind(request, " ", " ")), request};
    if (!asksForLogin_ && !heard.Header("Authorization").empty()) mistake_ = "a login that was not asked for there";
    if (plan_.resetsAt > 0 && ++answers_ == plan_.resetsAt) return Leave(End::kResets, at);
    if (plan_.asks && chance_.OneIn(2)) wire_->Say(chance_.Of(kQuestions), at);
    Reply(heard, at);
  }

  /// Only lines that we know, so that nothing that a camera said became one.
  void CheckForm(std::string_view request) {
    static const std::vector<std::string_view> kKnown = {"CSeq",  "User-Agent", "Accept",        "Transport",
                                                         "Range", "Session",    "Authorization", ""};
    const std::string whole(request);
    const bool isAnswer = request.starts_with("RTSP/1.0 ");
    if (!isAnswer && Behind(request, " ", "\r").find(" RTSP/1.0") == std::string_view::npos) mistake_ = whole;
    for (std::size_t at = request.find("\r\n"); at + 4 < request.size(); at = request.find("\r\n", at + 2)) {
      const std::string_view line = request.substr(at + 2, request.find("\r\n", at + 2) - at - 2);
      const bool isKnown = std::ranges::find(kKnown, line.substr(0, line.find(": "))) != kKnown.end();
      if (!isKnown || line.find_first_of("\r\n") != std::string_view::npos) mistake_ = whole;
    }
  }

  void Reply(const Heard& request, Clock::time_point at) {
    if (request.method == "TEARDOWN") return static_cast<void>(Refuses(request, at));
    const bool isDescribe = request.method == "DESCRIBE";
    if (isDescribe && request.uri.find("://cam:") == std::string::npos) mistake_ = "another host: " + request.uri;
    if (request.method == "OPTIONS") hasOptions_ = true;
    const bool isEarly = isDescribe && !plan_.optionsFirst.empty() && !hasOptions_;
    const Answer wantsOptions = {"RTSP/1.0 " + plan_.optionsFirst + " Ask first\r\n\r\n"};
    const bool isUnread = plan_.optionsOrder == CameraPlan::Order::kUnread && !request.Header("Authorization").empty();
    if (isEarly && (isUnread || plan_.optionsOrder == CameraPlan::Order::kBefore))
      return Say(request, wantsOptions, at);
    if (request.method == "OPTIONS" && plan_.isOptionsOpen) return Say(request, kDone, at);
    if (!(IsMoved(request) && plan_.isRedirectOpen) && Refuses(request, at)) return;
    if (isEarly) return Say(request, wantsOptions, at);
    if (isDescribe) return Describe(request, at);
    if (request.method == "SETUP") return Grant(request, at);
    if (request.method == "PLAY") return Start(request, at);
    Say(request, kDone, at);
  }

  /// True when the request needs another login than it has.
  bool Refuses(const Heard& request, Clock::time_point at) {
    const auto verdict = login_.Judge(request.method, request.uri, request.Header("Authorization"));
    if (verdict == SimLogin::Verdict::kRight) return false;
    const Answer& refusal = plan_.login.refusal;
    const bool isOther = verdict == SimLogin::Verdict::kWrong && (!refusal.text.empty() || refusal.end != End::kStays);
    isOther ? Say(request, refusal, at) : Challenge(request, verdict == SimLogin::Verdict::kStale, at);
    return true;
  }

  void Challenge(const Heard& request, bool isStale, Clock::time_point at) {
    const LoginPlan& plan = plan_.login;
    const End end = plan.closesOnce && asksForLogin_ ? End::kStays : plan.after401;
    asksForLogin_ = true;
    const std::string closing = end == End::kSaysClose ? "Connection: close\r\n" : "";
    Say(request, {"RTSP/1.0 401 No\r\n" + closing + login_.Challenges(isStale) + "\r\n"}, at);
    Leave(end, at, plan.closesAfter);
  }

  void Say(const Heard& request, const Answer& answer, Clock::time_point at) {
    std::string text = answer.text;
    Replace(text, "URI", request.uri);
    const std::size_t bodyBegin = text.find("\r\n\r\n") + 4;
    const bool hasBody = bodyBegin < text.size() && bodyBegin >= 4;
    const bool isLong = hasBody && text.find("Content-Length") == std::string::npos;
    if (isLong) text.insert(bodyBegin - 2, "Content-Length: " + std::to_string(text.size() - bodyBegin) + "\r\n");
    const bool isWhole = text.starts_with("RTSP/1.0 ") && text.find("\r\n\r\n") != std::string::npos;
    if (isWhole && plan_.hasCseq) {
      text.insert(text.find("\r\n") + 2, "CSeq: " + std::string(request.Header("CSeq")) + "\r\n");
    }
    wire_->Say(text, at);
    if (plan_.repeats && chance_.OneIn(3)) wire_->Say(text, at);
    Leave(answer.end, at);
  }

  bool IsMoved(const Heard& request) const {
    return request.method == "DESCRIBE" && !plan_.redirect.text.empty() && !request.uri.ends_with("/moved");
  }

  void Describe(const Heard& request, Clock::time_point at) {
    if (IsMoved(request)) return Say(request, plan_.redirect, at);
    track_ = plan_.describe.track;
    Replace(track_, "URI", request.uri);
    Say(request, plan_.describe, at);
  }

  void Grant(const Heard& request, Clock::time_point at) {
    if (request.uri != track_ && !plan_.IsLoose()) mistake_ = "SETUP of " + request.uri + " instead of " + track_;
    isUdp_ = request.Header("Transport").find("client_port=5000-5001") != std::string_view::npos;
    const Answer& answer = isUdp_ ? plan_.udp : plan_.setup;
    const std::string& text = answer.text;
    session_ = Behind(text, "Session:", ";\r");
    if (session_.starts_with(' ')) session_.erase(0, 1);
    timeout_ = std::chrono::seconds(std::max(0, Number(Behind(text, "timeout="), 60)));
    if (timeout_.count() == 0) timeout_ = milliseconds(60'000);
    channel_ = static_cast<char>(Number(Behind(text, "interleaved="), 0));
    Say(request, answer, at);
  }

  void Start(const Heard& request, Clock::time_point at) {
    if (request.Header("Session") != session_ && !plan_.IsLoose()) mistake_ = "PLAY of another session";
    for (std::size_t said = 0; plan_.isFlooding && said < kFlood; said += plan_.packetSize + 64) SayPacket(at);
    while (next_ < plan_.packetsEarly) SayPacket(at);
    Say(request, plan_.play, at);
    nextAt_ = at;
    if (!plan_.play.text.starts_with("RTSP/1.0 200 OK") || plan_.play.outcome != Outcome::kOk)
      nextAt_ = Clock::time_point::max();
  }

  /// Says what is due.
  void Play(Clock::time_point until) {
    const Clock::time_point idleEnd = heardAt_ + timeout_;
    for (; nextAt_ <= until && next_ < plan_.packets; nextAt_ += plan_.packetGap) {
      if (plan_.endsIdleSession && nextAt_ > idleEnd) return Leave(End::kCloses, idleEnd);
      SayPacket(nextAt_);
    }
    if (nextAt_ <= until && next_ >= plan_.packets) Leave(plan_.behindPackets, nextAt_);
  }

  void SayPacket(Clock::time_point at) {
    if (isUdp_) return static_cast<void>(datagrams_.emplace_back(at + plan_.delay, Packet(next_++, plan_.packetSize)));
    if (plan_.asks && chance_.OneIn(4)) wire_->Say(chance_.Of(kQuestions), at);
    const std::size_t size = plan_.packetSize;
    const std::string header = {'$', channel_, static_cast<char>(size >> 8), static_cast<char>(size & 255)};
    wire_->Say(header + Packet(next_++, size), at);
  }

  /// It reads no more, and closes after `wait`.
  void Leave(End end, Clock::time_point at, milliseconds wait = milliseconds(0)) {
    if (end == End::kStays) return;
    isDeaf_ = true;
    isReset_ = end == End::kResets;
    wire_->Close(at + wait);
  }

  const CameraPlan& plan_;
  Chance& chance_;
  SimLogin login_;
  std::string mistake_;
  std::optional<Wire> wire_;
  std::string received_;
  int port_ = 0;
  bool asksForLogin_ = false;  // there
  bool isDeaf_ = false;        // it reads no more
  bool isUnread_ = false;
  bool isReset_ = false;
  bool hasOptions_ = false;
  std::size_t answers_ = 0;
  std::string track_;
  std::string session_;
  milliseconds timeout_{60'000};
  char channel_ = 0;
  bool isUdp_ = false;
  std::deque<std::pair<Clock::time_point, std::string>> datagrams_;
  std::size_t next_ = 0;  // packet
  Clock::time_point nextAt_ = Clock::time_point::max();
  Clock::time_point heardAt_;
};

}  // namespace sessions
