#include "recorder/device/find/onvif_questions.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <utility>

#include "recorder/device/asked/onvif/profiles.h"
#include "recorder/device/asked/onvif/soap.h"
#include "recorder/device/asked/onvif/stream_questions.h"
#include "recorder/device/asked/onvif/uri.h"
#include "recorder/device/find/path_pattern.h"
#include "recorder/device/find/profile_streams.h"
#include "recorder/net/http/http_session.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/cause_table.h"
#include "recorder/utility/limits.h"

namespace recorder::find {
namespace {

constexpr std::size_t kMostAsked = 6;  // addresses, where the others can be worked out
constexpr int kKept = 1;               // requests, for the picture's address

/// The questions to one camera, in steps. A step ends the questioning by another outcome than kOk.
class Questioning {
 public:
  Questioning(const CameraAddress& camera, std::optional<std::chrono::seconds> clockOffset, const RequestBudget& budget)
      : port_(camera.port), isTls_(camera.isTls), client_(camera), budget_(budget) {
    if (clockOffset) client_.TakeClock(clockOffset);
  }

  OnvifFindings Run() {
    findings_.outcome = Take({&Questioning::AskClock, &Questioning::AskServices, &Questioning::AskProfiles,
                              &Questioning::AskDevice, &Questioning::AskAddresses, &Questioning::AskSnapshot});
    findings_.isLoggedIn = client_.IsLoggedIn();
    findings_.isLoginRefused = IsLoginRefused();
    findings_.isOnvif = client_.HasSpoken();
    findings_.clockOffset = client_.ClockOffset();
    return std::move(findings_);
  }

 private:
  Outcome Take(std::initializer_list<Outcome (Questioning::*)()> steps) {
    for (const auto step : steps) {
      if (const Outcome outcome = (this->*step)(); outcome != Outcome::kOk) return outcome;
    }
    return Outcome::kOk;
  }

  bool IsLoginRefused() const {
    const RequestScope& scope = RequestScope::Current();
    const bool isOnTrial = scope.HasSentLogin() && !scope.IsLoginTaken() && !client_.IsLoggedIn();
    return isOnTrial || MayBeRefusedLogin(findings_.outcome);
  }

  Outcome AskClock() {
    if (client_.ClockOffset()) return Outcome::kOk;
    const onvif::Reply reply = client_.AskClock();
    return reply.isLast || !reply.IsSoap() ? reply.outcome : Outcome::kOk;
  }

  Outcome AskServices() {
    std::optional<onvif::Capabilities> capabilities;
    return onvif::AskServices(client_, services_, capabilities);
  }

  Outcome AskProfiles() {
    const Outcome outcome = onvif::AskProfiles(client_, services_, media_, profiles_);
    streams_ = StreamsOf(profiles_);
    return outcome == Outcome::kOk && streams_.empty() ? Outcome::kNoVideo : outcome;
  }

  Outcome AskDevice() {
    const onvif::Reply reply = client_.Call(onvif::kDevicePath, onvif::kDevice, "GetDeviceInformation");
    findings_.device = onvif::ReadDeviceFacts(reply.content);
    return reply.isLast ? reply.outcome : Outcome::kOk;
  }

  /// First what others can be worked out from, then the last one as a proof of that; all of them where that fails.
  Outcome AskAddresses() {
    for (const std::size_t i : FirstAsked()) {
      const Outcome outcome = AskAddress(i);
      if (EndsConversation(outcome) && known_.empty()) return outcome;
    }
    for (std::size_t i = 0; i < streams_.size(); ++i) {
      if (!WorkOut(streams_[i])) AskAddress(i);
    }
    std::erase_if(streams_, [](const ProfileStream& one) { return one.stream.port == 0; });
    for (ProfileStream& one : streams_) findings_.streams.push_back(std::move(one.stream));
    return findings_.streams.empty() ? Outcome::kNoVideo : Outcome::kOk;
  }

  std::vector<std::size_t> FirstAsked() const {
    std::vector<std::size_t> asked;
    for (std::size_t i = 0; i < streams_.size(); ++i) {
      const StreamSpot& spot = streams_[i].spot;
      const bool isStart = spot.channel == 0 || (spot.channel == 1 && spot.place == 0);
      const bool isProof = i + 1 == streams_.size();
      if (streams_.size() <= kMostAsked || isStart || isProof) asked.push_back(i);
    }
    return asked;
  }

  Outcome AskAddress(std::size_t index) {
    ProfileStream& one = streams_[index];
    if (one.stream.port != 0) return Outcome::kOk;
    ModelPath address;
    const bool mayAsk = budget_.Left() > kKept;
    const Outcome outcome = mayAsk ? AskAddressOf(one.spot.token, address) : Outcome::kTimedOut;
    if (outcome == Outcome::kTimedOut) findings_.isWhole = false;
    if (outcome != Outcome::kOk) return outcome;
    if (address.path.size() > kLongestRecordText) return Outcome::kNoVideo;  // it could not be stored
    Place(address.path, *address.port, address.isTls, one.stream);
    one.stream.isAsked = true;
    known_.push_back({one.spot, address.path});
    return Outcome::kOk;
  }

  Outcome AskAddressOf(const std::string& profile, ModelPath& address) {
    return onvif::ReadStream(onvif::AskStream(client_, media_, profile), address);
  }

  static void Place(std::string path, int port, bool isTls, ListedStream& stream) {
    stream.path = std::move(path);
    stream.port = port;
    stream.isTls = isTls;
  }

  bool WorkOut(ProfileStream& one) const {
    if (one.stream.port != 0) return true;
    const auto path = PathByPattern(known_, one.spot);
    if (!path) return false;
    const auto first = std::ranges::find_if(streams_, [](const ProfileStream& s) { return s.stream.port != 0; });
    Place(*path, first->stream.port, first->stream.isTls, one.stream);
    return true;
  }

  Outcome AskSnapshot() {
    const onvif::Reply reply =
        onvif::AskMedia(client_, media_, "GetSnapshotUri", "", findings_.streams.front().profile);
    const auto path = onvif::SnapshotPath(onvif::ReadUri(reply.content), services_.port);
    if (!path) return Outcome::kOk;
    const int port = path->port.value_or(port_);
    findings_.snapshot = ListedSnapshot{path->path, port, isTls_ || port == kHttpsPort, kOnvifSays};
    return Outcome::kOk;
  }

  const int port_;
  const bool isTls_;
  onvif::SoapClient client_;
  const RequestBudget& budget_;
  onvif::ServicePaths services_;
  onvif::MediaService media_;
  std::vector<onvif::Profile> profiles_;
  std::vector<ProfileStream> streams_;  // port 0: the address is not known
  std::vector<KnownPath> known_;
  OnvifFindings findings_;
};

}  // namespace

OnvifFindings AskOnvif(const CameraAddress& camera, std::optional<std::chrono::seconds> clockOffset,
                       const RequestBudget& budget) {
  return Questioning(camera, clockOffset, budget).Run();
}

}  // namespace recorder::find
