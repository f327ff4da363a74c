#include "recorder/device/find/find_json.h"

#include <array>
#include <cstddef>

#include "recorder/device/find/stored_as.h"

namespace recorder {
namespace {

constexpr std::array<std::string_view, 5> kLogins = {"notTried", "notNeeded", "accepted", "refused", "onvifOthers"};
constexpr std::array<std::string_view, 4> kWarnings = {"anyPath", "clockWrong", "onvifOthers", "ended"};
constexpr std::array<std::string_view, 4> kSteps = {"ports", "login", "onvif", "paths"};

Json::Value Text(std::string_view text) { return {text.data(), text.data() + text.size()}; }

Json::Value Json(const Fact& fact) {
  Json::Value json(Json::objectValue);
  json["value"] = fact.value;
  json["from"] = fact.from;
  return json;
}

Json::Value Json(const FoundPort& port) {
  Json::Value json(Json::objectValue);
  json["port"] = port.number;
  json["speaks"] = Json::Value(Json::arrayValue);
  if (port.speaksRtsp) json["speaks"].append("RTSP");
  if (port.speaksHttp) json["speaks"].append(port.isTls ? "HTTPS" : "HTTP");
  if (port.speaksOnvif) json["speaks"].append("ONVIF");
  json["server"] = port.server;
  json["realm"] = port.realm;
  return json;
}

Json::Value Json(const StoredAs& stored) {
  Json::Value json(Json::objectValue);
  json["vendor"] = stored.vendor;
  json["model"] = stored.model;
  json["port"] = stored.port;
  json["channel"] = stored.channel;
  json["sourcePath"] = stored.sourcePath;
  return json;
}

Json::Value Json(const ListedStream& stream) {
  Json::Value json(Json::objectValue);
  json["protocol"] = stream.isOverHttp ? "HTTP" : "RTSP";
  json["port"] = stream.port;
  json["tls"] = stream.isTls;
  json["path"] = stream.path;
  json["channel"] = stream.channel;
  json["name"] = stream.name;
  json["codec"] = stream.codec;
  json["width"] = stream.width;
  json["height"] = stream.height;
  json["frameRate"] = stream.frameRate;
  json["profile"] = stream.profile;
  json["from"] = stream.from;
  json["asked"] = stream.isAsked;
  return json;
}

Json::Value Json(const ListedSnapshot& snapshot) {
  Json::Value json(Json::objectValue);
  json["path"] = snapshot.path;
  json["port"] = snapshot.port;
  json["tls"] = snapshot.isTls;
  json["from"] = snapshot.from;
  return json;
}

Json::Value JsonOfLists(const std::string& host, const FindResult& result) {
  Json::Value json(Json::objectValue);
  for (const char* list : {"ports", "streams", "warnings"}) json[list] = Json::Value(Json::arrayValue);
  for (const FoundPort& port : result.ports) json["ports"].append(Json(port));
  for (const ListedStream& stream : result.streams) {
    json["streams"].append(Json(stream))["storeAs"] = Json(StoreAs(host, result, stream));
  }
  for (const FindWarning warning : result.warnings) json["warnings"].append(Text(NameOf(warning)));
  return json;
}

}  // namespace

std::string_view NameOf(FindLogin login) { return kLogins.at(static_cast<std::size_t>(login)); }
std::string_view NameOf(FindWarning warning) { return kWarnings.at(static_cast<std::size_t>(warning)); }
std::string_view NameOf(FindStep step) { return kSteps.at(static_cast<std::size_t>(step)); }

Json::Value StepJson(FindStep step, const FindResult& soFar) {
  Json::Value json(Json::objectValue);
  json["step"] = Text(NameOf(step));
  json["ports"] = Json::Value(Json::arrayValue);
  for (const FoundPort& port : soFar.ports) json["ports"].append(Json(port));
  json["login"] = Text(NameOf(soFar.login));
  json["maker"] = Json(soFar.maker);
  json["streams"] = static_cast<Json::UInt64>(soFar.streams.size());
  json["requests"] = soFar.requests;
  return json;
}

Json::Value FindJson(const std::string& host, const FindResult& result) {
  Json::Value json = JsonOfLists(host, result);
  json["host"] = host;
  json["cause"] = Text(NameOf(result.outcome));
  json["login"] = Text(NameOf(result.login));
  json["maker"] = Json(result.maker);
  json["model"] = Json(result.model);
  json["firmware"] = Json(result.firmware);
  json["serial"] = Json(result.serial);
  json["snapshot"] = result.snapshot ? Json(*result.snapshot) : Json::Value();
  json["clockOffset"] = result.clockOffset ? Json::Value(Json::Int64{result.clockOffset->count()}) : Json::Value();
  json["requests"] = result.requests;
  json["seconds"] = static_cast<double>(result.duration.count()) / 1000;
  return json;
}

}  // namespace recorder
