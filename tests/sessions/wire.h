#pragma once

#include <algorithm>
#include <deque>
#include <span>
#include <string>
#include <string_view>

#include "recorder/utility/clock.h"
#include "tests/sessions/camera_plan.h"

namespace sessions {

using recorder::Clock;

/// What one connection brings from a camera: cut and delayed as the plan has it, in order, until it ends.
class Wire {
 public:
  enum class Event { kNothing, kBytes, kEnd };

  Wire(const CameraPlan& plan, Chance& chance) : plan_(plan), chance_(chance) {}

  bool IsClosed(Clock::time_point at) const { return at >= closedAt_; }
  Clock::time_point NextAt() const { return pieces_.empty() ? endAt_ : pieces_.front().at; }
  bool IsEmpty() const { return pieces_.empty() && endAt_ == kNever; }

  /// The camera says `text` at `at`.
  void Say(std::string_view text, Clock::time_point at) {
    while (!text.empty() && !IsClosed(at)) {
      const std::size_t size = PieceOf(text.size());
      pieces_.push_back({last_ = Arrival(at), std::string(text.substr(0, size))});
      text.remove_prefix(size);
    }
  }

  /// The camera closes at `at`.
  void Close(Clock::time_point at) {
    if (at >= closedAt_) return;
    closedAt_ = at;
    endAt_ = Arrival(at);
  }

  /// The first that arrives until `until`, which `now` becomes the time of; `until` when nothing does.
  Event Receive(Clock::time_point until, Clock::time_point& now, std::span<std::uint8_t> space, std::size_t& size) {
    const Clock::time_point next = NextAt();
    if (std::max(next, now) > until || next == kNever) {
      now = std::max(now, until);
      return Event::kNothing;
    }
    now = std::max(now, next);
    if (pieces_.empty()) return Event::kEnd;
    const bool takesAll = chance_.OneIn(2);
    for (size = 0; !pieces_.empty() && pieces_.front().at <= now; pieces_.pop_front()) {
      const std::string& bytes = pieces_.front().bytes;
      if (size > 0 && (!takesAll || bytes.size() > space.size() - size)) break;
      std::copy(bytes.begin(), bytes.end(), space.begin() + static_cast<std::ptrdiff_t>(size));
      size += bytes.size();
    }
    return Event::kBytes;
  }

 private:
  static constexpr Clock::time_point kNever = Clock::time_point::max();
  static constexpr std::size_t kLargestPiece = 16'000;
  struct Piece {
    Clock::time_point at;
    std::string bytes;
  };

  /// Long texts do not come byte by byte: that costs time, and shows nothing that short ones do not.
  std::size_t PieceOf(std::size_t size) const {
    const std::size_t wanted = plan_.piece == 0 ? kLargestPiece : 1 + chance_.Below(2 * plan_.piece);
    return std::min({size, kLargestPiece, std::max(wanted, size / 64)});
  }

  Clock::time_point Arrival(Clock::time_point at) const {
    const auto jitter = plan_.jitter.count() == 0 ? 0 : chance_.Below(static_cast<std::size_t>(plan_.jitter.count()));
    return std::max(last_, at + plan_.delay + milliseconds(jitter));
  }

  const CameraPlan& plan_;
  Chance& chance_;
  std::deque<Piece> pieces_;
  Clock::time_point last_;
  Clock::time_point closedAt_ = kNever;
  Clock::time_point endAt_ = kNever;
};

}  // namespace sessions
