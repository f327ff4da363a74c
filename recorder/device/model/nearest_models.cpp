#include "recorder/device/model/nearest_models.h"

#include <algorithm>
#include <numeric>
#include <sstream>
#include <string_view>
#include <tuple>
#include <utility>

#include "recorder/utility/text.h"

namespace recorder {

namespace {

constexpr std::size_t kLongestWanted = 256;  // bytes; vendor and model have 64 each in a model file

/// How many signs must be changed, put in or left out to make one text of the other (Levenshtein).
std::size_t Distance(std::string_view one, std::string_view other) {
  std::vector<std::size_t> row(other.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 0; i < one.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < other.size(); ++j) {
      const std::size_t swap = diagonal + (one[i] == other[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({row[j] + 1, diagonal + 1, swap});
    }
  }
  return row.back();
}

/// How unlike `wanted` a model is: those of the vendor that is named come first, and then the label counts.
using Unlikeness = std::tuple<bool, std::size_t, std::string>;

Unlikeness UnlikenessOf(const ModelName& name, const std::string& wanted) {
  const std::string vendor = LowerCase(name.vendor);
  const bool isOfVendor = wanted.starts_with(vendor + " ");
  const bool namesVendorAlone = wanted.find(' ') == std::string::npos;
  const std::string label = LabelOf(name);
  return {!isOfVendor, Distance(wanted, namesVendorAlone ? vendor : PlainName(label)), label};
}

}  // namespace

std::string LabelOf(const ModelName& name) { return name.model.empty() ? name.vendor : name.vendor + " " + name.model; }

std::string PlainName(const std::string& text) {
  std::istringstream words(LowerCase(text));
  std::string plain;
  for (std::string word; words >> word;) plain += (plain.empty() ? "" : " ") + word;
  return plain;
}

std::vector<ModelName> NearestModels(const std::vector<ModelName>& models, const std::string& wanted,
                                     std::size_t most) {
  if (wanted.size() > kLongestWanted) return {};
  std::vector<std::pair<Unlikeness, const ModelName*>> byUnlikeness;
  byUnlikeness.reserve(models.size());
  for (const ModelName& name : models) byUnlikeness.emplace_back(UnlikenessOf(name, wanted), &name);
  std::sort(byUnlikeness.begin(), byUnlikeness.end());
  byUnlikeness.resize(std::min(most, byUnlikeness.size()));
  std::vector<ModelName> nearest;
  nearest.reserve(byUnlikeness.size());
  for (const auto& [unlikeness, name] : byUnlikeness) nearest.push_back(*name);
  return nearest;
}

}  // namespace recorder
