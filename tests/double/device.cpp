#include "platform/device.h"

#include <utility>
#include <vector>

#include "tests/double/script.h"

using namespace scripted;
using std::string;

namespace {

/// A registered member function that answers from the script.
template <class R, class... Args>
struct ScriptedFunction : MemFuncInterface<R, Args...> {
  explicit ScriptedFunction(string nameOf) : name(std::move(nameOf)) {}
  R Invoke(DPObjectBase* /*object*/, Args... args) override { return Call<R>(name, static_cast<Args>(args)...); }

  string name;
};

/// The object behind one handler, and the functions registered for it.
struct ScriptedObject : DPObjectBase {
  template <class R, class... Args>
  void Register(auto& functor, const char* name) {
    functions.push_back(std::make_unique<ScriptedFunction<R, Args...>>(name));
    functor.name = name;
    functor.object = this;
    functor.wrapper = functions.back().get();
  }

  std::vector<std::unique_ptr<MemFuncBase>> functions;
};

}  // namespace

int GetVideoType(const string& name) { return Call<int>("GetVideoType", name); }
int GetStreamingType(const string& name) { return Call<int>("GetStreamingType", name); }
bool GetCamModelEnumInfo(Json::Value& models) { return Call<bool>("GetCamModelEnumInfo", models); }
bool EnumExistedCameraCap(Json::Value& capabilities) { return Call<bool>("EnumExistedCameraCap", capabilities); }
bool IsGenericApi(const string& vendor, const string& model) { return Call<bool>("IsGenericApi", vendor, model); }
int RetDevApiToRetCV(int code) { return Call<int>("RetDevApiToRetCV", code); }
// NOLINTNEXTLINE(performance-unnecessary-value-param): the platform declares it so
string GetRealCapFilePath(const string vendor, const string ip, int port, const string variant) {
  return Call<string>("GetRealCapFilePath", vendor, ip, port, variant);
}

int CamCapUtils::GetCamCapFile(CamProfile& profile, string& capFilePath, __tag_REMOTE_CAMCAP_CMD cmd) {
  const CamProfile of = std::exchange(profile, {});  // nobody is to rely on what is left of it
  return Call<int>("GetCamCapFile", of.ip, of.user, of.pass, of.channel, of.vendor, of.model, of.port, of.stream,
                   of.options.size(), capFilePath, int{cmd});
}

struct CamCapHandler::Impl : ScriptedObject {};
CamCapHandler::CamCapHandler() : impl(std::make_unique<Impl>()) {
  if (IsScripted("CamCapHandler", kThrow)) Answer("CamCapHandler");
  impl->Register<int, int, string, string, string, string>(LoadCapability, "LoadCapability");
  impl->Register<std::list<string>>(GetChannelList, "GetChannelList");
  impl->Register<string>(GetDefaultChannel, "GetDefaultChannel");
  impl->Register<std::list<string>, int>(GetListForCodec, "GetListForCodec");
  impl->Register<int>(GetDefaultVideoType, "GetDefaultVideoType");
  impl->Register<int, int>(GetStreamingTypeFor, "GetStreamingTypeFor");
}
CamCapHandler::~CamCapHandler() = default;
// NOLINTNEXTLINE(performance-unnecessary-value-param): the platform declares it so
int GetCamCap(const string vendor, const string model, CamCapHandler& /*handler*/, Json::Value& capability) {
  return Call<int>("GetCamCap", vendor, model, capability);
}

VTHandlerBase::VTHandlerBase() = default;
VTHandlerBase::~VTHandlerBase() {}
bool VTHandlerBase::IsValid() const { return isValid && Call<bool>("IsValid"); }
void VTHandlerBase::SetValid(bool valid) { isValid = valid; }

struct DeviceAPIHandler::Impl : ScriptedObject {};
DeviceAPIHandler::DeviceAPIHandler() : impl(std::make_unique<Impl>()) {
  impl->Register<bool>(NeedsSourcePath, "NeedsSourcePath");
  impl->Register<bool>(HasStreamPath, "HasStreamPath");
  impl->Register<int, string&, int&>(GetStreamPath, "GetStreamPath");
  impl->Register<int>(VerifyConnection, "VerifyConnection");
  impl->Register<int, int, int>(SelectVideoType, "SelectVideoType");
  impl->Register<int, string&, int&, int&>(GetSnapshotPath, "GetSnapshotPath");
}
DeviceAPIHandler::~DeviceAPIHandler() = default;
void DeviceAPIHandler::LoadByParam(DP_LOAD_SOURCE source, const string& address, int port, const string& user,
                                   const string& password, const string& vendor, const string& model,
                                   const string& channel, const string& sourcePath) {
  WriteCall("LoadByParam", source, address, port, user, password, vendor, model, channel, sourcePath);
  SetValid(true);
}
int SnapshotGetFromAPI(const string& host, int port, const string& user, const string& password,
                       DeviceAPIHandler& /*api*/, const string& setting, unsigned char** jpeg, int* size, int type) {
  return TakePicture(Call("SnapshotGetFromAPI", host, port, user, password, setting, type), jpeg, size);
}

struct CameraVerify::Impl {};
CameraVerify::CameraVerify(const string& address, int port, const string& user, const string& password,
                           const string& path, int videoType, int streamingType, RTSP_PROTOCOL protocol)
    : impl(std::make_unique<Impl>()) {
  WriteCall("CameraVerify", address, port, user, password, path, videoType, streamingType, protocol);
}
CameraVerify::~CameraVerify() { Write("~CameraVerify"); }
int CameraVerify::Verify() { return Call<int>("Verify"); }
