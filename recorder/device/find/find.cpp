#include "recorder/device/find/find.h"

#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <utility>

#include "recorder/device/check/http_probe.h"
#include "recorder/device/find/maker.h"
#include "recorder/device/find/model_paths.h"
#include "recorder/device/find/onvif_questions.h"
#include "recorder/device/find/path_hunt.h"
#include "recorder/device/find/port_questions.h"
#include "recorder/net/http/http_session.h"
#include "recorder/request/request_budget.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/cause_table.h"

namespace recorder {
namespace find {
namespace {

constexpr int kMostFurtherPortRequests = 6;  // beside one a port
constexpr std::chrono::seconds kLongestPorts{3};
constexpr std::chrono::seconds kWrongClock{120};

std::chrono::milliseconds TimeUntil(Clock::time_point end) {
  return std::max(std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()), std::chrono::milliseconds(0));
}

std::vector<std::string> VendorsOf(const ModelCatalog& catalog) {
  std::vector<std::string> names;
  for (const VendorModels& vendor : catalog.vendors) names.push_back(vendor.vendor);
  return names;
}

/// Finds the streams of one camera, in steps. A step that returns false ends it.
class Finder {
 public:
  Finder(const FindRequest& request, const OnFindStep& onStep)
      : request_(request), onStep_(onStep), end_(begin_ + kLongestFind), scope_(kLongestFind, RequestScope::OfPart{}) {
    scope_.CountIn(budget_);
    end_ = std::min(end_, scope_.Deadline());
  }

  FindResult Run() {
    for (const auto step : {&Finder::AskPorts, &Finder::ProveLogin, &Finder::AskOnvif, &Finder::TryPaths}) {
      if (!(this->*step)()) break;
    }
    Finish();
    return std::move(result_);
  }

 private:
  bool Tell(FindStep step) {
    result_.requests = budget_.Taken();
    return !onStep_ || onStep_(step, result_);
  }

  void Warn(FindWarning warning) {
    const bool isNew = std::ranges::find(result_.warnings, warning) == result_.warnings.end();
    if (isNew) result_.warnings.push_back(warning);
  }

  bool HasLogin() const { return !request_.user.empty() || !request_.password.empty(); }

  CameraAddress CameraAt(const FoundPort& port) const {
    return {request_.host, port.number, request_.user, request_.password, port.isTls};
  }

  bool AskPorts() {
    RequestBudget budget(kMostFurtherPortRequests);
    answers_ = find::AskPorts(request_, budget, std::min<std::chrono::milliseconds>(kLongestPorts, TimeUntil(end_)));
    if (budget.HasRefused()) Warn(FindWarning::kEnded);
    int sent = budget.Taken();
    for (const PortAnswer& answer : answers_) sent += answer.requests;
    for (int i = 0; i < sent; ++i) budget_.Take();
    result_.outcome = MostTelling(answers_);
    std::erase_if(answers_, [](const PortAnswer& answer) { return answer.outcome != Outcome::kOk; });
    for (const PortAnswer& answer : answers_) TakePort(answer);
    return Tell(FindStep::kPorts) && !answers_.empty();
  }

  void TakePort(const PortAnswer& answer) {
    result_.ports.push_back(answer.port);
    if (!result_.clockOffset) result_.clockOffset = answer.clockOffset;
    if (answer.asksDigest) scope_.RememberDigest(request_.host);
    TakeMaker(answer.port.server, answer.port.speaksRtsp ? "RTSP server" : "web server");
    TakeMaker(answer.port.realm, answer.port.speaksRtsp ? "RTSP server" : "web server");
  }

  void TakeMaker(const std::string& said, const char* from) {
    const MakerGuess guess = MakerIn(said, knownVendors_);
    if (guess.vendor.empty()) return;
    vendors_.push_back(guess.vendor);
    if (guess.isNamed) namedVendors_.push_back(guess.vendor);
    if (guess.isNamed && result_.maker.value.empty()) result_.maker = {guess.vendor, from};
  }

