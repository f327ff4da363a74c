#include "recorder/device/asked/export_model.h"

#include <json/json.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "recorder/device/asked/camera_file.h"
#include "recorder/device/asked/merged_channels.h"
#include "recorder/device/model/built_in_models.h"
#include "recorder/device/model/model_facts.h"
#include "recorder/device/model/model_files.h"
#include "recorder/device/model/path_privacy.h"
#include "recorder/net/percent.h"
#include "recorder/net/source_path.h"
#include "recorder/utility/day_text.h"
#include "recorder/utility/files.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/outcome.h"

namespace recorder {
namespace {

std::vector<PrivateText> PrivateTextsOf(const ExportedCamera& camera) {
  return {{"the camera's address", camera.address.host},
          {"the camera's user name", camera.address.user},
          {"the camera's password", camera.address.password},
          {"the camera's id", camera.endpoint},
          {"the camera's serial number", camera.serial}};
}

/// Makes the one entry of a model file, and the file around it.
class Exporter {
 public:
  Exporter(const ExportedCamera& camera, std::string key) : known_(PrivateTextsOf(camera)), key_(std::move(key)) {}

  Json::Value& Entry() { return entry_; }

  /// Puts a member in that the source says.
  void Say(const std::string& member, const Json::Value& value) {
    entry_[member] = value;
    entry_["facts"][member] = key_;
  }

  void SayPath(const std::string& fact) { entry_["facts"][fact] = key_; }

  /// False, and remarked, when the text `what` cannot be handed on.
  bool MayTell(const std::string& text, const std::string& what) {
    const std::string part = FindPrivatePart(text, known_);
    if (part.empty()) return true;
    Remark(what + " cannot be handed on: it seems to hold " + part);
    return false;
  }

  void Remark(const std::string& text) { remarks_.push_back(text); }

  /// What there is, unless it would be no model file.
  ModelExport Finish(std::string vendor, const std::string& document, const std::string& day, SaidBy by) {
    std::replace(vendor.begin(), vendor.end(), ' ', '-');
    Json::Value file;
    file["$schema"] = "schema.json";
    file["vendor"] = vendor;
    Json::Value& source = file["sources"][key_];
    source["document"] = document;
    source["checked"] = day;
    source["by"] = std::string(NameOf(by));
    file["models"].append(entry_);
    std::string text = ToPrettyText(file);
    return IsRight(vendor, text) ? ModelExport{std::move(text), std::move(remarks_)} : Nothing();
  }

  ModelExport Nothing() { return {"", std::move(remarks_)}; }

 private:
  bool IsRight(const std::string& vendor, const std::string& text) {
    if (BuiltInModel(vendor)) Remark("a vendor cannot be called " + vendor);
    std::vector<ModelMistake> mistakes;
    ReadModelText(text, "", mistakes);
    for (const ModelMistake& mistake : mistakes) Remark(mistake.place + ": " + mistake.text);
    return mistakes.empty() && !BuiltInModel(vendor);
  }

  const std::vector<PrivateText> known_;
  const std::string key_;
  Json::Value entry_;
  std::vector<std::string> remarks_;
};

// --- Asked cameras --------------------------------------------------------------------------------------------------

/// The camera's capability file; nothing when there is none that can be read.
std::optional<Json::Value> ReadKept(const std::string& vendor, const CameraAddress& address) {
  const std::string path = KeptFile(vendor, address.host, address.port);
  if (path.empty()) return std::nullopt;
  const std::string text = ReadFile(path);
  std::vector<ModelMistake> mistakes;
  std::string ignored;  // said by the mistakes
  return ReadModelText(text, path, mistakes) ? ParseStrictJson(text, ignored) : std::nullopt;
}

Json::Value ToJson(const std::vector<std::string>& texts) {
  Json::Value list(Json::arrayValue);
  for (const std::string& text : texts) list.append(text);
  return list;
}

/// Writes what a camera said of some channels.
class AskedExporter {
 public:
  AskedExporter(const MergedChannels& said, const ExportedCamera& camera) : said_(said), exporter_(camera, "camera") {}

  ModelExport Export(const ExportNames& names) {
    if (!AddNames(names)) return exporter_.Nothing();
    AddChannels();
    AddSettings();
    if (!AddStreams()) return exporter_.Nothing();
    AddSnapshot();
    exporter_.Entry()["check"] = "stream";
    return exporter_.Finish(vendor_, "what the camera said", Day(), SaidBy::kCamera);
  }

 private:
  bool IsSaid(const char* member) const { return said_.entry["readings"][member]["source"] == "camera"; }

  std::string Day() const { return DayText(said_.entry["readings"]["stream"]["time"].asInt64()); }

  /// False when they are not known, or cannot be handed on.
  bool AddNames(const ExportNames& names) {
    const Json::Value& device = said_.entry["device"];
    vendor_ = names.vendor.empty() ? device["maker"].asString() : names.vendor;
    const std::string model = names.model.empty() ? device["model"].asString() : names.model;
    exporter_.Entry()["name"] = model;
    const bool isKnown = !vendor_.empty() && !model.empty();
    if (!isKnown) exporter_.Remark("the camera did not say its maker and model: name both, or ask it once more");
    return isKnown && exporter_.MayTell(vendor_, "the vendor") && exporter_.MayTell(model, "the model's name");
  }

