#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>

#include "recorder/utility/clock.h"
#include "recorder/utility/handle.h"

namespace recorder {

/// One end of the socket between a worker and its media process. One thread at a time.
class MediaChannel {
 public:
  static constexpr Clock::time_point kForever = Clock::time_point::max();

  MediaChannel() = default;
  explicit MediaChannel(FileDescriptor end) : end_(std::move(end)) {}

  /// Sends all of `parts`, one behind the other. False when the other end is gone or does not take them until
  /// `deadline`.
  bool Send(std::initializer_list<std::span<const std::uint8_t>> parts, Clock::time_point deadline = kForever);

  /// Fills `target`. False when the other end is gone or does not send as much until `deadline`.
  bool Receive(std::span<std::uint8_t> target, Clock::time_point deadline = kForever);

  /// Waits until something can be received, or the other end is gone. False when neither is so until `deadline`.
  bool Wait(Clock::time_point deadline) const;

  /// True when there is nothing to receive now.
  bool IsQuiet() const;

 private:
  bool WaitFor(short event, Clock::time_point deadline) const;

  FileDescriptor end_;
};

}  // namespace recorder
