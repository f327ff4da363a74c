#include "recorder/ctl/camera/headings.h"

#include <json/json.h>

#include <map>
#include <memory>
#include <stdexcept>
#include <vector>

#include "recorder/utility/text.h"

namespace recorder {

extern const char kHeadingsText[];  // page/headings.json
extern const std::size_t kHeadingsSize;

namespace {

struct Headings {
  std::vector<std::pair<std::string, std::string>> written;  ///< member and heading
  std::map<std::string, std::string> members;                ///< by plain heading
};

Json::Value Parse() {
  Json::Value rows;
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  std::string mistake;
  if (!reader->parse(kHeadingsText, kHeadingsText + kHeadingsSize, &rows, &mistake)) throw std::logic_error(mistake);
  return rows;
}

Headings Read() {
  Headings headings;
  for (const Json::Value& row : Parse()) {
    const std::string member = row["member"].asString();
    const std::string heading = row["heading"].asString();
    if (!member.empty()) headings.written.emplace_back(member, heading);
    headings.members[PlainHeading(heading)] = member;
    for (const Json::Value& other : row["alsoKnownAs"]) headings.members[PlainHeading(other.asString())] = member;
  }
  return headings;
}

const Headings& All() {
  static const Headings headings = Read();
  return headings;
}

}  // namespace

std::string PlainHeading(std::string_view heading) {
  std::string plain = LowerCase(heading);
  std::erase_if(plain, [](char c) { return std::string_view(" \t\r\n_-").find(c) != std::string_view::npos; });
  return plain;
}

std::optional<std::string> MemberOf(std::string_view heading) {
  const auto found = All().members.find(PlainHeading(heading));
  return found == All().members.end() ? std::nullopt : std::optional(found->second);
}

const std::string& HeadingOf(const std::string& member) {
  for (const auto& [known, heading] : All().written) {
    if (known == member) return heading;
  }
  throw std::logic_error("no column " + member);
}

std::string AllHeadings() {
  std::string all;
  for (const auto& [member, heading] : All().written) all += (all.empty() ? "" : ", ") + heading;
  return all;
}

}  // namespace recorder
