#pragma once

#include <json/json.h>

#include <string>

// Configurations of simulated cameras, requests for them, and what their answers hold.

namespace end_to_end {

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

/// One row of a list of cameras, and the list.
inline Json::Value BatchRow(const std::string& id, int port, const std::string& password,
                            const std::string& model = "RTSP-H264") {
  Json::Value row;
  row["tmpId"] = id;
  row["name"] = "camera " + id;
  row["ip"] = "127.0.0.1";
  row["port"] = port;
  row["username"] = "admin";
  row["password"] = password;
  row["vendor"] = "Simcam";
  row["model"] = model;
  return row;
}

inline Json::Value Batch(const Json::Value& rows) {
  Json::Value params;
  params["camList"] = rows;
  return params;
}

/// Parameters of the camera methods, with the names that each has for them.
inline Json::Value TestParams(int port, const std::string& password,
                              const std::string& cameraModel = "Simcam RTSP-H264") {
  Json::Value params;
  params["camIP"] = "127.0.0.1";
  params["camPort"] = port;
  params["camUserName"] = "admin";
  params["camPassWord"] = password;
  params["camModel"] = cameraModel;
  params["camChannel"] = "1";
  return params;
}

inline Json::Value PictureParams(int port, const std::string& password,
                                 const std::string& cameraModel = "Simcam RTSP-H264") {
  Json::Value params = TestParams(port, "", cameraModel);
  params.removeMember("camPassWord");
  params["camPassword"] = password;
  params["jsonResponse"] = true;
  return params;
}

inline Json::Value SizeParams(int port, const std::string& password, const std::string& model = "RTSP-H264") {
  Json::Value params;
  params["camIP"] = "127.0.0.1";
  params["camPort"] = port;
  params["camUser"] = "admin";
  params["camPass"] = password;
  params["vendor"] = "Simcam";
  params["model"] = model;
  params["camChannel"] = "1";
  return params;
}

inline Json::Value RemoteParams(int port, const std::string& password, const std::string& model = "RTSP-H264") {
  Json::Value params = SizeParams(port, password, model);
  params["camCapCmd"] = 1;
  return params;
}

inline bool IsJpeg(const std::string& bytes) {
  return bytes.starts_with("\xFF\xD8\xFF") && bytes.ends_with("\xFF\xD9");
}

}  // namespace end_to_end
