#include "recorder/device/asked/onvif/video_report.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <utility>

namespace recorder::onvif {
namespace {

std::string TextOf(int number) { return std::to_string(number); }
std::string TextOf(const Size& size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

/// `values`, and the one of them that is set; `fallback` where that is not known.
template <class Values, class Value>
std::optional<Choices> ChoicesOf(const Values& values, const std::optional<Value>& current, const Value& fallback) {
  Choices choices;
  for (const auto& value : values) choices.values.push_back(TextOf(value));
  choices.preset = TextOf(current.value_or(fallback));
  return choices;
}

/// As ChoicesOf, of numbers of which the largest is the fallback.
std::optional<Choices> NumberChoices(std::set<int> numbers, const std::optional<int>& current) {
  if (current) numbers.insert(*current);
  if (numbers.empty()) return std::nullopt;
  return ChoicesOf(numbers, current, *numbers.rbegin());
}

/// The numbers of `range`, at most 101 of them, as a scale in percent has.
std::set<int> Expanded(const std::optional<VideoOptions::Range>& range) {
  constexpr int kMost = 101;
  std::set<int> numbers;
  if (!range) return numbers;
  const int step = (range->max - range->min) / kMost + 1;
  for (int number = range->min; number <= range->max; number += step) numbers.insert(number);
  return numbers;
}

std::optional<Choices> ResolutionChoices(std::vector<Size> sizes, const std::optional<Size>& current) {
  if (current && std::find(sizes.begin(), sizes.end(), *current) == sizes.end()) sizes.push_back(*current);
  if (sizes.empty()) return std::nullopt;
  std::stable_sort(sizes.begin(), sizes.end(), [](const Size& left, const Size& right) {
    return std::int64_t{left.width} * left.height > std::int64_t{right.width} * right.height;
  });
  return ChoicesOf(sizes, current, sizes.front());
}

std::vector<ModelCodec> Codecs(std::vector<std::string> names, const std::string& current) {
  if (std::find(names.begin(), names.end(), current) == names.end()) names.push_back(current);
  std::vector<ModelCodec> codecs;
  codecs.reserve(names.size());
  for (std::string& name : names) codecs.push_back({std::move(name), {"RTSP"}});
  return codecs;
}

}  // namespace

void ReportVideo(const VideoEncoder& current, const VideoOptions& options, CameraReport& report) {
  report.codecs = Codecs(options.codecs, current.codec);
  report.codec = current.codec;
  report.frameRates = NumberChoices(options.frameRates, current.frameRate);
  report.resolutions = ResolutionChoices(options.resolutions, current.resolution);
  report.qualities = NumberChoices(Expanded(options.quality), current.quality);
}

}  // namespace recorder::onvif
