#include "recorder/request/lent_password.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

#include "recorder/request/request_scope.h"
#include "recorder/utility/config.h"
#include "recorder/utility/log.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

/// What a lender has to be like, and what the log says where none is.
struct Condition {
  const char* otherwise;
  bool (*isMet)(const Lender& lender, const WantedCamera& wanted);
};

constexpr Condition kConditions[] = {
    {"the request names another vendor or model",
     [](const Lender& lender, const WantedCamera& wanted) {
       return lender.camera.vendor == wanted.vendor && lender.camera.model == wanted.model;
     }},
    {"the request names another host",
     [](const Lender& lender, const WantedCamera& wanted) {
       return NormalizedHost(lender.camera.host) == NormalizedHost(wanted.host);
     }},
    {"the request names another port",
     [](const Lender& lender, const WantedCamera& wanted) { return lender.port == wanted.port; }},
    {"the request names another user",
     [](const Lender& lender, const WantedCamera& wanted) { return lender.camera.user == wanted.user; }},
    {"the request names another source path",
     [](const Lender& lender, const WantedCamera& wanted) {
       return !wanted.sourcePath || lender.camera.sourcePath == *wanted.sourcePath;
     }},
    {"it is switched off",
     [](const Lender& lender, const WantedCamera&) { return lender.camera.status != CAM_CONN_STATUS_DISABLED; }},
};

constexpr char kNotSent[] = ": its stored password was not sent. ";

/// "camera 3", "cameras 3, 5".
std::string NamesOf(const std::vector<Lender>& lenders) {
  constexpr std::size_t kMostNamed = 5;
  std::vector<int> ids;
  ids.reserve(lenders.size());
  for (const Lender& lender : lenders) ids.push_back(lender.camera.id);
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
  std::string names = ids.size() == 1 ? "camera" : "cameras";
  for (std::size_t i = 0; i < std::min(ids.size(), kMostNamed); ++i) {
    names += (i == 0 ? " " : ", ") + std::to_string(ids[i]);
  }
  return ids.size() > kMostNamed ? names + ", ..." : names;
}

/// What the administrator of `camera` can do where it is no impostor.
std::string AdviceFor(const CameraRecord& camera, const char* flag) {
  return "If its settings were changed, run: recorderctl camera edit " + std::to_string(camera.id) + " " + flag;
}

std::string Refusal(const std::vector<Lender>& lenders, const std::string& reason) {
  return "The stored password of " + NamesOf(lenders) + " is not lent: " + reason + ".";
}

/// The records cannot be used.
void Fail(const std::exception& error) {
  LogFailure(error.what());
  RequestScope::Current().FailLending();
}

}  // namespace

LentPassword::LentPassword(const std::vector<CameraRecord>& cameras, std::string channel)
    : channel_(std::move(channel)) {
  for (const CameraRecord& camera : cameras) lenders_.push_back({camera, camera.port});
}

LentPassword::LentPassword(const CameraRecord& camera, const std::vector<CameraStream>& streams, std::string channel)
    : channel_(std::move(channel)) {
  for (const CameraStream& stream : streams) {
    Lender lender{RecordOfStream(stream, camera), stream.port};
    lender.camera.port = camera.port;
    if (stream.name == kOwnStream) lender.camera.channel.clear();  // any
    lenders_.push_back(std::move(lender));
  }
}

void LentPassword::LendFor(const WantedCamera& wanted) {
  std::string reason;
  std::optional<Lender> chosen = Choose(wanted, reason);
  if (!reason.empty() && reason != lastReason_) LogFailure(reason);
  lastReason_ = std::move(reason);
  if (!chosen || !camera_ || chosen->camera.id != camera_->id) namedPorts_.clear();
  camera_.reset();
  pinned_.reset();
  if (!chosen) return;
  camera_ = std::move(chosen->camera);
  askedPort_ = chosen->port;
}

/// The one lender that fits, or the first of several of one camera. Nothing, and the reason, where there is none or
/// where they are of more than one camera.
std::optional<Lender> LentPassword::Choose(const WantedCamera& wanted, std::string& reason) const {
  std::vector<Lender> fitting = lenders_;
  if (fitting.empty()) return std::nullopt;  // whoever looked for records has said so
  const auto keep = [&](const char* otherwise, auto isMet) {
    std::vector<Lender> kept;
    std::copy_if(fitting.begin(), fitting.end(), std::back_inserter(kept), isMet);
    if (kept.empty()) reason = Refusal(fitting, otherwise);
    fitting = std::move(kept);
    return !fitting.empty();
  };
  for (const Condition& condition : kConditions) {
    const auto isMet = [&](const Lender& lender) { return condition.isMet(lender, wanted); };
    if (!keep(condition.otherwise, isMet)) return std::nullopt;
  }
  const std::string& channel = channel_.empty() ? wanted.defaultChannel : channel_;
  const auto hasChannel = [&](const Lender& lender) {
    return channel.empty() || lender.camera.channel.empty() || lender.camera.channel == channel;
  };
  if (!keep("the request names another channel", hasChannel)) return std::nullopt;
  if (fitting.front().camera.id == fitting.back().camera.id) return std::move(fitting.front());
  reason = Refusal(fitting, "they fit the request alike, so it has to name one by its id");
  return std::nullopt;
}

