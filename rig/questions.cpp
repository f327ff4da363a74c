#include "rig/questions.h"

#include <stdexcept>
#include <utility>

namespace rig {

namespace {

constexpr char kVendor[] = "Rig";

/// Cameras that have no good answer, and the code of a test that finds it out.
constexpr std::pair<const char*, int> kFaults[] = {
    {"refused", 462}, {"describe403", 464}, {"describe404", 465}, {"describe453", 467}, {"garbage", 468},
};
/// Cameras that send as much as they can: a trouble of their ONVIF service, or a fault of their pictures.
struct Hostile {
  const char* name;
  int code;
  const char* model;  ///< "vendor model" of their list
};
constexpr char kOnvifModel[] = "ONVIF Generic";
constexpr char kPictureModel[] = "Rig Pictures";
constexpr Hostile kHostile[] = {
    {"ampersands", 468, kOnvifModel}, {"elements", 0, kOnvifModel}, {"endlessBody", 468, kPictureModel}};
constexpr int kLoginRefused = 464;
constexpr int kAskNow = 1;  // values of "camCapCmd"
constexpr int kTakeKept = 2;
constexpr std::size_t kShownOfAnAnswer = 200;  // bytes
constexpr int kAtOnce = 10;                    // cameras that a worker tests side by side

std::string ModelName(int caller) { return "C" + std::to_string(caller); }
std::string WholeModelName(int caller) { return std::string(kVendor) + " " + ModelName(caller); }
std::string CameraName(int caller) { return "camera " + std::to_string(caller); }
int Width(int caller) { return 160 + 16 * caller; }
int Height(int caller) { return 128 + 16 * (caller % 4); }
std::string HostileName(const std::string& name, int number) {
  return "hostile " + name + " " + std::to_string(number);
}
std::string PictureSize(int caller) { return std::to_string(Width(caller)) + "x" + std::to_string(Height(caller)); }

/// Width and height from the frame header of a whole JPEG (ITU-T T.81 B.2.2); "" for anything else.
std::string SizeOfPicture(const std::string& jpeg) {
  if (!IsJpeg(jpeg)) return "";
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
  return Differs("code", std::to_string(wanted), std::to_string(ErrorCode(answer)));
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
  return Differs("a row with code", std::to_string(code), std::to_string(RowCode(result)));
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
    configs.append(Camera(CameraName(caller), camera));
  }
  for (const auto& [fault, code] : kFaults) configs.append(Faulty(fault, fault));
  for (const auto& [name, code, model] : kHostile) {
    Json::Value camera;
    if (model == kOnvifModel) {
      camera["onvif"]["trouble"] = name;
    } else {
      camera["fault"] = name;
    }
    for (int i = 0; i < kAtOnce; ++i) configs.append(Camera(HostileName(name, i), camera));
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

Questioner::Questioner(const TestRecorder& recorder, const SimCameras& cameras, int number, unsigned int seed)
    : cameras_(cameras),
      login_(recorder.Login()),
      modelList_(recorder.Get("CameraModelEnum").body),
      storedCapabilities_(recorder.Get("EnumExistedCamCap").body),
      number_(number),
      own_{cameras.Port(CameraName(number)), kSecret, 0},
      model_(WholeModelName(number)),
      size_(PictureSize(number)),
      random_(seed + static_cast<unsigned int>(number)) {
  if (modelList_.find(kVendor) == std::string::npos) throw std::runtime_error("no models: " + recorder.Log());
}

Question Questioner::Any() {
  constexpr int kListMethods = 3;
  constexpr int kMethods = 8;
  return Random(kMethods) < kListMethods ? List() : Camera();
}

Question Questioner::List() {
  switch (Random(3)) {
    case 0:
      return Whole("CameraModelEnum", modelList_);
    case 1:
      return Whole("EnumExistedCamCap", storedCapabilities_);
    default:
      return Capability();
  }
}

Question Questioner::Camera() {
  switch (Random(5)) {
    case 0:
      return Test();
    case 1:
      return Batch({AnyTarget(), AnyTarget(), own_, AnyTarget()}, model_);
    case 2:
      return Random(2) == 0 ? Remote() : AskOnvif();
    case 3:
      return Size();
    default:
      return Random(2) == 0 ? Picture() : RawPicture();
  }
}

Question Questioner::HostileBatch() {
  const auto& [name, code, model] = kHostile[hostileLists_++ % std::size(kHostile)];
  std::vector<Target> targets;
  targets.reserve(kAtOnce);
  for (int i = 0; i < kAtOnce; ++i) {
    targets.push_back({cameras_.Port(HostileName(name, i)), kSecret, code});
  }
  return Batch(targets, model);
}

Questioner::Target Questioner::AnyTarget() {
  constexpr int kFaultCount = static_cast<int>(std::size(kFaults));
  const int choice = Random(kFaultCount + 2);
  if (choice == kFaultCount) return own_;
  if (choice > kFaultCount) return {own_.port, "wrong", kLoginRefused};
  const auto& [fault, code] = kFaults[choice];
  return {cameras_.Port(fault), kSecret, code};
}

Question Questioner::Post(const std::string& method, const Json::Value& params,
                          std::function<std::string(const Json::Value&)> mistake) const {
  return {method, HttpRequest("POST", kApi + method, login_, ToText(params)),
          [mistake = std::move(mistake)](const Reply& reply) -> std::string {
            try {
              const std::string found = mistake(ParseJson(reply.body));
              return found.empty() ? "" : found + " in " + reply.body.substr(0, kShownOfAnAnswer);
            } catch (const Json::Exception&) {
              return "half an answer: " + reply.body.substr(0, kShownOfAnAnswer);
            }
          }};
}

Question Questioner::Whole(const std::string& method, const std::string& answer) const {
  return {method, HttpRequest("GET", kApi + method, login_), [answer](const Reply& reply) {
            const std::string shown = reply.body.substr(0, kShownOfAnAnswer);
            return reply.body == answer ? "" : "another answer than at the start: " + shown;
          }};
}

Question Questioner::Capability() { return OfModel("CamCap"); }
Question Questioner::Remote() { return OfModel("CamCapRemote"); }

Question Questioner::OfModel(const std::string& method) const {
  Json::Value params = Params(own_);
  params["channel"] = "1";
  return Post(method, params, [id = model_](const Json::Value& answer) { return WrongId(id, answer); });
}

Question Questioner::Test() {
  const Target target = AnyTarget();
  return Post("CameraTest", Params(target),
              [code = target.code](const Json::Value& answer) { return WrongCode(code, answer); });
}

Question Questioner::Batch(const std::vector<Target>& targets, const std::string& model) {
  Json::Value rows(Json::arrayValue);
  std::vector<int> codes;
  for (const Target& target : targets) {
    const std::string id = std::to_string(number_) + "-" + std::to_string(++rows_);
    rows.append(BatchRow(id, target.port, target.password, model));
    codes.push_back(target.code);
  }
  return Post("CamBatAddVerify", rig::Batch(rows), [rows, codes](const Json::Value& answer) -> std::string {
    const Json::Value& results = answer["data"]["resultList"];
    if (results.size() != rows.size()) return "a list of another size";
    for (Json::ArrayIndex i = 0; i < rows.size(); ++i) {
      std::string mistake = WrongRow(rows[i], codes[i], results[i]);
      if (!mistake.empty()) return mistake;
    }
    return "";
  });
}

Question Questioner::AskOnvif() { return Onvif(kAskNow); }
Question Questioner::AskKept() { return Onvif(kTakeKept); }

Question Questioner::Onvif(int command) {
  Json::Value params = CameraParams(own_.port, own_.password, kOnvifModel);
  params["camCapCmd"] = command;
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
    return WrongSize(size, DecodeBase64(answer["data"]["img"].asString()));
  });
}

Question Questioner::RawPicture() {
  Json::Value params = Params(own_);
  params["jsonResponse"] = false;
  return {"GetSnapshot", HttpRequest("POST", kApi + std::string("GetSnapshot"), login_, ToText(params)),
          [size = size_](const Reply& reply) { return WrongSize(size, reply.body); }};
}

std::vector<Questioner> MakeQuestioners(const TestRecorder& recorder, const SimCameras& cameras, int count,
                                        unsigned int seed) {
  std::vector<Questioner> all;
  all.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) all.emplace_back(recorder, cameras, i, seed);
  return all;
}

std::vector<Callers::Source> SourcesOf(std::span<Questioner> questioners, Question (Questioner::*ask)()) {
  std::vector<Callers::Source> sources;
  for (Questioner& questioner : questioners) sources.emplace_back([&questioner, ask] { return (questioner.*ask)(); });
  return sources;
}

}  // namespace rig
