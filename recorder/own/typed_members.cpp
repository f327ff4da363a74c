#include "recorder/own/typed_members.h"

#include <algorithm>

#include "recorder/device/model/path_privacy.h"

namespace recorder {

HttpError BadMember(const std::string& member, const std::string& text) {
  return HttpError(400, member + ": " + text).With("member", member);
}

void RefuseOtherMembers(const Json::Value& object, std::span<const std::string_view> known, const std::string& within) {
  for (const std::string& member : object.getMemberNames()) {
    if (std::ranges::find(known, member) != known.end()) continue;
    if (within.empty()) throw BadMember(member, "is not known");
    throw BadMember(within, "have no member \"" + member + '"');
  }
}

void SetText(const Json::Value& object, const char* member, std::string& text) {
  if (!object.isMember(member)) return;
  if (!object[member].isString()) throw BadMember(member, "must be a text");
  text = object[member].asString();
}

void SetPath(const Json::Value& object, const char* member, std::string& path) {
  SetText(object, member, path);
  const bool holdsLogin = object.isMember(member) && !FindPathLogin(path).empty();
  if (holdsLogin) throw BadMember(member, "holds a login, which belongs into user and password");
}

void SetNumber(const Json::Value& object, const char* member, int least, int most, int& number) {
  if (!object.isMember(member)) return;
  const Json::Value& value = object[member];
  const bool isRight = value.isInt() && value.asInt() >= least && value.asInt() <= most;
  if (!isRight)
    throw BadMember(member, "must be a number from " + std::to_string(least) + " to " + std::to_string(most));
  number = value.asInt();
}

bool FlagIn(const Json::Value& object, const char* member) {
  if (!object.isMember(member)) return false;
  if (!object[member].isBool()) throw BadMember(member, "must be true or false");
  return object[member].asBool();
}

}  // namespace recorder
