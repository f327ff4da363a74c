#include "recorder/device/find/maker.h"

#include <algorithm>
#include <iterator>

#include "recorder/utility/text.h"

namespace recorder::find {
namespace {

/// How servers begin their names, and realms, without naming their maker. Others build on the same parts, so this only
/// says whose paths are tried first.
struct Sign {
  std::string_view start;
  std::string_view vendor;
};
constexpr Sign kSigns[] = {
    {"Login to ", "Dahua"},
    {"App-webs/", "Hikvision"},
    {"DNVRS-Webs", "Hikvision"},
    {"BC Streaming Media", "Reolink"},
};

}  // namespace

MakerGuess MakerIn(std::string_view said, const std::vector<std::string>& vendors) {
  const std::string text = LowerCase(said);
  std::string named;  // the longest, since the name of one may begin that of another
  for (const std::string& vendor : vendors) {
    if (vendor.size() > named.size() && HoldsWord(text, LowerCase(vendor))) named = vendor;
  }
  if (!named.empty()) return {named, true};
  const auto sign =
      std::ranges::find_if(kSigns, [&](const Sign& one) { return StartsWithIgnoreCase(said, one.start); });
  const bool isKnown = sign != std::end(kSigns) && std::ranges::find(vendors, sign->vendor) != vendors.end();
  return isKnown ? MakerGuess{std::string(sign->vendor), false} : MakerGuess{};
}

}  // namespace recorder::find
