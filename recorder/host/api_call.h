#pragma once

#include <json/json.h>

#include <cstddef>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>

#include "platform/webapi.h"
#include "recorder/host/module_library.h"
#include "recorder/host/output_capture.h"
#include "recorder/utility/rung_times.h"

namespace recorder {

/// A request as the module gets it.
struct ApiCall {
  const ModuleMethod* method = nullptr;
  Json::Value params{Json::objectValue};
  std::map<std::string, std::string> cookies;
  bool isAuthorized = false;
  std::function<void()> whenLoginTaken = {};  ///< called once a camera has taken a login
};

/// What became of a call.
struct ApiAnswer {
  enum class Kind {
    kJson,          ///< `json` is the answer, success or error, on one line
    kRaw,           ///< `raw` is a CGI answer that the module wrote to standard output, header lines first
    kBadParameter,  ///< the parameter `parameter` could not be converted; `reason` says why
    kException,     ///< another exception came out of the module; `reason` is its text
    kNone,          ///< the module answered nothing
  };
  Kind kind = Kind::kNone;
  std::string json = {};
  std::string raw = {};
  std::string parameter = {};
  std::string reason = {};
  std::string causes = {};    ///< what the header "Recorder-Cause" says (cause_header.h); "" for no such header
  bool hasSentLogin = false;  ///< a login went out to a camera; work of other threads is not in it
  RungTimes rungs = {};       ///< of a call that went to its end; work of other threads is not in it
};

/// Runs one call of the module on this thread, inside a request scope of its own. While it runs, the process's standard
/// output is `output`'s, so no other thread may write there. Throws std::runtime_error when that cannot be had.
ApiAnswer RunCall(const ApiCall& call, OutputCapture& output);

/// The same with standard output given back at the end.
ApiAnswer RunCall(const ApiCall& call);

/// The methods that contact no camera.
std::span<const std::string_view> MethodsWithoutCamera();
bool ContactsNoCamera(std::string_view method);

/// The methods that take a list of cameras, and so a larger body than all others.
std::span<const std::string_view> MethodsWithList();
bool TakesList(std::string_view method);

/// What the module answers whom it does not admit.
ApiAnswer NotAdmitted();

}  // namespace recorder
