#include "simcam/camera_log.h"

#include <json/json.h>

#include <algorithm>

namespace simcam {
namespace {

constexpr size_t kLinesKept = 200;

}  // namespace

void CameraLog::CountConnection(int change) {
  const std::scoped_lock lock(mutex_);
  connections_ += change;
}

void CameraLog::CountOpen(int connections) {
  const std::scoped_lock lock(mutex_);
  mostConnections_ = std::max(mostConnections_, connections);
}

void CameraLog::CountRequest(const Request& request) {
  CountRequest(request.version.substr(0, request.version.find('/')), request.method, request.Path(),
               !request.Header("Authorization").empty());
}

void CameraLog::CountRequest(const std::string& protocol, const std::string& method, const std::string& path,
                             bool withLogin, const std::string& action) {
  const std::scoped_lock lock(mutex_);
  ++requestCount_;
  lines_.push_back({protocol, method, path, withLogin, action});
  if (lines_.size() > kLinesKept) lines_.pop_front();
}

void CameraLog::CountLogin(bool accepted) {
  const std::scoped_lock lock(mutex_);
  ++logins_;
  if (!accepted) ++refusedLogins_;
}

void CameraLog::CountRefused(const std::string& user) {
  const std::scoped_lock lock(mutex_);
  ++refusedUsers_[user];
}

void CameraLog::CountSession() {
  const std::scoped_lock lock(mutex_);
  ++sessions_;
}

void CameraLog::CountPli() {
  const std::scoped_lock lock(mutex_);
  ++pli_;
}

void CameraLog::TakeBitRate(int kbitPerSecond) {
  const std::scoped_lock lock(mutex_);
  bitRate_ = kbitPerSecond;
}

std::string CameraLog::ToJson() const {
  const std::scoped_lock lock(mutex_);
  Json::Value json;
  json["connections"] = connections_;
  json["mostConnections"] = mostConnections_;
  json["logins"] = logins_;
  json["refusedLogins"] = refusedLogins_;
  json["refusedUsers"] = Json::Value(Json::objectValue);
  for (const auto& [user, count] : refusedUsers_) json["refusedUsers"][user] = count;
  json["sessions"] = sessions_;
  json["pli"] = pli_;
  json["bitRate"] = bitRate_;
  json["requestCount"] = requestCount_;
  json["requests"] = Json::Value(Json::arrayValue);
  for (const Line& line : lines_) {
    Json::Value& item = json["requests"].append(Json::objectValue);
    item["protocol"] = line.protocol;
    item["method"] = line.method;
    item["path"] = line.path;
    item["login"] = line.withLogin;
    if (!line.action.empty()) item["action"] = line.action;
  }
  Json::StreamWriterBuilder writer;
  writer["indentation"] = "";
  return Json::writeString(writer, json) + "\n";
}

}  // namespace simcam
