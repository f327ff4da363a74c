#pragma once

#include <json/json.h>

#include <string>

// What the module sees of the recorder's web-API framework: one request and one response an API call. Both are built
// and owned by the framework, live for that call, and are used by the thread that the framework calls the module on.

namespace NORV {

/// One parsed web request.
class APIRequest {
 public:
  struct Impl;
  explicit APIRequest(Impl* impl);  ///< `impl` stays the framework's own and outlives this object
  APIRequest(const APIRequest&) = delete;
  APIRequest& operator=(const APIRequest&) = delete;

  /// What the caller sent as `key`; without one, `defaultValue`. A JSON null that was sent is a parameter.
  Json::Value GetParam(const std::string& key, const Json::Value& defaultValue) const;
  /// Name of the API method that the request is for.
  std::string GetAPIMethod() const;
  /// Value of the HTTP cookie `name`; without one, `defaultValue`.
  std::string GetCookie(const std::string& name, const std::string& defaultValue) const;
  /// True for a caller with a login of this recorder.
  bool IsAuthorized() const;

 private:
  Impl* impl;
};

/// Where the answer goes. A later call replaces an earlier one; with none, nothing was answered.
class APIResponse {
 public:
  struct Impl;
  explicit APIResponse(Impl* impl);  ///< `impl` stays the framework's own and outlives this object
  APIResponse(const APIResponse&) = delete;
  APIResponse& operator=(const APIResponse&) = delete;

  /// Answers success with `data`.
  void SetSuccess(const Json::Value& data);
  /// Answers error `code`; `data` is an object of named error parameters, or null.
  void SetError(int code, const Json::Value& data);

 private:
  Impl* impl;
};

}  // namespace NORV
