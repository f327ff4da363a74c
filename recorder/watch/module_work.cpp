#include "recorder/watch/module_work.h"

#include <memory>
#include <stdexcept>

#include "recorder/host/api_call.h"

namespace recorder {

CheckWork ModuleWork(const ModuleLibrary& module) {
  return [&module, output = std::make_shared<OutputCapture>()](const CheckJob& job) {
    ApiCall call;
    call.method = module.Find(job.method);
    call.params = job.params;
    call.isAuthorized = true;  // whoever can read the records may ask
    if (call.method == nullptr) throw std::runtime_error("the module has no method " + job.method);
    const ApiAnswer answer = RunCall(call, *output);
    const bool isAnswered = answer.kind == ApiAnswer::Kind::kJson;
    return CheckAnswer{.kind = isAnswered ? CheckAnswer::Kind::kAnswered : CheckAnswer::Kind::kFailed,
                       .causes = answer.causes};
  };
}

}  // namespace recorder
