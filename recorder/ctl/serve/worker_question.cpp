#include "recorder/ctl/serve/worker_question.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "recorder/utility/handle.h"

namespace recorder {

namespace {

constexpr timeval kPatienceWithWorker{.tv_sec = 5, .tv_usec = 0};

/// FastCGI 1.0 section 8.
enum RecordType : char { kBeginRequest = 1, kParams = 4, kStdin = 5, kStdout = 6 };
constexpr std::size_t kRecordHeader = 8;

/// Of request 1, and short.
std::string Record(RecordType type, std::string_view content) {
  const char head[kRecordHeader] = {1, type, 0, 1, 0, static_cast<char>(content.size()), 0, 0};
  return std::string(head, kRecordHeader) += content;
}

std::string Param(std::string_view name, std::string_view value) {
  std::string text = {static_cast<char>(name.size()), static_cast<char>(value.size())};
  return (text += name) += value;
}

std::string Question() {
  constexpr std::string_view kResponder("\0\1\0\0\0\0\0\0", 8);  // the connection ends with the answer
  return Record(kBeginRequest, kResponder) +
         Record(kParams, Param("REQUEST_METHOD", "GET") + Param("SCRIPT_NAME", "/healthz")) + Record(kParams, "") +
         Record(kStdin, "");
}

FileDescriptor ConnectTo(const std::filesystem::path& file) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  file.native().copy(address.sun_path, sizeof(address.sun_path) - 1);
  FileDescriptor connection(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  for (const int limit : {SO_SNDTIMEO, SO_RCVTIMEO}) {
    setsockopt(connection.Get(), SOL_SOCKET, limit, &kPatienceWithWorker, sizeof(kPatienceWithWorker));
  }
  const bool isConnected = connect(connection.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
  return isConnected ? std::move(connection) : FileDescriptor();
}

}  // namespace

std::string WhyNoWorkerAnswers(const std::filesystem::path& socket, const std::stop_token& stop) {
  const FileDescriptor connection = ConnectTo(socket);
  if (!connection) return std::strerror(errno);
  const std::stop_callback end(stop, [&] { shutdown(connection.Get(), SHUT_RDWR); });
  const std::string question = Question();
  std::array<char, kRecordHeader> head{};
  if (send(connection.Get(), question.data(), question.size(), MSG_NOSIGNAL) != std::ssize(question) ||
      recv(connection.Get(), head.data(), head.size(), MSG_WAITALL) != std::ssize(head)) {
    return "no answer came";
  }
  return head[1] == kStdout ? "" : "its answer is none";
}

std::string PoolPulse::WhyNone(const std::stop_token& stop) {
  if (HasAnswered()) return "";
  std::string reason = WhyNoWorkerAnswers(socket_, stop);
  return HasAnswered() ? "" : reason;
}

bool PoolPulse::HasAnswered() {
  const std::uint64_t now = AnsweredBy(pool_);
  return std::exchange(answered_, now) != now;
}

}  // namespace recorder
