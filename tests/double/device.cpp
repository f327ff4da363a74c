#include "platform/device.h"

#include <vector>

#include "tests/double/script.h"

using scripted::Call;
using scripted::Result;
using scripted::WriteCall;

namespace {

template <class R>
R Convert(const Json::Value& value) {
  if constexpr (std::is_same_v<R, std::list<std::string>>) {
    std::list<std::string> list;
    for (const Json::Value& item : value) list.push_back(item.asString());
    return list;
  } else {
    return value.as<R>();
  }
}

/// Takes the next output of an answer into a reference argument; leaves other arguments alone.
template <class T>
void Fill(T& argument, const Json::Value& answer, Json::ArrayIndex& next) {
  if (answer.isArray() && next < answer.size()) argument = answer[next++].as<T>();
}

template <class Signature>
class ScriptedFunction;

template <class R, class... Args>
class ScriptedFunction<R(Args...)> : public MemFuncInterface<R, Args...> {
 public:
  explicit ScriptedFunction(std::string name) : name_(std::move(name)) {}
  R Invoke(DPObjectBase* /*object*/, Args... args) override {
    const Json::Value answer = Call(name_, args...);
    if constexpr ((std::is_lvalue_reference_v<Args> || ...)) {
      Json::ArrayIndex next = 1;
      (Fill(args, answer, next), ...);
      return Convert<R>(Result(answer));
    } else {
      return Convert<R>(answer);
    }
  }

 private:
  std::string name_;
};

/// The object behind one handler, and the functions registered for it.
class ScriptedObject : public DPObjectBase {
 public:
  explicit ScriptedObject(std::string type) : life_(std::move(type)) {}

  template <class Signature, class FunctorType>
  void Register(FunctorType& functor, const char* name) {
    functor.name = name;
    if (!scripted::IsScripted(name, scripted::kNoObject)) functor.object = this;
    if (scripted::IsScripted(name, scripted::kNoWrapper)) return;
    if (scripted::IsScripted(name, scripted::kWrongSignature)) {
      functions_.push_back(std::make_unique<ScriptedFunction<unsigned()>>(name));
    } else {
      functions_.push_back(std::make_unique<ScriptedFunction<Signature>>(name));
    }
    functor.wrapper = functions_.back().get();
  }

 private:
  scripted::Life life_;
  std::vector<std::unique_ptr<MemFuncBase>> functions_;
};

/// A call that reports success and appends what the script has to an array.
bool AppendAnswer(const char* function, Json::Value& array) {
  const Json::Value answer = Call(function, array);
  for (Json::ArrayIndex i = 1; answer.isArray() && i < answer.size(); ++i) array.append(answer[i]);
  return Result(answer).asBool();
}

}  // namespace

int GetVideoType(const std::string& name) { return Call("GetVideoType", name).asInt(); }
int GetStreamingType(const std::string& name) { return Call("GetStreamingType", name).asInt(); }
bool GetCamModelEnumInfo(Json::Value& models) { return AppendAnswer("GetCamModelEnumInfo", models); }
bool EnumExistedCameraCap(Json::Value& capabilities) { return AppendAnswer("EnumExistedCameraCap", capabilities); }
bool IsGenericApi(const std::string& vendor, const std::string& model) {
  return Call("IsGenericApi", vendor, model).asBool();
}
// NOLINTNEXTLINE(performance-unnecessary-value-param): the platform declares it so
std::string GetRealCapFilePath(std::string vendor, std::string ip, int port, std::string variant) {
  return Call("GetRealCapFilePath", vendor, ip, port, variant).asString();
}

int CamCapUtils::GetCamCapFile(CamProfile& profile, std::string& capFilePath, __tag_REMOTE_CAMCAP_CMD cmd) {
  const Json::Value answer =
      Call("GetCamCapFile", profile.ip, profile.user, profile.pass, profile.channel, profile.vendor, profile.model,
           profile.port, profile.stream, profile.options.size(), capFilePath, cmd);
  if (answer.isArray()) capFilePath = answer[1].asString();
  return Result(answer).asInt();
}

