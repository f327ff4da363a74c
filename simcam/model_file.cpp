#include "simcam/model_file.h"

#include <glib.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>
#include <vector>

#include "simcam/config_members.h"
#include "simcam/glib_handle.h"

namespace simcam {
namespace {

/// Names of codecs in model files.
constexpr Named<const char*> kCodecNames[] = {
    {"MJPEG", "jpeg"}, {"MPEG4", "mpeg4"}, {"H.264", "h264"}, {"H.265", "h265"}};
constexpr Named<int> kStreamNumbers[] = {{"main", 1}, {"sub", 2}, {"third", 3}};

/// What a placeholder stands for.
using Words = std::vector<std::pair<std::string, std::string>>;

std::optional<int> NumberOf(const std::string& text) {
  int number = 0;
  const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
  return end.ec == std::errc() && *end.ptr == '\0' ? std::optional(number) : std::nullopt;
}

std::string WithTwoDigits(int number) { return number < 10 ? "0" + std::to_string(number) : std::to_string(number); }

Words WordsOf(const std::string& channel, int stream) {
  const auto number = NumberOf(channel);
  return {{"{channel}", channel},
          {"{channel0}", number && *number > 0 ? std::to_string(*number - 1) : channel},
          {"{channel:02}", number && *number > 0 ? WithTwoDigits(*number) : channel},
          {"{stream}", std::to_string(stream)},
          {"{stream0}", std::to_string(stream - 1)}};
}

std::string Render(std::string path, const Words& words) {
  for (const auto& [word, value] : words) {
    const std::string encoded = GlibText(g_uri_escape_string(value.c_str(), nullptr, FALSE)).get();
    for (size_t at = path.find(word); at != std::string::npos; at = path.find(word, at + encoded.size())) {
      path.replace(at, word.size(), encoded);
    }
  }
  return path;
}

std::vector<std::string> TextsOf(const Json::Value& list) {
  std::vector<std::string> texts;
  for (const Json::Value& text : list) texts.push_back(text.asString());
  return texts;
}

/// Its values, and where the file does not say how many there are, one more.
std::vector<std::string> ChannelsOf(const Json::Value& channels) {
  std::vector<std::string> all = TextsOf(channels["values"]);
  if (channels["others"].asBool()) all.emplace_back("2");
  return all;
}

/// Where the file does not know its codecs, the usual one.
std::string DefaultCodec(const Json::Value& model) {
  const Json::Value& codecs = model["codecs"];
  return model.get("defaultCodec", codecs.empty() ? "H.264" : codecs[0]["name"]).asString();
}

/// A small one, alike for all models, so that they share their clips.
StreamConfig StreamAt(const std::string& path, const Codec& codec) {
  StreamConfig stream;
  stream.codec = &codec;
  stream.size = {160, 128};
  stream.fps = stream.gop = 5;
  stream.bitrate = 200;
  stream.path = path;
  stream.live = false;
  return stream;
}

/// Gives one camera what its model says.
class ModelCamera {
 public:
  /// `codec`: what it is set to send at a path that several codecs share.
  ModelCamera(const Members& members, const Json::Value& model, std::string codec, CameraConfig& camera)
      : members_(members), model_(model), codec_(std::move(codec)), camera_(camera) {}

  void Add(const std::string& channel) {
    const Json::Value& others = model_["stream"]["others"];
    for (const Json::Value& other : others) {
      if (other["codec"] == codec_) AddOther(other, channel);  // has precedence at a path that it shares
    }
    AddMain(channel);
    for (const Json::Value& other : others) AddOther(other, channel);
    AddSnapshot(channel);
  }

 private:
  void AddMain(const std::string& channel) {
    const Json::Value& stream = model_["stream"];
    const std::string path = stream["fromUser"].asBool() ? StreamConfig().path : stream["path"].asString();
    const std::string codec = HasOwnPath(codec_) ? DefaultCodec(model_) : codec_;
    for (const std::string& type : TypesOf(codec)) {
      AddStream(Render(path, WordsOf(channel, 1)), codec, type == "HTTP");
    }
    if (stream["tls"].asBool()) camera_.tls = TlsUse::kToo;
  }

  void AddOther(const Json::Value& other, const std::string& channel) {
    const int number = members_.Choose("stream", other.get("stream", "main").asString(), kStreamNumbers);
    AddStream(Render(other["path"].asString(), WordsOf(channel, number)), other.get("codec", codec_).asString(),
              other["over"] == "HTTP");
    if (other["tls"].asBool()) camera_.tls = TlsUse::kToo;
  }

  /// Of the main stream, beside the usual one.
  [[nodiscard]] bool HasOwnPath(const std::string& codec) const {
    const Json::Value& others = model_["stream"]["others"];
    return std::any_of(others.begin(), others.end(), [&](const Json::Value& other) {
      return other["codec"] == codec && other.get("stream", "main") == "main";
    });
  }

  [[nodiscard]] std::vector<std::string> TypesOf(const std::string& codec) const {
    if (model_["codecs"].empty()) return {"RTSP"};
    for (const Json::Value& row : model_["codecs"]) {
      if (row["name"] == codec) return TextsOf(row["streamTypes"]);
    }
    members_.Fail("the model has no codec \"" + codec + "\"");
  }

  void AddSnapshot(const std::string& channel) {
    const Json::Value& snapshot = model_["snapshot"];
    if (snapshot["kind"] == "stream") return;
    const std::string path = Render(snapshot["path"].asString(), WordsOf(channel, 1));
    const bool isMotion = snapshot["kind"] == "http-mjpeg";
    if (snapshot["settings"].empty()) AddPictures(path, isMotion);
    for (const Json::Value& ofCodec : snapshot["settings"]) {
      for (const Json::Value& setting : ofCodec)
        AddPictures(Render(path, {{"{setting}", setting.asString()}}), isMotion);
    }
  }

  void AddStream(const std::string& path, const std::string& codec, bool isOverHttp) {
    if (isOverHttp) return AddPictures(path, true);
    const Codec* played = FindCodec(members_.Choose("codec", codec, kCodecNames));
    const bool isTaken = std::ranges::find(camera_.streams, path, &StreamConfig::path) != camera_.streams.end();
    if (!isTaken) camera_.streams.push_back(StreamAt(path, *played));
  }

  void AddPictures(const std::string& path, bool isMotion) {
    const bool isTaken = std::ranges::find(camera_.pictures, path, &PicturesConfig::path) != camera_.pictures.end();
    if (!isTaken) camera_.pictures.push_back({path, isMotion});
  }

  const Members& members_;
  const Json::Value& model_;
  const std::string codec_;
  CameraConfig& camera_;
};

Json::Value FindModel(const Members& members, const std::string& file, const std::string& name) {
  const Json::Value root = ReadJson(file);
  for (const Json::Value& model : root["models"]) {
    if (model["name"] == name) return model;
  }
  members.Fail("no model \"" + name + "\" in " + file);
}

}  // namespace

void ReadModel(const Json::Value& value, const std::string& where, CameraConfig& camera) {
  Members members(value, where);
  std::string file;
  std::string name;
  members.Read("file", file);
  members.Read("name", name);
  const Json::Value model = FindModel(members, file, name);
  std::string codec = DefaultCodec(model);
  members.Read("codec", codec);
  members.Finish();
  camera.snapshotPath.clear();
  camera.mjpegPath.clear();
  ModelCamera played(members, model, codec, camera);
  for (const std::string& channel : ChannelsOf(model["channels"])) played.Add(channel);
}

}  // namespace simcam
