// Hosts the module as a framework does that has only its file: finds the table, walks its rows by place, serves a
// request. Every recorder function is this program's, so it also shows that the module resolves into its host.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "tests/double/script.h"

namespace {

using Entry = void (*)(NORV::APIRequest*, NORV::APIResponse*);

struct TableRow {
  const char* name;
  std::int32_t version;
  const char* method;
  Entry entry;
};
static_assert(sizeof(TableRow) == 4 * sizeof(void*));

TEST(ModuleFile, HasATableAndServesFromItsHost) {
  void* module = dlopen(MODULE_FILE, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(module, nullptr) << dlerror();
  auto* getTable = reinterpret_cast<TableRow* (*)()>(dlsym(module, "GetAPITable"));
  auto* entry = reinterpret_cast<Entry>(dlsym(module, "_Z13HandleProcessPN4NORV10APIRequestEPNS_11APIResponseE"));
  ASSERT_TRUE(getTable != nullptr && entry != nullptr);

  TableRow* row = getTable();
  EXPECT_TRUE(row == dlsym(module, "gTable") && row == getTable());
  std::memmove(row, row, sizeof *row);  // a table that cannot be written to ends the program here
  for (const char* method : {"CameraModelEnum", "CamCap", "CameraTest", "GetSnapshot", "CamCapRemote",
                             "CamCapUserDefineReso", "CamBatAddVerify", "EnumExistedCamCap"}) {
    EXPECT_STREQ(row->name, "NORV.Vistrel.CameraCap");
    EXPECT_EQ(row->version, 1);
    EXPECT_STREQ(row->method, method);
    EXPECT_EQ(row->entry, entry);
    ++row;
  }
  EXPECT_TRUE(row->name == nullptr && row->version == 0 && row->method == nullptr && row->entry == nullptr);

  scripted::Reset();
  scripted::Exchange exchange{{"CamCap", {}}};  // with a checked call: both sides know its type
  entry(&exchange.request, &exchange.response);
  EXPECT_EQ(scripted::Compact(exchange.responseImpl.data), R"({"camCap":["document"]})");
  EXPECT_TRUE(scripted::Finish().empty());
}

}  // namespace
