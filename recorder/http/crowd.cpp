#include "recorder/http/crowd.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/unix_diag.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>

#include "recorder/http/http_request.h"
#include "recorder/utility/counts.h"
#include "recorder/utility/handle.h"

namespace recorder {

namespace {

/// More connections than this wait where one user asks for more at once than programs do that share out their work.
constexpr std::uint32_t kLongLine = 64;

/// sock_diag(7).
struct LineQuestion {
  nlmsghdr head;
  unix_diag_req wish;
};
struct LineAnswerHead {
  nlmsghdr head;
  unix_diag_msg socket;
  rtattr attribute;
  unix_diag_rqlen length;
};

LineQuestion QuestionAbout(std::uint32_t inode) {
  LineQuestion question{};
  question.head.nlmsg_len = sizeof(question);
  question.head.nlmsg_type = SOCK_DIAG_BY_FAMILY;
  question.head.nlmsg_flags = NLM_F_REQUEST;
  question.wish.sdiag_family = AF_UNIX;
  question.wish.udiag_states = ~0U;
  question.wish.udiag_ino = inode;
  question.wish.udiag_show = UDIAG_SHOW_RQLEN;
  question.wish.udiag_cookie[0] = question.wish.udiag_cookie[1] = ~0U;  // any
  return question;
}

/// Connections that wait at a local socket that listens; 0 where the system does not tell.
std::uint32_t WaitingAt(int listener) {
  struct stat status {};
  if (fstat(listener, &status) != 0) return 0;
  const FileDescriptor system(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
  const LineQuestion question = QuestionAbout(static_cast<std::uint32_t>(status.st_ino));
  LineAnswerHead answer{};
  const bool isTold = send(system.Get(), &question, sizeof(question), 0) == sizeof(question) &&
                      recv(system.Get(), &answer, sizeof(answer), MSG_DONTWAIT) == sizeof(answer);
  return isTold && answer.attribute.rta_type == UNIX_DIAG_RQLEN ? answer.length.udiag_rqueue : 0;
}

}  // namespace

void RefuseCrowd(const std::string& user) {
  if (!HasHalfOfPool(user) || WaitingAt(STDIN_FILENO) <= kLongLine) return;
  throw HttpError(429, "too many requests of this user wait already", "Retry-After: 5\r\n");
}

}  // namespace recorder
