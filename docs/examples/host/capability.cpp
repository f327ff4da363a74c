// The next step: what CamCap asks of a recorder, with one function that the module calls through an object.

#include <cstdarg>
#include <cstdio>

#include "platform/device.h"

using std::string;

struct CamCapHandler::Impl : DPObjectBase {
  /// 0 when there is such a model.
  int Load(const string& vendor, const string& model, const string& channel) {
    if (vendor != "Example" || model != "One") return -1;
    capability["id"] = vendor + " " + model;
    capability["ChanlList"].append(channel);
    return 0;
  }

  Json::Value capability;
};

namespace {

/// How the module calls Load: it knows this type by its signature alone.
struct LoadCall : MemFuncInterface<int, int, string, string, string, string> {
  int Invoke(DPObjectBase* object, int /*source*/, string vendor, string model, string channel,
             string /*file*/) override {
    return static_cast<CamCapHandler::Impl*>(object)->Load(vendor, model, channel);
  }
};

}  // namespace

CamCapHandler::CamCapHandler() : impl(std::make_unique<Impl>()) {
  static LoadCall call;
  LoadCapability.wrapper = &call;
  LoadCapability.object = impl.get();
  LoadCapability.name = "LoadCapability";
}
CamCapHandler::~CamCapHandler() = default;

int GetCamCap(string /*vendor*/, string /*model*/, CamCapHandler& handler, Json::Value& capability) {
  if (handler.impl->capability.isNull()) return -1;
  capability = handler.impl->capability;
  return 0;
}

void VTPrintf(LOG_TYPE /*type*/, const char* /*category1*/, const char* /*category2*/, const char* file, int line,
              const char* function, const char* format, ...) {
  std::fprintf(stderr, "%s:%d %s: ", file, line, function);
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stderr, format, arguments);
  va_end(arguments);
}
