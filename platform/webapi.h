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
  ~APIRequest();
  APIRequest(const APIRequest&) = delete;
  APIRequest& operator=(const APIRequest&) = delete;

  /// The parameter `key`, or `defaultValue` when the request has none. A JSON null that was sent is a parameter.
  Json::Value GetParam(const std::string& key, const Json::Value& defaultValue) const;
  /// Name of the API method that the request is for.
  std::string GetAPIMethod() const;
  /// The HTTP cookie `name`, or `defaultValue` when the request has none.
  std::string GetCookie(const std::string& name, const std::string& defaultValue) const;
  /// True when the framework has authorised the caller as a logged-in user.
  bool IsAuthorized() const;

 private:
  Impl* impl;
};

/// Where the answer goes. A later call replaces an earlier one; with none, nothing was answered.
class APIResponse {
 public:
  struct Impl;
  explicit APIResponse(Impl* impl);  ///< `impl` stays the framework's own and outlives this object
  ~APIResponse();
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
