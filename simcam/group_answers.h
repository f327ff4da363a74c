#pragma once

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "simcam/glib_handle.h"

namespace simcam {

/// Answers datagrams that come over the loopback interface to a group of IPv4, from construction to destruction.
class GroupAnswers {
 public:
  /// `answer` makes the answer to a datagram, "" for none, in a thread of this object's. Throws std::runtime_error.
  GroupAnswers(const char* group, guint16 port, std::function<std::string(const std::string&)> answer);
  ~GroupAnswers();
  GroupAnswers(const GroupAnswers&) = delete;
  GroupAnswers& operator=(const GroupAnswers&) = delete;

 private:
  void AnswerAll() const;

  const std::function<std::string(const std::string&)> answer_;
  std::unique_ptr<GSocket, UnrefGlib> socket_;
  std::unique_ptr<GCancellable, UnrefGlib> end_;
  std::jthread thread_;
};

}  // namespace simcam
