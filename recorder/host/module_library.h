#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/webapi.h"

namespace recorder {

/// One method that a module announces in its API table.
struct ModuleMethod {
  std::string apiName;
  std::int32_t version = 0;
  std::string name;
  void (*handler)(NORV::APIRequest*, NORV::APIResponse*) = nullptr;
};

/// A web-API module: a shared library that exports `GetAPITable`, which returns rows of four fields (API name, version,
/// method name, handler) ended by a row of zeros. It resolves what it needs of the recorder in this program.
/// Thread: const after construction. The library stays loaded until the end of the process.
class ModuleLibrary {
 public:
  /// Loads the module at `path`. Throws std::runtime_error naming what is missing: the file, a symbol, the table's end.
  explicit ModuleLibrary(const std::filesystem::path& path);

  /// The method, or null.
  const ModuleMethod* Find(std::string_view apiName, std::int32_t version, std::string_view method) const;
  /// The first API's method of that name, or null.
  const ModuleMethod* Find(std::string_view method) const;
  const std::vector<ModuleMethod>& Methods() const { return methods_; }

 private:
  std::vector<ModuleMethod> methods_;
};

}  // namespace recorder
