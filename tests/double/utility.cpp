#include "platform/utility.h"

#include <cstdarg>
#include <cstdio>

#include "tests/double/script.h"

using scripted::Bytes;
using scripted::Call;
using scripted::WriteCall;

const char gszFakePass[] = "********";

void VTPrintf(LOG_TYPE type, const char* category1, const char* category2, const char* file, int line,
              const char* function, const char* format, ...) {
  char text[512];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  const bool usual = type == 0 && category1 == nullptr && category2 == nullptr;
  scripted::Write(std::string(usual ? "log " : "log of another type or category ") + file + ":" + std::to_string(line) +
                  " " + function + " " + scripted::Show(text));
}

std::int64_t GetCurTimestamp() { return Call("GetCurTimestamp").asInt64(); }
bool IsCmsHost() { return Call("IsCmsHost").asBool(); }
bool IsVTRunning() { return Call("IsVTRunning").asBool(); }
bool IsAuthPairMatch(const std::string& cookie, const std::string& timestamp) {
  return Call("IsAuthPairMatch", cookie, timestamp).asBool();
}

struct SlaveKdAuthentication::Impl {
  scripted::Life life{"SlaveKdAuthentication"};
};
SlaveKdAuthentication::SlaveKdAuthentication() : impl(std::make_unique<Impl>()) { WriteCall("SlaveKdAuthentication"); }
SlaveKdAuthentication::~SlaveKdAuthentication() { scripted::Write("~SlaveKdAuthentication"); }
bool SlaveKdAuthentication::IsAuthByPairMatch(const std::string& cookie, const std::string& timestamp) {
  return Call("IsAuthByPairMatch", cookie, timestamp).asBool();
}

int GetCamOwnerKdId(int camId) { return Call("GetCamOwnerKdId", camId).asInt(); }
int GetCamConnStatus(int camId) { return Call("GetCamConnStatus", camId).asInt(); }
// NOLINTNEXTLINE(performance-unnecessary-value-param): the platform declares it so
std::string GetCamRealPass(int camId, std::string vendor, std::string model, std::string channel) {
  return Call("GetCamRealPass", camId, vendor, model, channel).asString();
}

int ReadContentFromFileToBuf(const char* path, bool required, unsigned char** buffer, int* size) {
  return scripted::TakePicture(Call("ReadContentFromFileToBuf", path, required), buffer, size);
}

std::string HttpBase64EncodeUnsigned(const unsigned char* bytes, int length) {
  return Call("HttpBase64EncodeUnsigned", Bytes{bytes, length}).asString();
}

// --- webapi.h -------------------------------------------------------------------------------------------------------

namespace NORV {

APIRequest::APIRequest(Impl* request) : impl(request) {}
APIRequest::~APIRequest() {}
Json::Value APIRequest::GetParam(const std::string& key, const Json::Value& defaultValue) const {
  WriteCall("GetParam", key, defaultValue);
  const auto found = impl->params.find(key);
  return found == impl->params.end() ? defaultValue : found->second;
}
std::string APIRequest::GetAPIMethod() const {
  WriteCall("GetAPIMethod");
  return impl->method;
}
std::string APIRequest::GetCookie(const std::string& name, const std::string& defaultValue) const {
  return Call("GetCookie", name, defaultValue).asString();
}
bool APIRequest::IsAuthorized() const { return Call("IsAuthorized").asBool(); }

APIResponse::APIResponse(Impl* response) : impl(response) {}
APIResponse::~APIResponse() {}
void APIResponse::SetSuccess(const Json::Value& data) {
  impl->data = data;
  WriteCall("SetSuccess", data);
}
void APIResponse::SetError(int code, const Json::Value& data) {
  impl->data = data;
  WriteCall("SetError", code, data);
}

}  // namespace NORV