void LentPassword::AllowPort(const std::string& host, int port) {
  if (camera_ && NormalizedHost(host) == NormalizedHost(camera_->host)) namedPorts_.insert(port);
}

bool LentPassword::IsFor(const std::string& host, int port, const std::string& user) const {
  return camera_ && NormalizedHost(host) == NormalizedHost(camera_->host) && user == camera_->user &&
         (port == askedPort_ || namedPorts_.contains(port));
}

Outcome LentPassword::TrustCertificate(int port, const std::string& certificate) try {
  if (!camera_) return Outcome::kLoginRefused;
  if (!Pinned().contains(port)) {
    Pinned()[port] = Records(GetConfig().stateFolder).PinCertificate(camera_->id, port, certificate);
  }
  if (Pinned()[port] == certificate) return Outcome::kOk;
  LogFailure(NameAt(port) + " has another certificate than before: nothing was sent. " +
             AdviceFor(*camera_, "--trust-new-certificate"));
  return Outcome::kCertificateChanged;
} catch (const std::exception& error) {
  LogFailure(error.what());
  return Outcome::kRecorderFailed;
}

/// Of the camera, by port. Throws what Records throws.
Certificates& LentPassword::Pinned() {
  if (!pinned_) pinned_ = Records(GetConfig().stateFolder).PinnedCertificates(camera_->id);
  return *pinned_;
}

/// True when what answers at `port` has the certificate of the record's own port, and so is the camera.
bool LentPassword::IsProven(int port) {
  const auto own = Pinned().find(camera_->port);
  const auto there = Pinned().find(port);
  return own != Pinned().end() && there != Pinned().end() && own->second == there->second;
}

/// The weakest login that may go to `port`.
LoginMethod LentPassword::WeakestAt(int port, bool isTls) {
  if (port == camera_->port) return camera_->strongestLogin;
  return isTls && IsProven(port) ? std::min(camera_->strongestLogin, LoginMethod::kMd5) : LoginMethod::kMd5;
}

bool LentPassword::MayLogIn(int port, bool isTls, LoginMethod method) try {
  if (!camera_ || !KeepsTls(port, isTls)) return false;
  const LoginMethod weakest = WeakestAt(port, isTls);
  if (method >= weakest) return true;
  LogFailure(NameAt(port) + " asks for a login by " + NameOf(method) + ReasonAgainst(port, weakest));
  return false;
} catch (const std::exception& error) {
  Fail(error);
  return false;
}

bool LentPassword::KeepsTls(int port, bool isTls) try {
  if (!camera_) return false;
  if (isTls || !Pinned().contains(port)) return true;
  LogFailure(NameAt(port) + " asks for a login without TLS, where it had a certificate before" + kNotSent +
             AdviceFor(*camera_, "--trust-new-certificate"));
  return false;
} catch (const std::exception& error) {
  Fail(error);
  return false;
}

std::string LentPassword::ReasonAgainst(int port, LoginMethod weakest) const {
  if (port != camera_->port) return ": its stored password was not sent, since it goes there by Digest only.";
  return std::string(", where one by ") + NameOf(weakest) + " worked before" + kNotSent +
         AdviceFor(*camera_, "--allow-basic");
}

/// "Camera 3", and at which port where that is not its record's.
std::string LentPassword::NameAt(int port) const {
  const std::string name = "Camera " + std::to_string(camera_->id);
  return port == camera_->port ? name : name + ", at port " + std::to_string(port) + ",";
}

void LentPassword::Worked(int port, LoginMethod method) try {
  if (!camera_) return;
  const LoginMethod learned = port == camera_->port ? method : std::min(method, LoginMethod::kMd5);
  if (learned <= camera_->strongestLogin) return;
  camera_->strongestLogin = learned;
  Records(GetConfig().stateFolder).RaiseLogin(camera_->id, learned);
} catch (const std::exception& error) {
  LogFailure(error.what());
}

std::optional<std::string> LentPassword::Reveal() const try {
  if (!camera_) return std::nullopt;
  return Records(GetConfig().stateFolder).Password(*camera_);
} catch (const std::exception& error) {
  Fail(error);
  return std::nullopt;
}

}  // namespace recorder
