#pragma once

#include <json/value.h>

#include <span>
#include <string>
#include <string_view>

#include "recorder/http/http_request.h"

namespace recorder {

// Members of JSON that a client has sent. What is wrong with one is a refusal that names it: 400 with
// {"member": "port"}.

/// The refusal of a member, for the reason `text`.
HttpError BadMember(const std::string& member, const std::string& text);

/// Refuses an object with other members than `known`. `within`: the member that it stands in, which is named then; ""
/// for none.
void RefuseOtherMembers(const Json::Value& object, std::span<const std::string_view> known, const std::string& within);

// What is not there changes nothing.
void SetText(const Json::Value& object, const char* member, std::string& text);
void SetNumber(const Json::Value& object, const char* member, int least, int most, int& number);

/// A path or a whole address, in which no login may stand: it would be shown, and go where none belongs.
void SetPath(const Json::Value& object, const char* member, std::string& path);

/// False where it is not there.
bool FlagIn(const Json::Value& object, const char* member);

}  // namespace recorder
