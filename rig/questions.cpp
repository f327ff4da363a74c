#include "rig/questions.h"

#include <stdexcept>
#include <utility>

#include "rig/cameras.h"

namespace bench {

using end_to_end::ParseJson;
using end_to_end::ToText;

namespace {

constexpr char kVendor[] = "Bench";

/// Cameras that have no good answer, and the code of a test that finds it out.
constexpr std::pair<const char*, int> kFaults[] = {
    {"refused", 462}, {"describe403", 464}, {"describe404", 465}, {"describe453", 467}, {"garbage", 468},
};
constexpr char kSilent[] = "silentAfterConnect";
constexpr int kSilentCode = 463;
/// Troubles of cameras that are asked, and the code of a test: small elements are no harm but their number.
/// Cameras that send as much as they can: a trouble of their ONVIF service, or a fault of their pictures.
struct Hostile {
  const char* name;
  int code;
  const char* model;  ///< "vendor model" of their list
};
constexpr char kOnvifModel[] = "ONVIF Generic";
constexpr char kPictureModel[] = "Bench Pictures";
constexpr Hostile kHostile[] = {
    {"ampersands", 468, kOnvifModel}, {"elements", 0, kOnvifModel}, {"endlessBody", 468, kPictureModel}};
constexpr int kLoginRefused = 464;
constexpr int kAskNow = 1;  // values of "camCapCmd"
constexpr int kTakeKept = 2;
constexpr std::size_t kShownOfAnAnswer = 200;  // bytes
constexpr int kAtOnce = 10;                    // cameras that a worker tests side by side

std::string ModelName(int caller) { return "C" + std::to_string(caller); }
std::string CameraName(int caller) { return "camera " + std::to_string(caller); }
int Width(int caller) { return 160 + 16 * caller; }
int Height(int caller) { return 128 + 16 * (caller % 4); }
std::string HostileName(const std::string& name, int number) {
  return "hostile " + name + " " + std::to_string(number);
}
std::string PictureSize(int caller) { return std::to_string(Width(caller)) + "x" + std::to_string(Height(caller)); }

/// Width and height from the frame header of a whole JPEG (ITU-T T.81 B.2.2); "" for anything else.
std::string SizeOfPicture(const std::string& jpeg) {
  if (!end_to_end::IsJpeg(jpeg)) return "";
  const auto number = [&](std::size_t at) {
    return static_cast<unsigned char>(jpeg[at]) * 256U + static_cast<unsigned char>(jpeg[at + 1]);
  };
  for (std::size_t at = 2; at + 9 < jpeg.size() && jpeg[at] == '\xFF'; at += 2 + number(at + 2)) {
    const auto marker = static_cast<unsigned char>(jpeg[at + 1]);
    if (marker < 0xC0 || marker > 0xC2) continue;
    return std::to_string(number(at + 7)) + "x" + std::to_string(number(at + 5));
  }
  return "";
}

std::string Differs(const std::string& what, const std::string& wanted, const std::string& got) {
  return wanted == got ? "" : what + " " + got + " instead of " + wanted;
}

std::string WrongCode(int wanted, const Json::Value& answer) {
  const int code = answer["success"].asBool() ? 0 : answer["error"]["code"].asInt();
  return Differs("code", std::to_string(wanted), std::to_string(code));
}

std::string WrongSize(const std::string& wanted, const std::string& jpeg) {
  return Differs("a picture of", wanted, SizeOfPicture(jpeg));
}

std::string WrongId(const std::string& wanted, const Json::Value& answer) {
  return Differs("capabilities of", wanted, answer["data"]["camCap"][0]["id"].asString());
}

std::string WrongRow(const Json::Value& asked, int code, const Json::Value& result) {
  const bool isThisRow = result["tmpId"] == asked["tmpId"] && result["name"] == asked["name"];
  if (!isThisRow) return "a row of another list: " + ToText(result);
  if ((result["result"] == 0) != (code == 0)) return "a row with another result: " + ToText(result);
  return Differs("a row with code", std::to_string(code), std::to_string(result["errinfo"]["code"].asInt()));
}

}  // namespace

Json::Value CameraConfigs(int callers) {
  Json::Value configs(Json::arrayValue);
  for (int caller = 0; caller < callers; ++caller) {
    Json::Value camera;
    camera["server"] = "scripted";  // its stream is encoded beforehand, so that the load is the recorder's
    camera["stream"]["width"] = Width(caller);
    camera["stream"]["height"] = Height(caller);
    camera["stream"]["fps"] = 10;
    camera["stream"]["gop"] = 10;
    camera["onvif"] = Json::Value(Json::objectValue);
    configs.append(end_to_end::Camera(CameraName(caller), camera));
  }
  for (const auto& [fault, code] : kFaults) configs.append(end_to_end::Faulty(fault, fault));
  configs.append(end_to_end::Faulty(kSilent, kSilent));
  for (const auto& [name, code, model] : kHostile) {
    Json::Value camera;
    if (model == kOnvifModel) {
      camera["onvif"]["trouble"] = name;
    } else {
      camera["fault"] = name;
    }
    for (int i = 0; i < kAtOnce; ++i) configs.append(end_to_end::Camera(HostileName(name, i), camera));
  }
  return configs;
}

void CopySchema(const TempFolder& folder) {
  std::filesystem::copy_file(std::filesystem::path(SOURCE_FOLDER) / "models/schema.json",
                             folder.Path() / "schema.json");
}

std::filesystem::path WriteModels(const TempFolder& folder, int callers) {
  Json::Value file;
  file["vendor"] = kVendor;
  file["source"] = "made for this run";
  for (int caller = 0; caller < callers; ++caller) {
    Json::Value& model = file["models"].append(ParseJson(R"({
      "channels": {"values": ["1"], "default": "1"},
      "codecs": [{"name": "H.264", "streamTypes": ["RTSP"]}],
      "stream": {"path": "/stream1"},
      "check": "stream"})"));
    model["name"] = ModelName(caller);
    const bool isFromStream = caller % 2 == 0;
    model["snapshot"]["kind"] = isFromStream ? "stream" : "http-jpeg";
    if (!isFromStream) model["snapshot"]["path"] = "/snapshot.jpg";
  }
  file["models"].append(ParseJson(R"({
    "name": "Pictures",
    "channels": {"values": ["1"], "default": "1"},
    "codecs": [{"name": "MJPEG", "streamTypes": ["HTTP"]}],
    "stream": {"path": "/snapshot.jpg"},
    "snapshot": {"kind": "http-jpeg", "path": "/snapshot.jpg"},
    "check": "stream"})"));
  folder.Write("bench.json", ToText(file));
  CopySchema(folder);
  return folder.Path();
}

Site::Site(const end_to_end::TestRecorder& recorder, const end_to_end::SimCameras& simulated)
    : cameras(simulated),
      login(recorder.Login().begin()->second),
      modelList(recorder.Get("CameraModelEnum").body),
      storedCapabilities(recorder.Get("EnumExistedCamCap").body) {
  if (modelList.find(kVendor) == std::string::npos) throw std::runtime_error("no models: " + recorder.Log());
}

Questioner::Questioner(const Site& site, int number, unsigned int seed)
    : site_(site),
      number_(number),
      own_{site.cameras.Port(CameraName(number)), end_to_end::kSecret, 0},
      model_(ModelName(number)),
      size_(PictureSize(number)),
      random_(seed + static_cast<unsigned int>(number)) {}

Question Questioner::Any() {
  constexpr int kListMethods = 3;
  constexpr int kMethods = 8;
  return Random(kMethods) < kListMethods ? List() : Camera();
}

Question Questioner::List() {
  switch (Random(3)) {
    case 0:
      return Whole("CameraModelEnum", site_.modelList);
    case 1:
      return Whole("EnumExistedCamCap", site_.storedCapabilities);
    default:
      return Capability();
  }
}

Question Questioner::Camera() {
  switch (Random(5)) {
    case 0:
      return Test();
    case 1:
      return Batch({AnyTarget(), AnyTarget(), own_, AnyTarget()});
    case 2:
      return Random(2) == 0 ? Remote() : AskOnvif();
    case 3:
      return Size();
    default:
      return Random(2) == 0 ? Picture() : RawPicture();
  }
}

Question Questioner::SilentBatch() {
  return Batch(std::vector<Target>(kAtOnce, {site_.cameras.Port(kSilent), "", kSilentCode}));
}

Question Questioner::HostileBatch() {
  const auto& [name, code, model] = kHostile[hostileLists_++ % std::size(kHostile)];
  std::vector<Target> targets;
  targets.reserve(kAtOnce);
  for (int i = 0; i < kAtOnce; ++i) {
    targets.push_back({site_.cameras.Port(HostileName(name, i)), end_to_end::kSecret, code});
  }
  return Batch(targets, model);
}

Questioner::Target Questioner::AnyTarget() {
  constexpr int kFaultCount = static_cast<int>(std::size(kFaults));
  const int choice = Random(kFaultCount + 2);
  if (choice == kFaultCount) return own_;
  if (choice > kFaultCount) return {own_.port, "wrong", kLoginRefused};
  const auto& [fault, code] = kFaults[choice];
  return {site_.cameras.Port(fault), end_to_end::kSecret, code};
}

/// The parameters of all methods that have a camera; each takes those that it knows.
Json::Value Questioner::Params(const Target& target) const {
  Json::Value params;
  params["camIP"] = "127.0.0.1";
  params["camPort"] = target.port;
  for (const char* name : {"camUser", "camUserName"}) params[name] = "admin";
  for (const char* name : {"camPass", "camPassword", "camPassWord"}) params[name] = target.password;
  params["vendor"] = kVendor;
  params["model"] = model_;
  params["camModel"] = std::string(kVendor) + " " + model_;
  params["camChannel"] = "1";
  params["camCapCmd"] = kAskNow;
  params["jsonResponse"] = true;
  return params;
}

Question Questioner::Post(const std::string& method, const Json::Value& params,
                          std::function<std::string(const Json::Value&)> mistake) const {
  return {method, HttpRequest("POST", kApi + method, site_.login, ToText(params)),
          [mistake = std::move(mistake)](const Reply& reply) -> std::string {
            try {
              const std::string found = mistake(ParseJson(reply.body));
              return found.empty() ? "" : found + " in " + reply.body.substr(0, kShownOfAnAnswer);
            } catch (const Json::Exception&) {
              return "half an answer: " + reply.body.substr(0, kShownOfAnAnswer);
            }
          }};
}

Question Questioner::Get(const std::string& method, const std::string& query,
                         std::function<std::string(const Reply&)> mistake) const {
  return {method, HttpRequest("GET", kApi + method + query, site_.login, ""), std::move(mistake)};
}

Question Questioner::Whole(const std::string& method, const std::string& answer) const {
  return Get(method, "", [answer](const Reply& reply) {
    return reply.body == answer ? "" : "another answer than at the start: " + reply.body.substr(0, kShownOfAnAnswer);
  });
}

Question Questioner::Capability() {
  Json::Value params = Params(own_);
  params["channel"] = "1";
  return Post("CamCap", params,
              [id = std::string(kVendor) + " " + model_](const Json::Value& answer) { return WrongId(id, answer); });
}

Question Questioner::Test() {
  const Target target = AnyTarget();
  return Post("CameraTest", Params(target),
              [code = target.code](const Json::Value& answer) { return WrongCode(code, answer); });
}

Question Questioner::Batch(const std::vector<Target>& targets) {
  return Batch(targets, std::string(kVendor) + " " + model_);
}

Question Questioner::Batch(const std::vector<Target>& targets, const std::string& cameraModel) {
  Json::Value rows(Json::arrayValue);
  std::vector<int> codes;
  for (const Target& target : targets) {
    const std::string id = std::to_string(number_) + "-" + std::to_string(++rows_);
    rows.append(end_to_end::BatchRow(id, target.port, target.password, cameraModel));
    codes.push_back(target.code);
  }
  return Post("CamBatAddVerify", end_to_end::Batch(rows), [rows, codes](const Json::Value& answer) -> std::string {
    const Json::Value& results = answer["data"]["resultList"];
    if (results.size() != rows.size()) return "a list of another size";
    for (Json::ArrayIndex i = 0; i < rows.size(); ++i) {
      std::string mistake = WrongRow(rows[i], codes[i], results[i]);
      if (!mistake.empty()) return mistake;
    }
    return "";
  });
}

Question Questioner::Remote() {
  return Post("CamCapRemote", Params(own_),
              [id = std::string(kVendor) + " " + model_](const Json::Value& answer) { return WrongId(id, answer); });
}

Question Questioner::AskOnvif() { return Onvif(kAskNow); }
Question Questioner::AskKept() { return Onvif(kTakeKept); }

Question Questioner::Onvif(int command) {
  Json::Value params = Params(own_);
  params["camCapCmd"] = command;
  params["vendor"] = "ONVIF";
  params["model"] = "Generic";
  return Post("CamCapRemote", params, [size = size_](const Json::Value& answer) {
    return Differs("capabilities of a camera of", size, answer["data"]["camCap"][0]["defReso"].asString());
  });
}

Question Questioner::Size() {
  return Post("CamCapUserDefineReso", Params(own_), [size = size_](const Json::Value& answer) {
    return Differs("a camera of", size, answer["data"]["userDefineReso"].asString());
  });
}

Question Questioner::Picture() {
  return Post("GetSnapshot", Params(own_), [size = size_](const Json::Value& answer) {
    return WrongSize(size, end_to_end::DecodeBase64(answer["data"]["img"].asString()));
  });
}

Question Questioner::RawPicture() {
  Json::Value params = Params(own_);
  params["jsonResponse"] = false;
  return {"GetSnapshot", HttpRequest("POST", std::string(kApi) + "GetSnapshot", site_.login, ToText(params)),
          [size = size_](const Reply& reply) { return WrongSize(size, reply.body); }};
}

}  // namespace bench
