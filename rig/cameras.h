#pragma once

#include <json/json.h>

#include <array>
#include <string>

#include "rig/recorder.h"

// Configurations of simulated cameras, requests for them, and what their answers hold.

namespace rig {

inline constexpr char kSecret[] = "s3cret, with \"quotes\" & blanks";
inline constexpr char kFakePass[] = "[stored-password-6f1e0b9c42d7]";

/// A camera with user "admin" and password kSecret; Digest with MD5 unless `more` says otherwise.
inline Json::Value Camera(const std::string& name, const Json::Value& more = Json::Value(Json::objectValue)) {
  Json::Value camera = more;
  camera["name"] = name;
  camera["password"] = kSecret;
  if (!camera.isMember("login")) camera["login"] = "digest-md5";
  return camera;
}

inline Json::Value Faulty(const std::string& name, const std::string& fault) {
  Json::Value camera;
  camera["fault"] = fault;
  return Camera(name, camera);
}

inline Json::Value List(std::initializer_list<Json::Value> items) {
  Json::Value list(Json::arrayValue);
  for (const Json::Value& item : items) list.append(item);
  return list;
}

/// One row of a list of cameras.
inline Json::Value BatchRow(const std::string& id, int port, const std::string& password,
                            const std::string& cameraModel = "Simcam RTSP-H264") {
  Json::Value row;
  row["tmpId"] = id;
  row["name"] = "camera " + id;
  row["ip"] = "127.0.0.1";
  row["port"] = port;
  row["username"] = "admin";
  row["password"] = password;
  row["vendor"] = cameraModel.substr(0, cameraModel.find(' '));
  row["model"] = cameraModel.substr(cameraModel.find(' ') + 1);
  return row;
}

inline Json::Value Batch(const Json::Value& rows) {
  Json::Value params;
  params["camList"] = rows;
  return params;
}

/// The methods that contact a camera.
inline constexpr std::array kCameraMethods = {"CameraTest", "CamBatAddVerify", "CamCapRemote", "GetSnapshot",
                                              "CamCapUserDefineReso"};

/// The parameters of all these methods at once, a list of that one camera included: each method takes those it knows.
inline Json::Value CameraParams(int port, const std::string& password,
                                const std::string& cameraModel = "Simcam RTSP-H264") {
  const Json::Value row = BatchRow("1", port, password, cameraModel);
  Json::Value params;
  params["camIP"] = row["ip"];
  params["camPort"] = port;
  for (const char* user : {"camUser", "camUserName"}) params[user] = row["username"];
  for (const char* name : {"camPass", "camPassword", "camPassWord"}) params[name] = password;
  for (const char* name : {"vendor", "model"}) params[name] = row[name];
  params["camModel"] = cameraModel;
  params["camChannel"] = "1";
  params["camCapCmd"] = 1;
  params["jsonResponse"] = true;
  params["camList"] = List({row});
  return params;
}

inline bool IsJpeg(const std::string& bytes) {
  return bytes.starts_with("\xFF\xD8\xFF") && bytes.ends_with("\xFF\xD9");
}

/// The picture of an answer in JSON; "" when it is the default one.
inline std::string PictureOf(const Answer& answer) {
  const std::string picture = DecodeBase64(answer.json["data"]["img"].asString());
  return IsJpeg(picture) ? picture : "";
}

/// The error code in a row of a list's answer.
inline int RowCode(const Json::Value& row) { return row["result"] == 0 ? 0 : row["errinfo"].get("code", -1).asInt(); }

/// The error code in an answer of `method`, for the first camera of a list; -1 for the default picture.
inline int CodeIn(const Answer& answer, const std::string& method) {
  if (method == "GetSnapshot") return PictureOf(answer).empty() ? -1 : 0;
  if (method != "CamBatAddVerify") return answer.Code();
  return RowCode(answer.json["data"]["resultList"][0]);
}

/// The same of the answer to a request.
inline int CodeOf(const TestRecorder& recorder, const std::string& method, const Json::Value& params) {
  return CodeIn(recorder.Post(method, params), method);
}

}  // namespace rig
