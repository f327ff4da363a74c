#include "recorder/utility/whole_address.h"

#include "recorder/utility/text.h"

namespace recorder {

std::optional<std::string_view> BehindScheme(std::string_view path) {
  constexpr std::string_view kEnd = "://";
  const std::size_t end = path.find(kEnd);
  const bool isWhole =
      end != std::string_view::npos && end > 0 && path.substr(0, end).find_first_of("/?#") == std::string_view::npos;
  return isWhole ? std::optional(path.substr(end + kEnd.size())) : std::nullopt;
}

bool HoldsLogin(std::string_view path) {
  const auto rest = BehindScheme(Trimmed(path));
  return rest && rest->substr(0, rest->find_first_of("/?#")).find('@') != std::string_view::npos;
}

}  // namespace recorder
