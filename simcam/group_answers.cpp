#include "simcam/group_answers.h"

#include <netinet/in.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace simcam {
namespace {

/// Throws what GLib says.
void Check(gboolean done, GError* error) {
  if (done != 0) return;
  const std::string reason = error->message;
  g_error_free(error);
  throw std::runtime_error("discovery: " + reason);
}

}  // namespace

GroupAnswers::GroupAnswers(const char* group, guint16 port, std::function<std::string(const std::string&)> answer)
    : answer_(std::move(answer)), end_(g_cancellable_new()) {
  GError* error = nullptr;
  socket_.reset(g_socket_new(G_SOCKET_FAMILY_IPV4, G_SOCKET_TYPE_DATAGRAM, G_SOCKET_PROTOCOL_UDP, &error));
  Check(socket_ != nullptr, error);
  const std::unique_ptr<GInetAddress, UnrefGlib> address(g_inet_address_new_from_string(group));
  const std::unique_ptr<GSocketAddress, UnrefGlib> bound(g_inet_socket_address_new(address.get(), port));
  // Linux hands out what any program has joined for, from any network, unless told not to.
  Check(g_socket_set_option(socket_.get(), IPPROTO_IP, IP_MULTICAST_ALL, 0, &error), error);
  Check(g_socket_bind(socket_.get(), bound.get(), TRUE, &error), error);
  Check(g_socket_join_multicast_group(socket_.get(), address.get(), FALSE, "lo", &error), error);
  thread_ = std::jthread([this] { AnswerAll(); });
}

GroupAnswers::~GroupAnswers() {
  g_cancellable_cancel(end_.get());
  thread_.join();
}

void GroupAnswers::AnswerAll() const {
  std::array<char, 65536> bytes{};
  while (g_cancellable_is_cancelled(end_.get()) == 0) {
    GSocketAddress* from = nullptr;
    const gssize size = g_socket_receive_from(socket_.get(), &from, bytes.data(), bytes.size(), end_.get(), nullptr);
    const std::unique_ptr<GSocketAddress, UnrefGlib> sender(from);
    if (size <= 0) continue;
    const std::string answer = answer_({bytes.data(), static_cast<size_t>(size)});
    if (!answer.empty()) {
      g_socket_send_to(socket_.get(), sender.get(), answer.data(), answer.size(), nullptr, nullptr);
    }
  }
}

}  // namespace simcam
