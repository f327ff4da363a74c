#pragma once

#include <json/json.h>

#include <list>
#include <string>

#include "platform/webapi.h"

/// Name that the module's log lines carry as their source.
inline constexpr char kLogSource[] = "cameracap";

/// The vendor of cameras that a user describes by address and path, and those whose cameras are asked what they can do.
inline constexpr char kVendorUser[] = "User";
inline constexpr char kVendorOnvif[] = "ONVIF";
inline constexpr char kVendorPsia[] = "PSIA";

/// Reads request parameters as values of a type. A value that JsonCpp cannot convert throws Json::LogicError.
class ParameterReader {
 public:
  explicit ParameterReader(const NORV::APIRequest& apiRequest) : request(apiRequest) {}

  std::string String(const char* key, const Json::Value& absent = {}) const {
    return request.GetParam(key, absent).asString();
  }
  int Int(const char* key, const Json::Value& absent = {}) const { return request.GetParam(key, absent).asInt(); }
  bool Bool(const char* key, const Json::Value& absent = {}) const { return request.GetParam(key, absent).asBool(); }

 private:
  const NORV::APIRequest& request;
};

/// What a camera model is known by; both empty when the caller named none.
struct VendorAndModel {
  std::string vendor;
  std::string model;
};

/// Takes "vendor model" apart at its first blank.
VendorAndModel SplitCameraModel(const std::string& cameraModel);

/// The password to use: the stored one of that camera when `password` is the placeholder, else `password` itself.
std::string ResolvePassword(const std::string& password, int camId, const std::string& vendor, const std::string& model,
                            const std::string& channel);

/// True when `channels` lists `channel`.
bool HasChannel(const std::list<std::string>& channels, const std::string& channel);