  bool IsLoginTaken() const {
    return result_.login == FindLogin::kAccepted || result_.login == FindLogin::kOnvifOthers;
  }

  /// After a login was sent, whatever is not clearly a yes counts as a no until one was taken.
  bool IsRefusal(Outcome outcome) const {
    if (!HasLogin() || (outcome == Outcome::kTimedOut && budget_.Left() == 0)) return false;
    constexpr std::array kYes = {Outcome::kOk, Outcome::kNoSuchStream, Outcome::kNoVideo, Outcome::kEncryptedStream};
    const bool isYes = std::ranges::find(kYes, outcome) != kYes.end();
    return MayBeRefusedLogin(outcome) || (scope_.HasSentLogin() && !scope_.IsLoginTaken() && !IsLoginTaken() && !isYes);
  }

  void TakeLogin() {
    if (scope_.HasSentLogin() && result_.login == FindLogin::kNotTried) result_.login = FindLogin::kAccepted;
  }

  /// One login, over RTSP where that asks for one: 404 has taken it as well as 200.
  bool ProveLogin() {
    const auto asking = std::ranges::find(answers_, Outcome::kLoginRefused, &PortAnswer::rtsp);
    if (!HasLogin() || asking == answers_.end()) return true;
    hunt_ = std::make_unique<PathHunt>(CameraAt(asking->port));
    provenAt_ = asking->port.number;
    const Outcome outcome = hunt_->Ask(kNoCamerasPath);
    if (IsRefusal(outcome) || EndsConversation(outcome)) return EndWith(outcome);
    TakeLogin();
    asking->rtsp = outcome;
    return Tell(FindStep::kLogin);
  }

  /// A login that was taken elsewhere is right there, unless it is refused where 404 seemed to take it.
  bool EndWith(Outcome outcome) {
    const bool isRefusal = IsRefusal(outcome);
    const bool isDoubted = hunt_ && hunt_->Camera().port == provenAt_;
    if (isRefusal && IsLoginTaken() && !isDoubted) return false;
    if (isRefusal) EndRefused();
    result_.outcome = outcome;
    return false;
  }

  void EndRefused() {
    result_.login = FindLogin::kRefused;
    std::erase(result_.warnings, FindWarning::kOnvifOthers);
  }

  const PortAnswer* OnvifPort() const {
    const auto speaks =
        std::ranges::find_if(answers_, [](const PortAnswer& answer) { return answer.port.speaksOnvif; });
    if (speaks != answers_.end()) return &*speaks;
    const auto mayBe = std::ranges::find_if(answers_, [](const PortAnswer& answer) {
      return answer.onvif == Outcome::kLoginRefused || (answer.port.isTls && answer.port.speaksHttp);
    });
    return mayBe == answers_.end() ? nullptr : &*mayBe;
  }

  /// What ONVIF refuses is remembered by a scope of its own: RTSP may have other users.
  OnvifFindings OnvifSays(const PortAnswer& there) {
    RequestScope scope(TimeUntil(end_), RequestScope::OfPart{});
    scope.CountIn(budget_);
    if (scope_.KnowsDigest(request_.host)) scope.RememberDigest(request_.host);
    OnvifFindings findings = find::AskOnvif(CameraAt(there.port), there.clockOffset, budget_);
    if (scope.KnowsDigest(request_.host)) scope_.RememberDigest(request_.host);
    return findings;
  }

  bool AskOnvif() {
    const PortAnswer* there = OnvifPort();
    if (there == nullptr) return true;
    hunt_.reset();
    OnvifFindings findings = OnvifSays(*there);
    TakeDevice(findings.device);
    if (findings.clockOffset) result_.clockOffset = findings.clockOffset;
    findings.isOnvif = findings.isOnvif || there->port.speaksOnvif;
    const bool mayGoOn = TakeOnvifLogin(findings);
    if (findings.outcome == Outcome::kOk) TakeOnvif(std::move(findings), there->port.number);
    return mayGoOn && Tell(FindStep::kOnvif);
  }

