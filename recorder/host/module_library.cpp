#include "recorder/host/module_library.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace recorder {

namespace {

/// A row as it lies in the module's memory.
struct TableRow {
  const char* apiName;
  std::int32_t version;
  const char* methodName;
  void (*handler)(NORV::APIRequest*, NORV::APIResponse*);
};

/// Number of rows that the table has room for, from its symbol's size; 0 when the symbol is not known.
std::size_t Capacity(const TableRow* table) {
  Dl_info info = {};
  const ElfW(Sym)* symbol = nullptr;
  if (dladdr1(table, &info, reinterpret_cast<void**>(const_cast<ElfW(Sym)**>(&symbol)), RTLD_DL_SYMENT) == 0 ||
      symbol == nullptr || info.dli_saddr != table) {
    return 0;
  }
  return symbol->st_size / sizeof(TableRow);
}

bool IsEnd(const TableRow& row) {
  return row.apiName == nullptr && row.version == 0 && row.methodName == nullptr && row.handler == nullptr;
}

std::vector<ModuleMethod> ReadTable(const TableRow* table, const std::string& path) {
  const std::size_t capacity = Capacity(table);
  std::vector<ModuleMethod> methods;
  for (std::size_t i = 0; i < capacity; ++i) {
    const TableRow& row = table[i];
    if (IsEnd(row)) return methods;
    if (row.apiName == nullptr || row.methodName == nullptr || row.handler == nullptr) {
      throw std::runtime_error(path + ": row " + std::to_string(i + 1) + " of its API table lacks a field");
    }
    methods.push_back({row.apiName, row.version, row.methodName, row.handler});
  }
  throw std::runtime_error(path + ": its API table lacks the row of zeros at its end");
}

}  // namespace

ModuleLibrary::ModuleLibrary(const std::filesystem::path& path) {
  void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw std::runtime_error(std::string("cannot load the module: ") + dlerror());
  void* symbol = dlsym(library, "GetAPITable");
  if (symbol == nullptr) throw std::runtime_error(path.string() + ": lacks the symbol GetAPITable");
  const TableRow* table = reinterpret_cast<const TableRow* (*)()>(symbol)();
  if (table == nullptr) throw std::runtime_error(path.string() + ": GetAPITable returned no table");
  methods_ = ReadTable(table, path.string());
}

const ModuleMethod* ModuleLibrary::Find(std::string_view apiName, std::int32_t version, std::string_view method) const {
  const auto found = std::find_if(methods_.begin(), methods_.end(), [&](const ModuleMethod& row) {
    return row.apiName == apiName && row.version == version && row.name == method;
  });
  return found == methods_.end() ? nullptr : &*found;
}

const ModuleMethod* ModuleLibrary::Find(std::string_view method) const {
  return methods_.empty() ? nullptr : Find(methods_.front().apiName, methods_.front().version, method);
}

}  // namespace recorder
