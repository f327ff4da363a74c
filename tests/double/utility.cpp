#include "platform/utility.h"

#include <cstdarg>
#include <cstdio>

#include "tests/double/script.h"

using namespace scripted;
using std::string;

const char gszFakePass[] = "********";

void VTPrintf(LOG_TYPE type, const char* category1, const char* category2, const char* file, int line,
              const char* function, const char* format, ...) {
  char text[512];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);  // NOLINT(clang-analyzer-valist.Uninitialized): it is started
  va_end(arguments);
  const bool usual = type == 0 && category1 == nullptr && category2 == nullptr;
  WriteCall(usual ? "log" : "log of another kind", string(file) + ":" + std::to_string(line), function, text);
}

std::int64_t GetCurTimestamp() { return Call<std::int64_t>("GetCurTimestamp"); }
bool IsCmsHost() { return Call<bool>("IsCmsHost"); }
bool IsVTRunning() { return Call<bool>("IsVTRunning"); }
bool IsAuthPairMatch(const string& cookie, const string& time) { return Call<bool>("IsAuthPairMatch", cookie, time); }

struct SlaveKdAuthentication::Impl {};
SlaveKdAuthentication::SlaveKdAuthentication() : impl(std::make_unique<Impl>()) {}
SlaveKdAuthentication::~SlaveKdAuthentication() = default;
bool SlaveKdAuthentication::IsAuthByPairMatch(const string& cookie, const string& timestamp) {
  return Call<bool>("IsAuthByPairMatch", cookie, timestamp);
}

int GetCamOwnerKdId(int camId) { return Call<int>("GetCamOwnerKdId", camId); }
int GetCamConnStatus(int camId) { return Call<int>("GetCamConnStatus", camId); }
// NOLINTNEXTLINE(performance-unnecessary-value-param): the platform declares it so
string GetCamRealPass(int camId, const string vendor, const string model, const string channel) {
  return Call<string>("GetCamRealPass", camId, vendor, model, channel);
}
int ReadContentFromFileToBuf(const char* path, bool required, unsigned char** buffer, int* size) {
  return TakePicture(Call("ReadContentFromFileToBuf", path, required), buffer, size);
}
string HttpBase64EncodeUnsigned(const unsigned char* bytes, int length) {
  return Call<string>("HttpBase64EncodeUnsigned", Bytes(bytes, length));
}

// --- webapi.h -------------------------------------------------------------------------------------------------------

namespace NORV {

APIRequest::APIRequest(Impl* request) : impl(request) {}
Json::Value APIRequest::GetParam(const string& key, const Json::Value& defaultValue) const {
  WriteCall("GetParam", key, defaultValue);
  const auto found = impl->params.find(key);
  return found == impl->params.end() ? defaultValue : found->second;
}
string APIRequest::GetAPIMethod() const { return WriteCall("GetAPIMethod"), impl->method; }
string APIRequest::GetCookie(const string& key, const string& none) const {
  return Call<string>("GetCookie", key, none);
}
bool APIRequest::IsAuthorized() const { return Call<bool>("IsAuthorized"); }

APIResponse::APIResponse(Impl* response) : impl(response) {}
void APIResponse::SetSuccess(const Json::Value& data) { WriteCall("SetSuccess", impl->data = data); }
void APIResponse::SetError(int code, const Json::Value& data) { WriteCall("SetError", code, data); }

}  // namespace NORV