  bool TakeOnvifLogin(const OnvifFindings& findings) {
    if (findings.isLoggedIn && result_.login == FindLogin::kNotTried) result_.login = FindLogin::kAccepted;
    if (!findings.isLoginRefused || !HasLogin()) return true;
    mayLogInOverHttp_ = false;  // web and ONVIF have the same users, as a rule
    if (!IsLoginTaken()) {
      EndRefused();
      result_.outcome = findings.outcome;
      return false;
    }
    if (!findings.isOnvif) return true;  // a web server
    result_.login = FindLogin::kOnvifOthers;
    Warn(FindWarning::kOnvifOthers);
    return true;
  }

  void TakeDevice(const onvif::DeviceFacts& device) {
    if (!device.maker.empty()) result_.maker = {device.maker, kOnvifSays};
    if (!device.model.empty()) result_.model = {device.model, kOnvifSays};
    if (!device.firmware.empty()) result_.firmware = {device.firmware, kOnvifSays};
    if (!device.serial.empty()) result_.serial = {device.serial, kOnvifSays};
    const MakerGuess guess = MakerIn(device.maker, knownVendors_);
    if (guess.vendor.empty()) return;
    vendors_.insert(vendors_.begin(), guess.vendor);
    if (guess.isNamed) namedVendors_.push_back(guess.vendor);
  }

  void TakeOnvif(OnvifFindings findings, int port) {
    result_.streams = std::move(findings.streams);
    result_.snapshot = std::move(findings.snapshot);
    result_.onvifPort = port;
    if (!findings.isWhole) Warn(FindWarning::kEnded);
  }

  /// Only where ONVIF is silent. First those of the likely makers, over HTTP as well.
  bool TryPaths() {
    if (!result_.streams.empty()) return true;
    const std::vector<PathToTry> paths = PathsToTry(*catalog_, vendors_);
    const auto others = std::ranges::find_if(paths, [this](const PathToTry& path) {
      return std::ranges::find(vendors_, path.model->vendor) == vendors_.end();
    });
    if (TryPathsOf({paths.begin(), others})) TryPathsOf({others, paths.end()});
    return Tell(FindStep::kPaths);
  }

  /// False, as of the functions below, when nothing more is to be tried.
  bool TryPathsOf(std::span<const PathToTry> paths) {
    for (const PortAnswer& answer : answers_) {
      const bool isOpen = answer.port.speaksRtsp && answer.rtsp != Outcome::kLoginRefused;
      if (isOpen && !paths.empty() && !TryPathsAt(answer, paths)) return false;
    }
    return TryPathsOverHttp(paths);
  }

  bool TryPathsAt(const PortAnswer& answer, std::span<const PathToTry> paths) {
    const bool isKnown = hunt_ && hunt_->Camera().port == answer.port.number;
    if (!isKnown) hunt_ = std::make_unique<PathHunt>(CameraAt(answer.port));
    for (const PathToTry& path : paths) {
      if (path.stream->isOverHttp) continue;
      if (answer.rtsp == Outcome::kOk) return TakeUnsure(path, answer.port);
      const Outcome outcome = hunt_->Ask(path.path);
      if (outcome == Outcome::kOk) return TakeFound(path, answer.port, hunt_->Codec());
      if (outcome == Outcome::kNoVideo || outcome == Outcome::kEncryptedStream) seen_ = outcome;
      if (!MayTryOn(outcome)) return false;
    }
    return true;
  }

  bool MayTryOn(Outcome outcome) {
    const bool isSpent = budget_.Left() == 0;
    if (isSpent) Warn(FindWarning::kEnded);
    if (IsRefusal(outcome) || (!isSpent && EndsConversation(outcome))) return EndWith(outcome);
    TakeLogin();
    return !isSpent;
  }

