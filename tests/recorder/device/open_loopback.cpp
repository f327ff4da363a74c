#include <gtest/gtest.h>

#include "recorder/utility/address_policy.h"

namespace recorder {
namespace {

/// The cameras of these tests are on this machine, which the default policy closes.
class OpenLoopback : public testing::Environment {
  void SetUp() override { SetAddressPolicy({{ParseAddressRange("127.0.0.0/8").value()}, {}}); }
};

const auto* const kOpenLoopback = testing::AddGlobalTestEnvironment(new OpenLoopback);

}  // namespace
}  // namespace recorder
