#include "recorder/request/lent_password.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

#include "recorder/utility/config.h"
#include "recorder/utility/log.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

/// What a record has to be like, and what the log says where none is.
struct Condition {
  const char* otherwise;
  bool (*isMet)(const CameraRecord& camera, const WantedCamera& wanted);
};

constexpr Condition kConditions[] = {
    {"the request names another vendor or model",
     [](const CameraRecord& camera, const WantedCamera& wanted) {
       return camera.vendor == wanted.vendor && camera.model == wanted.model;
     }},
    {"the request names another host",
     [](const CameraRecord& camera, const WantedCamera& wanted) {
       return NormalizedHost(camera.host) == NormalizedHost(wanted.host);
     }},
    {"the request names another port",
     [](const CameraRecord& camera, const WantedCamera& wanted) { return camera.port == wanted.port; }},
    {"the request names another user",
     [](const CameraRecord& camera, const WantedCamera& wanted) { return camera.user == wanted.user; }},
    {"the request names another source path",
     [](const CameraRecord& camera, const WantedCamera& wanted) {
       return !wanted.sourcePath || camera.sourcePath == *wanted.sourcePath;
     }},
    {"it is switched off",
     [](const CameraRecord& camera, const WantedCamera&) { return camera.status != CAM_CONN_STATUS_DISABLED; }},
};

constexpr char kNotSent[] = ": its stored password was not sent. ";

/// "camera 3", "cameras 3, 5".
std::string NamesOf(const std::vector<CameraRecord>& cameras) {
  constexpr std::size_t kMostNamed = 5;
  std::string names = cameras.size() == 1 ? "camera" : "cameras";
  for (std::size_t i = 0; i < std::min(cameras.size(), kMostNamed); ++i) {
    names += (i == 0 ? " " : ", ") + std::to_string(cameras[i].id);
  }
  return cameras.size() > kMostNamed ? names + ", ..." : names;
}

/// What the administrator of `camera` can do where it is no impostor.
std::string AdviceFor(const CameraRecord& camera, const char* flag) {
  return "If its settings were changed, run: recorderctl camera edit " + std::to_string(camera.id) + " " + flag;
}

std::string Refusal(const std::vector<CameraRecord>& cameras, const std::string& reason) {
  return "The stored password of " + NamesOf(cameras) + " is not lent: " + reason + ".";
}

}  // namespace

void LentPassword::LendFor(const WantedCamera& wanted) {
  std::string reason;
  std::optional<CameraRecord> chosen = Choose(wanted, reason);
  if (!reason.empty() && reason != lastReason_) LogFailure(reason);
  lastReason_ = std::move(reason);
  if (!chosen || !camera_ || chosen->id != camera_->id) namedPorts_.clear();
  camera_ = std::move(chosen);
  pinned_.reset();
}

/// The one record that fits. Nothing, and the reason, where there is none or more than one.
std::optional<CameraRecord> LentPassword::Choose(const WantedCamera& wanted, std::string& reason) const {
  std::vector<CameraRecord> fitting = records_;
  if (fitting.empty()) return std::nullopt;  // whoever looked for records has said so
  const auto keep = [&](const char* otherwise, auto isMet) {
    std::vector<CameraRecord> kept;
    std::copy_if(fitting.begin(), fitting.end(), std::back_inserter(kept), isMet);
    if (kept.empty()) reason = Refusal(fitting, otherwise);
    fitting = std::move(kept);
    return !fitting.empty();
  };
  for (const Condition& condition : kConditions) {
    const auto isMet = [&](const CameraRecord& camera) { return condition.isMet(camera, wanted); };
    if (!keep(condition.otherwise, isMet)) return std::nullopt;
  }
  const std::string channel = channel_ == "" ? wanted.defaultChannel : channel_.value_or("");
  const auto hasChannel = [&](const CameraRecord& camera) {
    return !channel_ || channel.empty() || camera.channel.empty() || camera.channel == channel;
  };
  if (!keep("the request names another channel", hasChannel)) return std::nullopt;
  if (fitting.size() == 1) return std::move(fitting.front());
  reason = Refusal(fitting, "they fit the request alike, so it has to name one by its id");
  return std::nullopt;
}

void LentPassword::AllowPort(const std::string& host, int port) {
  if (camera_ && NormalizedHost(host) == NormalizedHost(camera_->host)) namedPorts_.insert(port);
}

bool LentPassword::IsFor(const std::string& host, int port, const std::string& user) const {
  return camera_ && NormalizedHost(host) == NormalizedHost(camera_->host) && user == camera_->user &&
         (port == camera_->port || namedPorts_.contains(port));
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
  LogFailure(error.what());
  return false;
}

bool LentPassword::KeepsTls(int port, bool isTls) try {
  if (!camera_) return false;
  if (isTls || !Pinned().contains(port)) return true;
  LogFailure(NameAt(port) + " asks for a login without TLS, where it had a certificate before" + kNotSent +
             AdviceFor(*camera_, "--trust-new-certificate"));
  return false;
} catch (const std::exception& error) {
  LogFailure(error.what());
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
  LogFailure(error.what());
  return std::nullopt;
}

}  // namespace recorder
