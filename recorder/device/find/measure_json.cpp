#include "recorder/device/find/measure_json.h"

#include <cmath>

namespace recorder {
namespace {

struct WarningRow {
  MeasureWarning warning;
  const char* name;
  const char* text;  ///< behind how far key frames are apart, where it is about these
};

constexpr WarningRow kMeasureWarnings[] = {
    {MeasureWarning::kKeyFramesFar, "keyFramesFar",
     ": pictures take that long; set the camera's GOP or I-frame interval to 1 or 2 s"},
    {MeasureWarning::kH265, "h265",
     "H.265: some browsers cannot show it; set the camera to H.264, or take a stream of it that is in H.264"},
};

const WarningRow& RowOf(MeasureWarning warning) { return kMeasureWarnings[static_cast<std::size_t>(warning)]; }

std::string DistanceOf(const find::StreamFigures& figures) {
  const bool isSeen = figures.keyFrameDistance > 0;
  const auto seconds =
      isSeen ? std::lround(figures.keyFrameDistance) : std::lround(std::floor(figures.keyFrameMoreThan));
  return (isSeen ? "a key frame every " : "no key frame for ") + std::to_string(seconds) + " s";
}

/// To `digits` behind the point; null for what is not known.
Json::Value Rounded(double number, int digits) {
  const double unit = std::pow(10, digits);
  return number > 0 ? Json::Value(std::round(number * unit) / unit) : Json::Value();
}

Json::Value Side(int pixels) { return pixels > 0 ? Json::Value(pixels) : Json::Value(); }

}  // namespace

Json::Value MeasureJson(const MeasureResult& result) {
  const find::StreamFigures& figures = result.figures;
  Json::Value json(Json::objectValue);
  json["cause"] = std::string(NameOf(result.outcome));
  json["codec"] = result.codec;
  json["width"] = Side(result.width);
  json["height"] = Side(result.height);
  json["frameRate"] = Rounded(figures.frameRate, 2);
  json["bitRate"] = figures.bitRate > 0 ? Json::Value(Json::Int64{std::llround(figures.bitRate)}) : Json::Value();
  json["keyFrameDistance"] = Rounded(figures.keyFrameDistance, 2);
  json["keyFrameMoreThan"] = Rounded(figures.keyFrameMoreThan, 2);
  json["audio"] = result.audio;
  json["seconds"] = Rounded(figures.seconds, 2);
  json["warnings"] = Json::Value(Json::arrayValue);
  for (const MeasureWarning warning : result.warnings) {
    Json::Value& entry = json["warnings"].append(Json::Value(Json::objectValue));
    entry["name"] = RowOf(warning).name;
    entry["text"] = TextOf(warning, figures);
  }
  return json;
}

std::string TextOf(MeasureWarning warning, const find::StreamFigures& figures) {
  const bool isFar = warning == MeasureWarning::kKeyFramesFar;
  return (isFar ? DistanceOf(figures) : "") + RowOf(warning).text;
}

}  // namespace recorder
