#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "recorder/ctl/serve/worker_question.h"
#include "recorder/utility/handle.h"
#include "rig/temp_folder.h"

namespace recorder {
namespace {

TEST(PoolPulse, IsThereAsLongAsCallersAreAnsweredHoweverManyWait) {
  const rig::TempFolder folder;
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  (folder.Path() / "pool").native().copy(address.sun_path, sizeof(address.sun_path) - 1);
  const FileDescriptor full(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));  // nobody takes a question from it
  ASSERT_EQ(bind(full.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  ASSERT_EQ(listen(full.Get(), 8), 0);
  std::stop_source impatient;
  impatient.request_stop();
  PoolCount pool{};
  PoolPulse pulse(address.sun_path, pool);
  EXPECT_NE(pulse.WhyNone(impatient.get_token()), "");
  ++pool[1].answered;
  EXPECT_EQ(pulse.WhyNone(impatient.get_token()), "");
  EXPECT_NE(pulse.WhyNone(impatient.get_token()), "") << "nobody since then";
}

}  // namespace
}  // namespace recorder
