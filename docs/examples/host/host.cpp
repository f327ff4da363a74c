// The smallest recorder that the module runs in: it loads the module, finds a method in its table, calls it, and prints
// the answer. It defines what CameraModelEnum asks of a recorder and nothing else: any method that asks for more ends
// it with the name of what is missing.
//
//   host MODULE METHOD [KEY=VALUE ...]

#include <dlfcn.h>

#include <cstdint>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/device.h"
#include "platform/utility.h"
#include "platform/webapi.h"

const char gszFakePass[] = "********";

bool IsCmsHost() { return false; }

bool GetCamModelEnumInfo(Json::Value& models) {
  Json::Value model;
  model["vendor"] = "Example";
  model["model"] = "One";
  model["needsSourcePath"] = false;
  models.append(model);
  return true;
}

namespace NORV {

struct APIRequest::Impl {
  std::string method;
  std::map<std::string, Json::Value> parameters;
};
APIRequest::APIRequest(Impl* request) : impl(request) {}
Json::Value APIRequest::GetParam(const std::string& key, const Json::Value& defaultValue) const {
  const auto found = impl->parameters.find(key);
  return found == impl->parameters.end() ? defaultValue : found->second;
}
std::string APIRequest::GetAPIMethod() const { return impl->method; }
bool APIRequest::IsAuthorized() const { return true; }  // whoever may run this program

struct APIResponse::Impl {
  Json::Value answer;
};
APIResponse::APIResponse(Impl* response) : impl(response) {}
void APIResponse::SetSuccess(const Json::Value& data) {
  impl->answer["success"] = true;
  impl->answer["data"] = data;
}
void APIResponse::SetError(int code, const Json::Value& /*data*/) {
  impl->answer["success"] = false;
  impl->answer["error"]["code"] = code;
}

}  // namespace NORV

namespace {

/// A row of the module's table; one of zeros ends it.
struct TableRow {
  const char* apiName;
  std::int32_t version;
  const char* method;
  void (*entry)(NORV::APIRequest*, NORV::APIResponse*);
};

/// The row of a method. Lazy, so that a function that is missing is missed only when it is called.
const TableRow* FindMethod(const char* modulePath, std::string_view method) {
  void* module = dlopen(modulePath, RTLD_LAZY | RTLD_LOCAL);
  void* getTable = module == nullptr ? nullptr : dlsym(module, "GetAPITable");
  if (getTable == nullptr) throw std::runtime_error(dlerror());
  const auto* row = reinterpret_cast<const TableRow* (*)()>(getTable)();
  for (; row->apiName != nullptr; ++row) {
    const bool isKnown = row->apiName == std::string_view("NORV.Vistrel.CameraCap") && row->version == 1;
    if (isKnown && row->method == method) return row;
  }
  throw std::runtime_error("the module has no such method");
}

/// What the method answers to parameters of the form KEY=VALUE.
Json::Value Call(const TableRow& row, const std::vector<std::string>& parameters) {
  NORV::APIRequest::Impl asked{row.method, {}};
  for (const std::string& parameter : parameters) {
    const std::size_t equals = parameter.find('=');
    asked.parameters[parameter.substr(0, equals)] = parameter.substr(equals + 1);
  }
  NORV::APIResponse::Impl answered;
  NORV::APIRequest request(&asked);
  NORV::APIResponse response(&answered);
  row.entry(&request, &response);
  return answered.answer;
}

}  // namespace

int main(int count, char** words) try {
  if (count < 3) throw std::runtime_error("usage: host MODULE METHOD [KEY=VALUE ...]");
  Json::StreamWriterBuilder oneLine;
  oneLine["indentation"] = "";
  std::cout << Json::writeString(oneLine, Call(*FindMethod(words[1], words[2]), {words + 3, words + count})) << '\n';
} catch (const std::exception& error) {  // the module lets pass what JsonCpp throws at a parameter of the wrong type
  std::cerr << error.what() << '\n';
  return 1;
}
