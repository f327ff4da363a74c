#include "recorder/own/camera_parts.h"

#include "recorder/net/source_path.h"
#include "recorder/own/typed_members.h"
#include "recorder/utility/clock.h"

namespace recorder {

namespace {

constexpr std::string_view kStreamMembers[] = {"name", "address", "vendor", "model", "port", "channel", "sourcePath"};
constexpr std::string_view kFactMembers[] = {"stream", "name", "value", "from", "at"};

/// Reads each entry of a list with `read`; what that refuses is refused as a mistake in the list.
template <class Part, class Read>
std::vector<Part> PartsIn(const Json::Value& list, const char* member, std::span<const std::string_view> known,
                          Read read) {
  if (!list.isArray()) throw BadMember(member, "must be a list");
  std::vector<Part> parts;
  for (const Json::Value& entry : list) {
    if (!entry.isObject()) throw BadMember(member, "must be a list of objects");
    RefuseOtherMembers(entry, known, member);
    try {
      parts.push_back(read(entry));
    } catch (const HttpError& error) {
      throw BadMember(member, error.what());
    }
  }
  return parts;
}

void RefuseAddress(const std::string& address, const std::string& host) {
  CameraAddress place{host, kRtspPort, "", ""};
  std::string path = address;
  const bool isWhole = TakeApart(path, place) == Outcome::kOk && path != address;
  if (!isWhole) throw BadMember("address", "is no whole address of the camera, such as rtsp://" + host + ":554/path");
}

CameraStream StreamOf(const Json::Value& entry, const std::string& host) {
  CameraStream stream;
  SetText(entry, "name", stream.name);
  SetPath(entry, "address", stream.address);
  SetText(entry, "vendor", stream.vendor);
  SetText(entry, "model", stream.model);
  SetText(entry, "channel", stream.channel);
  SetPath(entry, "sourcePath", stream.sourcePath);
  SetNumber(entry, "port", 1, kLargestPort, stream.port);
  if (!stream.address.empty()) RefuseAddress(stream.address, host);
  return stream;
}

CameraFact FactOf(const Json::Value& entry) {
  CameraFact fact;
  fact.at = SecondsNow();
  SetText(entry, "stream", fact.stream);
  SetText(entry, "name", fact.name);
  SetText(entry, "value", fact.value);
  SetText(entry, "from", fact.from);
  if (fact.from.empty()) throw BadMember("from", "missing");
  const Json::Value& at = entry["at"];
  if (!at.isNull() && (!at.isInt64() || at.asInt64() < 0)) throw BadMember("at", "must be seconds since 1970");
  if (!at.isNull()) fact.at = at.asInt64();
  return fact;
}

}  // namespace

std::vector<CameraStream> StreamsIn(const Json::Value& list, const std::string& host) {
  return PartsIn<CameraStream>(list, "streams", kStreamMembers,
                               [&](const Json::Value& entry) { return StreamOf(entry, host); });
}

std::vector<CameraFact> FactsIn(const Json::Value& list) {
  return PartsIn<CameraFact>(list, "facts", kFactMembers, &FactOf);
}

}  // namespace recorder
