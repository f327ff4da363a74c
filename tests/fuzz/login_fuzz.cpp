#include <string>
#include <vector>

#include "recorder/net/login/login.h"
#include "recorder/utility/text.h"
#include "tests/fuzz/fuzz.h"

// WWW-Authenticate values, one a line, and what is answered to the one that is chosen.

namespace recorder {

void RunInput(std::string_view input) {
  constexpr const char* kPassword = "Circle_of-Life";
  if (input.find(kPassword) != std::string_view::npos) return;  // a camera that knows it gets it back
  std::vector<std::string_view> values;
  while (!input.empty()) values.push_back(TakeUntil(input, '\n'));
  const auto challenges = ParseChallenges(values);
  const LoginChallenge* chosen = StrongestChallenge(challenges);
  if (chosen == nullptr) return;
  Require(chosen->method != LoginMethod::kNone);
  const std::string answer = AuthorizationValue(*chosen, "admin", kPassword, "DESCRIBE", "/live", {"nonce", 1});
  Require(answer.starts_with(chosen->isDigest ? "Digest username=\"admin\"" : "Basic "));
  Require(answer.find('\n') == std::string::npos && answer.find(kPassword) == std::string::npos);
}

}  // namespace recorder
