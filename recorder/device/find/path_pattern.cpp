#include "recorder/device/find/path_pattern.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "recorder/utility/text.h"

namespace recorder::find {
namespace {

constexpr std::size_t kMostDigits = 9;  // a longer number counts nothing

/// A path, cut into its numbers and what stands around them: one text more than there are numbers.
struct CutPath {
  std::vector<std::string> texts{""};
  std::vector<std::string> numbers;
};

CutPath Cut(std::string_view path) {
  CutPath cut;
  while (!path.empty()) {
    const auto isEnd = [isDigit = IsDigit(path.front())](char c) { return IsDigit(c) != isDigit; };
    const std::size_t size = static_cast<std::size_t>(std::ranges::find_if(path, isEnd) - path.begin());
    const bool isNumber = IsDigit(path.front()) && size <= kMostDigits;
    if (isNumber) {
      cut.numbers.emplace_back(path.substr(0, size));
      cut.texts.emplace_back();
    } else {
      cut.texts.back() += path.substr(0, size);
    }
    path.remove_prefix(size);
  }
  return cut;
}

std::int64_t ValueOf(const std::string& number) { return ParseNumber<std::int64_t>(number).value_or(0); }

/// As wide as `like` at least, with zeros before it.
std::string Written(std::int64_t value, const std::string& like) {
  std::string text = std::to_string(value);
  return std::string(like.size() - std::min(like.size(), text.size()), '0') + text;
}

const std::string* Find(const std::vector<KnownPath>& known, int channel, int place) {
  const auto found = std::ranges::find_if(
      known, [&](const KnownPath& one) { return one.spot.channel == channel && one.spot.place == place; });
  return found == known.end() ? nullptr : &found->path;
}

/// By how much each number grows from channel 0 to channel 1. Nothing when they differ in more than numbers.
std::optional<std::vector<std::int64_t>> Steps(const std::vector<KnownPath>& known) {
  const std::string* first = Find(known, 0, 0);
  const std::string* second = Find(known, 1, 0);
  if (first == nullptr || second == nullptr) return std::nullopt;
  const CutPath from = Cut(*first);
  const CutPath to = Cut(*second);
  if (from.texts != to.texts) return std::nullopt;
  std::vector<std::int64_t> steps;
  for (std::size_t i = 0; i < from.numbers.size(); ++i) {
    steps.push_back(ValueOf(to.numbers[i]) - ValueOf(from.numbers[i]));
  }
  return steps;
}

std::optional<std::string> BySteps(const std::vector<KnownPath>& known, const StreamSpot& spot) {
  const auto steps = Steps(known);
  const std::string* start = Find(known, 0, spot.place);
  if (!steps || start == nullptr) return std::nullopt;
  const CutPath cut = Cut(*start);
  if (cut.numbers.size() != steps->size()) return std::nullopt;
  std::string path = cut.texts.front();
  for (std::size_t i = 0; i < cut.numbers.size(); ++i) {
    const std::int64_t value = ValueOf(cut.numbers[i]) + (*steps)[i] * spot.channel;
    if (value < 0) return std::nullopt;
    path += Written(value, cut.numbers[i]) + cut.texts[i + 1];
  }
  return path;
}

const StreamSpot* SpotOf(const std::vector<KnownPath>& known, const std::string* path) {
  const auto found = std::ranges::find_if(known, [&](const KnownPath& one) { return &one.path == path; });
  return found == known.end() ? nullptr : &found->spot;
}

std::optional<std::string> ByToken(const std::vector<KnownPath>& known, const StreamSpot& spot) {
  const std::string* start = Find(known, 0, spot.place);
  const StreamSpot* first = SpotOf(known, start);
  if (first == nullptr || first->token.empty()) return std::nullopt;
  const std::size_t at = start->rfind(first->token);
  if (at == std::string::npos) return std::nullopt;
  return std::string(*start).replace(at, first->token.size(), spot.token);
}

}  // namespace

std::optional<std::string> PathByPattern(const std::vector<KnownPath>& known, const StreamSpot& spot) {
  for (const auto make : {ByToken, BySteps}) {
    const bool fits =
        std::ranges::all_of(known, [&](const KnownPath& one) { return make(known, one.spot) == one.path; });
    if (fits) return make(known, spot);
  }
  return std::nullopt;
}

}  // namespace recorder::find
