#include "recorder/net/http/http_status.h"

#include <algorithm>
#include <array>
#include <utility>

#include "recorder/utility/translate.h"

namespace recorder {
namespace {

constexpr std::pair<long, Outcome> kStatusOutcomes[] = {
    {kHttpOk, Outcome::kOk},       {kHttpUnauthorized, Outcome::kLoginRefused},
    {403, Outcome::kLoginRefused}, {404, Outcome::kNoSuchStream},
    {410, Outcome::kNoSuchStream}, {429, Outcome::kBusy},
    {503, Outcome::kBusy},
};

}  // namespace

Outcome OutcomeOfStatus(long status) { return Translate(kStatusOutcomes, status, Outcome::kNotUnderstood); }

bool IsRedirect(long status) {
  constexpr std::array<long, 5> kRedirects{301, 302, 303, 307, 308};
  return std::find(kRedirects.begin(), kRedirects.end(), status) != kRedirects.end();
}

}  // namespace recorder
