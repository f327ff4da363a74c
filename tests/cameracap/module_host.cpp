// Hosts the module as a framework does that has only its file: finds the table, walks its rows by place, serves a
// request. Every recorder function is this program's, so it also shows that the module resolves into its host.

#include <dlfcn.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "tests/double/script.h"

namespace {

int failures = 0;

void Check(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "module_host: %s\n", what);
  ++failures;
}

// Four fields of pointer size, of which the second holds 32 bits.
constexpr size_t kFieldSize = sizeof(void*);
constexpr size_t kRowSize = 4 * kFieldSize;
constexpr const char* kMethods[] = {"CameraModelEnum", "CamCap",           "CameraTest",
                                    "GetSnapshot",     "CamCapRemote",     "CamCapUserDefineReso",
                                    "CamBatAddVerify", "EnumExistedCamCap"};

template <class T>
T Field(const char* row, size_t number) {
  T value;
  std::memcpy(&value, row + number * kFieldSize, sizeof value);
  return value;
}

using Entry = void (*)(NORV::APIRequest*, NORV::APIResponse*);

void ServeOne(Entry entry) {
  scripted::Reset();
  scripted::Script("LoadCapability", 0);  // a checked call: the wrapper's type is known on both sides of the border
  scripted::Script("GetCamCap", scripted::List(0, "document"));
  NORV::APIRequest::Impl requestImpl{"CamCap", {}};
  NORV::APIResponse::Impl responseImpl;
  NORV::APIRequest request{&requestImpl};
  NORV::APIResponse response{&responseImpl};
  entry(&request, &response);
  Check(scripted::Transcript() ==
            "LoadCapability(1, \"\", \"\", \"0\", \"\")\nGetCamCap(\"\", "
            "\"\")\nSetSuccess({\"camCap\":[\"document\"]})\n",
        scripted::Transcript().c_str());
  for (const std::string& fault : scripted::Finish()) Check(false, fault.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  void* module = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : nullptr;
  if (module == nullptr) {
    std::fprintf(stderr, "module_host: %s\n", argc == 2 ? dlerror() : "give the module's file");
    return 1;
  }
  auto* getTable = reinterpret_cast<char* (*)()>(dlsym(module, "GetAPITable"));
  auto* entry = reinterpret_cast<Entry>(dlsym(module, "_Z13HandleProcessPN4NORV10APIRequestEPNS_11APIResponseE"));
  if (getTable == nullptr || entry == nullptr) return Check(false, "a symbol is missing"), 1;

  char* row = getTable();
  Check(row == dlsym(module, "gTable") && row == getTable(), "GetAPITable is not gTable");
  std::memmove(row, row, kRowSize);  // a table that cannot be written to ends the program here
  for (const char* method : kMethods) {
    const char* name = Field<const char*>(row, 0);
    const char* methodName = Field<const char*>(row, 2);
    if (name == nullptr || methodName == nullptr) return Check(false, "the table is short"), 1;
    Check(std::strcmp(name, "NORV.Vistrel.CameraCap") == 0, name);
    Check(Field<std::int32_t>(row, 1) == 1, "version");
    Check(std::strcmp(methodName, method) == 0, methodName);
    Check(Field<Entry>(row, 3) == entry, "another entry");
    row += kRowSize;
  }
  const char zeros[kRowSize] = {};
  Check(std::memcmp(row, zeros, kRowSize) == 0, "the last row is not all zeros");
  ServeOne(Field<Entry>(row - kRowSize, 3));
  return failures == 0 ? 0 : 1;
}
