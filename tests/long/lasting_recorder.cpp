#include "tests/long/lasting_recorder.h"

#include <string>
#include <vector>

namespace long_tests {

using namespace rig;

LastingRecorder::LastingRecorder(const TestRecorder::Options& options)
    : workers_(options.workers), isWatching_(options.watchSeconds > 0), first_(options) {}

void LastingRecorder::StartAgain() {
  again_.reset();
  const std::filesystem::path folder = first_.StateFolder().parent_path();
  std::vector<std::string> command = {std::filesystem::path(PROGRAM_FOLDER) / "recorderctl",
                                      "--config",
                                      first_.ConfigFile(),
                                      "serve",
                                      "--workers",
                                      std::to_string(workers_),
                                      "--port",
                                      std::to_string(first_.Port())};
  if (!isWatching_) command.emplace_back("--no-watch");
  again_ = std::make_unique<Process>(std::move(command), folder / "log");
  again_->ReadLine();
}

}  // namespace long_tests