  bool TakeFound(const PathToTry& path, const FoundPort& port, const std::string& codec) {
    ListedStream stream = StreamAt(path, port);
    stream.codec = codec;
    stream.isAsked = true;
    TakeLogin();
    TakeModel(path, stream);
    return false;
  }

  /// The camera says yes to every path.
  bool TakeUnsure(const PathToTry& path, const FoundPort& port) {
    Warn(FindWarning::kAnyPath);
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
    const bool isNamed = std::ranges::find(namedVendors_, path.model->vendor) != namedVendors_.end();
    const bool isUsual = path.stream == &path.model->streams.front();
    if (isElsewhere || !isUsual || !isNamed) result_.modelVendor.clear();
    const auto web = std::ranges::find_if(result_.ports, &FoundPort::speaksHttp);
    if (web != result_.ports.end()) result_.snapshot = SnapshotOfModel(*path.model, web->number);
  }

  bool TryPathsOverHttp(std::span<const PathToTry> paths) {
    if (!mayLogInOverHttp_) return true;
    for (const PortAnswer& answer : answers_) {
      for (const PathToTry& path : paths) {
        if (!path.stream->isOverHttp || !answer.port.speaksHttp) continue;
        hunt_.reset();
        const Outcome outcome = ProbeHttpStream(CameraAt(answer.port), path.path);
        if (outcome == Outcome::kOk) return TakeFound(path, answer.port, path.stream->codec);
        if (!MayTryOn(outcome)) return false;
      }
    }
    return true;
  }

  void Finish() {
    if (!result_.streams.empty()) result_.outcome = Outcome::kOk;
    if (result_.streams.empty() && result_.outcome == Outcome::kOk) result_.outcome = WhyNone();
    const bool isOpen = !result_.streams.empty() && result_.login == FindLogin::kNotTried && HasLogin();
    if (isOpen) result_.login = FindLogin::kNotNeeded;
    if (result_.clockOffset && std::chrono::abs(*result_.clockOffset) >= kWrongClock) Warn(FindWarning::kClockWrong);
    result_.requests = budget_.Taken();
    result_.duration = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin_);
  }

  Outcome WhyNone() const {
    const bool isAsking = std::ranges::any_of(answers_, [](const PortAnswer& answer) {
      return answer.rtsp == Outcome::kLoginRefused || answer.onvif == Outcome::kLoginRefused;
    });
    if (isAsking && !HasLogin()) return Outcome::kLoginRefused;
    if (seen_) return *seen_;
    const bool hasRtsp = std::ranges::any_of(answers_, [](const PortAnswer& answer) { return answer.port.speaksRtsp; });
    return hasRtsp ? Outcome::kNoSuchStream : Outcome::kNoService;
  }

  const FindRequest& request_;
  const OnFindStep& onStep_;
  const Clock::time_point begin_ = Clock::now();
  Clock::time_point end_;
  RequestBudget budget_{kMostFindRequests};
  RequestScope scope_;
  const std::shared_ptr<const ModelCatalog> catalog_ = Models();
  const std::vector<std::string> knownVendors_ = VendorsOf(*catalog_);
  std::vector<PortAnswer> answers_;   // of the ports at which something is spoken
  std::vector<std::string> vendors_;  // likely ones, the likeliest first
  std::vector<std::string> namedVendors_;
  std::unique_ptr<PathHunt> hunt_;  // of the last path; gone before other ports are asked: connections are few
  int provenAt_ = 0;                // the port whose RTSP took the login
  bool mayLogInOverHttp_ = true;
  std::optional<Outcome> seen_;  // why a stream that is there is of no use
  FindResult result_;
};

}  // namespace
}  // namespace find

FindResult Find(const FindRequest& request, const OnFindStep& onStep) { return find::Finder(request, onStep).Run(); }

}  // namespace recorder
