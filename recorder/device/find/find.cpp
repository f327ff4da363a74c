#include "recorder/device/find/find.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "recorder/device/find/maker.h"
#include "recorder/device/find/onvif_questions.h"
#include "recorder/device/find/path_trial.h"
#include "recorder/device/find/port_questions.h"
#include "recorder/device/find/stream_search.h"
#include "recorder/net/http/http_session.h"
#include "recorder/request/request_budget.h"
#include "recorder/request/request_scope.h"

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
  Finder(const FindRequest& request, const OnFindStep& onStep) : onStep_(onStep), search_(request) {}

  FindResult Run() {
    for (const auto step : {&Finder::AskPorts, &Finder::ProveLogin, &Finder::AskOnvif, &Finder::TryPaths}) {
      if (!(this->*step)()) break;
    }
    Finish();
    return std::move(result_);
  }

 private:
  bool Tell(FindStep step) {
    result_.requests = search_.budget.Taken();
    return !onStep_ || onStep_(step, result_);
  }

  bool AskPorts() {
    RequestBudget budget(kMostFurtherPortRequests);
    search_.answers = find::AskPorts(search_.request, budget,
                                     std::min<std::chrono::milliseconds>(kLongestPorts, TimeUntil(search_.end)));
    if (budget.HasRefused()) search_.Warn(FindWarning::kEnded);
    int sent = budget.Taken();
    for (const PortAnswer& answer : search_.answers) sent += answer.requests;
    for (int i = 0; i < sent; ++i) search_.budget.Take();
    result_.outcome = MostTelling(search_.answers);
    std::erase_if(search_.answers, [](const PortAnswer& answer) { return answer.outcome != Outcome::kOk; });
    for (const PortAnswer& answer : search_.answers) TakePort(answer);
    return Tell(FindStep::kPorts) && !search_.answers.empty();
  }

  void TakePort(const PortAnswer& answer) {
    result_.ports.push_back(answer.port);
    if (!result_.clockOffset) result_.clockOffset = answer.clockOffset;
    if (answer.asksDigest) search_.scope.RememberDigest(search_.request.host);
    TakeMaker(answer.port.server, answer.port.speaksRtsp ? "RTSP server" : "web server");
    TakeMaker(answer.port.realm, answer.port.speaksRtsp ? "RTSP server" : "web server");
  }

  void TakeMaker(const std::string& said, const char* from) {
    const MakerGuess guess = MakerIn(said, knownVendors_);
    if (guess.vendor.empty()) return;
    search_.vendors.push_back(guess.vendor);
    if (guess.isNamed) search_.namedVendors.push_back(guess.vendor);
    if (guess.isNamed && result_.maker.value.empty()) result_.maker = {guess.vendor, from};
  }

  /// One login, over RTSP where that asks for one: 404 has taken it as well as 200.
  bool ProveLogin() {
    const auto asking = std::ranges::find(search_.answers, Outcome::kLoginRefused, &PortAnswer::rtsp);
    if (!search_.HasLogin() || asking == search_.answers.end()) return true;
    search_.loginPort = asking->port.number;
    const Outcome outcome = search_.HuntAt(asking->port).Ask(kNoCamerasPath);
    if (search_.IsRefusal(outcome) || EndsConversation(outcome)) return search_.EndWith(outcome);
    search_.TakeLogin();
    asking->rtsp = outcome;
    return Tell(FindStep::kLogin);
  }

  const PortAnswer* OnvifPort() const {
    const auto speaks =
        std::ranges::find_if(search_.answers, [](const PortAnswer& answer) { return answer.port.speaksOnvif; });
    if (speaks != search_.answers.end()) return &*speaks;
    const auto mayBe = std::ranges::find_if(search_.answers, [](const PortAnswer& answer) {
      return answer.onvif == Outcome::kLoginRefused || (answer.port.isTls && answer.port.speaksHttp);
    });
    return mayBe == search_.answers.end() ? nullptr : &*mayBe;
  }

  /// What ONVIF refuses is remembered by a scope of its own: RTSP may have other users.
  OnvifFindings OnvifSays(const PortAnswer& there) {
    RequestScope scope(TimeUntil(search_.end), RequestScope::OfPart{});
    scope.CountIn(search_.budget);
    if (search_.scope.KnowsDigest(search_.request.host)) scope.RememberDigest(search_.request.host);
    OnvifFindings findings = find::AskOnvif(search_.CameraAt(there.port), there.clockOffset, search_.budget);
    if (scope.KnowsDigest(search_.request.host)) search_.scope.RememberDigest(search_.request.host);
    return findings;
  }

  bool AskOnvif() {
    const PortAnswer* there = OnvifPort();
    if (there == nullptr) return true;
    search_.hunt.reset();
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
    if (!findings.isLoginRefused || !search_.HasLogin()) return true;
    search_.mayLogInOverHttp = false;  // web and ONVIF have the same users, as a rule
    if (!search_.IsLoginTaken()) {
      search_.EndRefused();
      result_.outcome = findings.outcome;
      return false;
    }
    if (!findings.isOnvif) return true;  // a web server
    result_.login = FindLogin::kOnvifOthers;
    search_.Warn(FindWarning::kOnvifOthers);
    return true;
  }

  void TakeDevice(const onvif::DeviceFacts& device) {
    if (!device.maker.empty()) result_.maker = {device.maker, kOnvifSays};
    if (!device.model.empty()) result_.model = {device.model, kOnvifSays};
    if (!device.firmware.empty()) result_.firmware = {device.firmware, kOnvifSays};
    if (!device.serial.empty()) result_.serial = {device.serial, kOnvifSays};
    const MakerGuess guess = MakerIn(device.maker, knownVendors_);
    if (guess.vendor.empty()) return;
    search_.vendors.insert(search_.vendors.begin(), guess.vendor);
    if (guess.isNamed) search_.namedVendors.push_back(guess.vendor);
  }

  void TakeOnvif(OnvifFindings findings, int port) {
    result_.streams = std::move(findings.streams);
    result_.snapshot = std::move(findings.snapshot);
    result_.onvifPort = port;
    if (!findings.isWhole) search_.Warn(FindWarning::kEnded);
  }

  /// Only where ONVIF is silent.
  bool TryPaths() {
    if (!result_.streams.empty()) return true;
    find::TryPaths(search_, *catalog_);
    return Tell(FindStep::kPaths);
  }

  void Finish() {
    if (!result_.streams.empty()) result_.outcome = Outcome::kOk;
    if (result_.streams.empty() && result_.outcome == Outcome::kOk) result_.outcome = WhyNone();
    const bool isOpen = !result_.streams.empty() && result_.login == FindLogin::kNotTried && search_.HasLogin();
    if (isOpen) result_.login = FindLogin::kNotNeeded;
    if (result_.clockOffset && std::chrono::abs(*result_.clockOffset) >= kWrongClock)
      search_.Warn(FindWarning::kClockWrong);
    result_.requests = search_.budget.Taken();
    result_.duration = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - search_.begin);
  }

  Outcome WhyNone() const {
    const bool isAsking = std::ranges::any_of(search_.answers, [](const PortAnswer& answer) {
      return answer.rtsp == Outcome::kLoginRefused || answer.onvif == Outcome::kLoginRefused;
    });
    if (isAsking && !search_.HasLogin()) return Outcome::kLoginRefused;
    if (search_.useless) return *search_.useless;
    const bool hasRtsp =
        std::ranges::any_of(search_.answers, [](const PortAnswer& answer) { return answer.port.speaksRtsp; });
    return hasRtsp ? Outcome::kNoSuchStream : Outcome::kNoService;
  }

  const OnFindStep& onStep_;
  StreamSearch search_;
  FindResult& result_ = search_.result;
  const std::shared_ptr<const ModelCatalog> catalog_ = Models();
  const std::vector<std::string> knownVendors_ = VendorsOf(*catalog_);
};

}  // namespace
}  // namespace find

FindResult Find(const FindRequest& request, const OnFindStep& onStep) { return find::Finder(request, onStep).Run(); }

}  // namespace recorder