struct CamCapHandler::Impl {
  ScriptedObject object{"CamCapHandler"};
};
CamCapHandler::CamCapHandler() : impl(std::make_unique<Impl>()) {
  using std::string;
  impl->object.Register<int(int, string, string, string, string)>(LoadCapability, "LoadCapability");
  impl->object.Register<std::list<string>()>(GetChannelList, "GetChannelList");
  impl->object.Register<string()>(GetDefaultChannel, "GetDefaultChannel");
  impl->object.Register<std::list<string>(int)>(GetListForCodec, "GetListForCodec");
  impl->object.Register<int()>(GetDefaultVideoType, "GetDefaultVideoType");
  impl->object.Register<int(int)>(GetStreamingTypeFor, "GetStreamingTypeFor");
}
CamCapHandler::~CamCapHandler() = default;

// NOLINTNEXTLINE(performance-unnecessary-value-param): the platform declares it so
int GetCamCap(std::string vendor, std::string model, CamCapHandler& /*handler*/, Json::Value& capability) {
  const Json::Value answer = Call("GetCamCap", vendor, model);
  if (answer.isArray()) capability = answer[1];
  return Result(answer).asInt();
}

VTHandlerBase::VTHandlerBase() = default;
VTHandlerBase::~VTHandlerBase() {}
bool VTHandlerBase::IsValid() const { return isValid && Call("IsValid").asBool(); }
void VTHandlerBase::SetValid(bool valid) { isValid = valid; }

struct DeviceAPIHandler::Impl {
  ScriptedObject object{"DeviceAPIHandler"};
};
DeviceAPIHandler::DeviceAPIHandler() : impl(std::make_unique<Impl>()) {
  impl->object.Register<bool()>(NeedsSourcePath, "NeedsSourcePath");
  impl->object.Register<bool()>(HasStreamPath, "HasStreamPath");
  impl->object.Register<int(std::string&, int&)>(GetStreamPath, "GetStreamPath");
  impl->object.Register<int()>(VerifyConnection, "VerifyConnection");
  impl->object.Register<int(int, int)>(SelectVideoType, "SelectVideoType");
  impl->object.Register<int(std::string&, int&, int&)>(GetSnapshotPath, "GetSnapshotPath");
}
DeviceAPIHandler::~DeviceAPIHandler() = default;
void DeviceAPIHandler::LoadByParam(DP_LOAD_SOURCE source, const std::string& address, int port, const std::string& user,
                                   const std::string& password, const std::string& vendor, const std::string& model,
                                   const std::string& channel, const std::string& sourcePath) {
  WriteCall("LoadByParam", source, address, port, user, password, vendor, model, channel, sourcePath);
  SetValid(true);
}

int RetDevApiToRetCV(int code) { return Call("RetDevApiToRetCV", code).asInt(); }

struct CameraVerify::Impl {
  scripted::Life life{"CameraVerify"};
};
CameraVerify::CameraVerify(const std::string& address, int port, const std::string& user, const std::string& password,
                           const std::string& sourcePath, int videoType, int streamingType, RTSP_PROTOCOL rtspProtocol)
    : impl(std::make_unique<Impl>()) {
  WriteCall("CameraVerify", address, port, user, password, sourcePath, videoType, streamingType, rtspProtocol);
}
CameraVerify::~CameraVerify() { scripted::Write("~CameraVerify"); }
int CameraVerify::Verify() { return Call("Verify").asInt(); }

int SnapshotGetFromAPI(const std::string& host, int port, const std::string& user, const std::string& password,
                       DeviceAPIHandler& /*api*/, const std::string& setting, unsigned char** jpeg, int* jpegSize,
                       int videoType) {
  return scripted::TakePicture(Call("SnapshotGetFromAPI", host, port, user, password, setting, videoType), jpeg,
                               jpegSize);
}
