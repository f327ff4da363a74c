#include "recorder/device/find/maker.h"

#include <algorithm>
#include <cstddef>

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

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); }

/// True when `word` stands in `text`, and not within another word. Both in lower case.
bool HoldsWord(std::string_view text, std::string_view word) {
  for (std::size_t at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1)) {
    const std::size_t end = at + word.size();
    const bool begins = at == 0 || !IsLetter(text[at - 1]);
    if (begins && (end == text.size() || !IsLetter(text[end]))) return true;
  }
  return false;
}

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
