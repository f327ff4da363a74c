#pragma once

#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tests/sessions/sim_login.h"
#include "tests/sessions/wire.h"

namespace sessions {

/// One request as it came.
struct Heard {
  std::string_view method;
  std::string uri;
  std::string_view headers;

  std::string_view Header(std::string_view name) const;
};

/// A camera as its plan has it, with the network before it. Whoever asks it says at which time.
class SimCamera {
 public:
  SimCamera(const CameraPlan& plan, Chance& chance) : plan_(plan), chance_(chance), login_(plan.login) {}

  void Connect(int port);
  void Send(std::string_view bytes, Clock::time_point now);
  void Fail(Clock::time_point now) { Leave(End::kResets, now); }
  Wire::Event Receive(Clock::time_point until, Clock::time_point& now, std::span<std::uint8_t> space,
                      std::size_t& size);
  /// Takes a packet that comes over UDP before all else that comes until `until`, which `now` becomes the time of.
  bool TakeDatagram(Clock::time_point until, Clock::time_point& now, std::string& datagram);
  /// True when the connection ended without a reset, and not all that was sent was read.
  bool WasClosedUnread() const { return isUnread_ && !isReset_; }

  const SimLogin& Login() const { return login_; }
  /// What a request was that no camera should be sent; "" for none.
  const std::string& Mistake() const { return mistake_; }

  static std::string Packet(std::size_t number, std::size_t size);

 private:
  void Hear(std::string_view request, Clock::time_point at);
  void CheckForm(std::string_view request);
  void Reply(const Heard& request, Clock::time_point at);
  bool Refuses(const Heard& request, Clock::time_point at);
  void Challenge(const Heard& request, bool isStale, Clock::time_point at);
  void Say(const Heard& request, const Answer& answer, Clock::time_point at);
  bool IsMoved(const Heard& request) const;
  void Describe(const Heard& request, Clock::time_point at);
  void Grant(const Heard& request, Clock::time_point at);
  void Start(const Heard& request, Clock::time_point at);
  void Play(Clock::time_point until);
  void SayPacket(Clock::time_point at);
  void Leave(End end, Clock::time_point at, milliseconds wait = milliseconds(0));

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