  void AddChannels() {
    Json::Value channels;
    channels["values"] = ToJson(said_.channels);
    channels["default"] = said_.channels.front();
    exporter_.Say("channels", channels);
    exporter_.Say("codecs", said_.entry["codecs"]);
    if (said_.entry.isMember("defaultCodec")) exporter_.Entry()["defaultCodec"] = said_.entry["defaultCodec"];
  }

  void AddSettings() {
    exporter_.Entry()["streams"] = 0;  // not known
    for (const char* member : {"frameRates", "resolutions", "qualities", "streams", "audioChannels", "motionChannels",
                               "digitalInputs", "rtsp"}) {
      if (IsSaid(member) && said_.entry.isMember(member)) exporter_.Say(member, said_.entry[member]);
    }
  }

  /// False when the main stream cannot be handed on.
  bool AddStreams() {
    Json::Value stream = said_.entry["stream"];
    const Json::Value others = stream["others"];
    stream.removeMember("others");
    if (!exporter_.MayTell(stream["path"].asString(), "the path of the main stream")) return false;
    for (const Json::Value& other : others) {
      if (!exporter_.MayTell(other["path"].asString(), "the path of a stream in " + other["codec"].asString()))
        continue;
      exporter_.SayPath(StreamFactName(stream["others"].size() + 1));
      stream["others"].append(other);
    }
    if (stream["others"].empty()) stream.removeMember("others");
    exporter_.Say("stream", stream);
    return true;
  }

  void AddSnapshot() {
    const Json::Value& snapshot = said_.entry["snapshot"];
    const bool isTold = IsSaid("snapshot") && exporter_.MayTell(snapshot["path"].asString(), "the path of pictures");
    if (isTold) return exporter_.Say("snapshot", snapshot);
    exporter_.Entry()["snapshot"]["kind"] = "stream";
  }

  const MergedChannels& said_;
  Exporter exporter_;
  std::string vendor_;
};

// --- A user's stream ------------------------------------------------------------------------------------------------

Json::Value CodecOf(const UserStream& stream) {
  Json::Value codec;
  codec["name"] = stream.codec;
  codec["streamTypes"].append(stream.isOverHttp ? "HTTP" : "RTSP");
  Json::Value codecs;
  codecs.append(codec);
  return codecs;
}

int UsualPort(const UserStream& stream) {
  if (stream.isOverHttp) return stream.camera.address.isTls ? kHttpsPort : kHttpPort;
  return stream.camera.address.isTls ? kRtspsPort : kRtspPort;
}

Json::Value PathOf(const UserStream& stream) {
  Json::Value path;
  path["path"] = PercentEncoded(stream.path, kAddressSigns);
  const int usual = UsualPort(stream);
  if (stream.camera.address.port == usual) path["port"] = usual;
  return path;
}

void AddUserStream(const UserStream& stream, Exporter& exporter) {
  Json::Value path = PathOf(stream);
  Json::Value snapshot = stream.isOverHttp ? path : Json::Value();
  snapshot["kind"] = stream.isOverHttp ? "http-mjpeg" : "stream";
  if (stream.camera.address.isTls) path["tls"] = true;
  exporter.Say("stream", path);
  exporter.Entry()["snapshot"] = snapshot;
  exporter.Entry()["check"] = stream.isOverHttp ? "device" : "stream";
}

/// A picture over HTTP goes inside TLS at one port alone.
bool CanBeWritten(const UserStream& stream) {
  return !stream.isOverHttp || !stream.camera.address.isTls || stream.camera.address.port == kHttpsPort;
}

}  // namespace

ModelExport ExportAskedCamera(const std::string& vendor, const ExportedCamera& camera, const ExportNames& names) {
  const std::optional<Json::Value> kept = ReadKept(vendor, camera.address);
  if (!kept) return {"", {"nothing is kept of what the camera said: test it first"}};
  const MergedChannels said = MergeChannels((*kept)["models"]);
  return AskedExporter(said, camera).Export(names);
}

ModelExport ExportUserStream(UserStream stream, const ExportNames& names) {
  const Outcome outcome = TakeApart(stream.path, stream.camera.address);
  if (outcome != Outcome::kOk) return {"", {std::string(Describe(outcome))}};
  if (!CanBeWritten(stream)) return {"", {"a stream over HTTPS at another port than 443 has no place in a model"}};
  Exporter exporter(stream.camera, "user");
  if (!exporter.MayTell(stream.path, "the path")) return exporter.Nothing();
  Json::Value& entry = exporter.Entry();
  entry["name"] = names.model;
  entry["channels"]["values"].append("1");
  entry["channels"]["default"] = "1";
  entry["streams"] = 0;  // not known
  if (!stream.codec.empty()) exporter.Say("codecs", CodecOf(stream));
  AddUserStream(stream, exporter);
  return exporter.Finish(names.vendor, "a stream that was tested", stream.day, SaidBy::kUser);
}

}  // namespace recorder
