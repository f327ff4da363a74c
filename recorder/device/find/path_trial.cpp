#include "recorder/device/find/path_trial.h"

#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include "recorder/device/check/http_probe.h"
#include "recorder/device/find/model_paths.h"
#include "recorder/net/http/http_session.h"

namespace recorder::find {
namespace {

/// Tries paths one after the other. What returns false says that nothing more is to be tried.
class PathTrial {
 public:
  explicit PathTrial(StreamSearch& search) : search_(search) {}

  bool Try(std::span<const PathToTry> paths) {
    for (const PortAnswer& answer : search_.answers) {
      const bool isOpen = answer.port.speaksRtsp && answer.rtsp != Outcome::kLoginRefused;
      if (isOpen && !paths.empty() && !TryAt(answer, paths)) return false;
    }
    return TryOverHttp(paths);
  }

 private:
  bool TryAt(const PortAnswer& answer, std::span<const PathToTry> paths) {
    PathHunt& hunt = search_.HuntAt(answer.port);
    for (const PathToTry& path : paths) {
      if (path.stream->isOverHttp) continue;
      if (answer.rtsp == Outcome::kOk) return TakeUnsure(path, answer.port);
      const Outcome outcome = hunt.Ask(path.path);
      if (outcome == Outcome::kOk) return TakeFound(path, answer.port, hunt.Codec());
      if (outcome == Outcome::kNoVideo || outcome == Outcome::kEncryptedStream) search_.useless = outcome;
      if (!MayTryOn(outcome)) return false;
    }
    return true;
  }

  bool MayTryOn(Outcome outcome) {
    const bool isSpent = search_.budget.Left() == 0;
    if (isSpent) search_.Warn(FindWarning::kEnded);
    if (search_.IsRefusal(outcome) || (!isSpent && EndsConversation(outcome))) return search_.EndWith(outcome);
    search_.TakeLogin();
    return !isSpent;
  }

  bool TakeFound(const PathToTry& path, const FoundPort& port, const std::string& codec) {
    ListedStream stream = StreamAt(path, port);
    stream.codec = codec;
    stream.isAsked = true;
    search_.TakeLogin();
    TakeModel(path, stream);
    return false;
  }

  /// The camera says yes to every path.
  bool TakeUnsure(const PathToTry& path, const FoundPort& port) {
    search_.Warn(FindWarning::kAnyPath);
    TakeModel(path, StreamAt(path, port));
    return false;
  }

  /// A path is no proof of its maker, since others have the same: a model's other addresses get the password, too.
  void TakeModel(const PathToTry& path, const ListedStream& stream) {
    result_.streams = StreamsOfModel(path, stream);
    result_.modelVendor = path.model->vendor;
    result_.modelName = path.model->name;
    const auto& port = path.stream->from.port;
    result_.isPortOfModel = port == stream.port;
    const bool isElsewhere = port && !result_.isPortOfModel;  // it would be looked for there
    const bool isNamed = std::ranges::find(search_.namedVendors, path.model->vendor) != search_.namedVendors.end();
    const bool isUsual = path.stream == &path.model->streams.front();
    if (isElsewhere || !isUsual || !isNamed) result_.modelVendor.clear();
    const auto web = std::ranges::find_if(result_.ports, &FoundPort::speaksHttp);
    if (web != result_.ports.end()) result_.snapshot = SnapshotOfModel(*path.model, web->number);
  }

  bool TryOverHttp(std::span<const PathToTry> paths) {
    if (!search_.mayLogInOverHttp) return true;
    for (const PortAnswer& answer : search_.answers) {
      for (const PathToTry& path : paths) {
        if (!path.stream->isOverHttp || !answer.port.speaksHttp) continue;
        search_.hunt.reset();
        const Outcome outcome = ProbeHttpStream(search_.CameraAt(answer.port), path.path);
        if (outcome == Outcome::kOk) return TakeFound(path, answer.port, path.stream->codec);
        if (!MayTryOn(outcome)) return false;
      }
    }
    return true;
  }

  StreamSearch& search_;
  FindResult& result_ = search_.result;
};

}  // namespace

void TryPaths(StreamSearch& search, const ModelCatalog& catalog) {
  const std::vector<PathToTry> paths = PathsToTry(catalog, search.vendors);
  const auto others = std::ranges::find_if(paths, [&](const PathToTry& path) {
    return std::ranges::find(search.vendors, path.model->vendor) == search.vendors.end();
  });
  PathTrial trial(search);
  if (trial.Try({paths.begin(), others})) trial.Try({others, paths.end()});
}

}  // namespace recorder::find
