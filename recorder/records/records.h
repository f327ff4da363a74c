#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "recorder/records/camera_record.h"
#include "recorder/records/webhook.h"
#include "recorder/utility/outcome.h"
#include "recorder/utility/secrets.h"

namespace recorder {

/// Whom a key is for.
enum class TrustKind {
  kClient,       ///< a trusted client
  kServerGroup,  ///< the recording servers of this recorder's group
};

struct TrustedKey {
  std::string name;
  SecretKey key;
};

/// How long a camera that was removed can be restored.
inline constexpr std::chrono::seconds kUndoTime{60};

/// What is to change of a stored camera; the rest stays.
struct CameraChange {
  std::function<void(CameraRecord&)> record = nullptr;              ///< makes of the record what it is to be
  const std::string* password = nullptr;                            ///< the new one, which the caller wipes
  std::optional<std::vector<CameraStream>> streams = std::nullopt;  ///< all of them
  std::optional<std::vector<CameraFact>> facts = std::nullopt;      ///< all of them
  bool forgetsLogin = false;                                        ///< as if no login had worked yet
  bool forgetsCertificates = false;                                 ///< as if no certificate had been seen yet
  std::optional<int> revision = std::nullopt;                       ///< the one that the camera must have
  std::function<void()> check = nullptr;  ///< called while nobody else changes the records; what it throws ends that
};

/// Whether the stored password may stay after a change that makes `after` of a camera with these streams (see below).
bool KeepsPassword(const CameraRecord& before, const std::vector<CameraStream>& streams, const CameraRecord& after,
                   const CameraChange& change);

/// What became of a change.
enum class ChangeResult {
  kDone,
  kNoCamera,       ///< there is none of that id
  kOtherRevision,  ///< the camera has another revision than it must have
};

/// How long events are kept, at least.
inline constexpr std::chrono::hours kEventsKept{90 * 24};
/// But of one camera no more than these: a change each five minutes in that time is less.
inline constexpr int kMostEvents = 26'000;

/// Which events are asked for: those that fit all that is given.
struct EventFilter {
  std::optional<int> cameraId = std::nullopt;
  std::int64_t since = 0;  ///< seconds since 1970
  std::optional<Outcome> cause = std::nullopt;
};

/// A failure of the records, with a text for the administrator that holds no secret.
class RecordsError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The recorder's records: one SQLite file, recorder.db (mode 0600), and the key file secret.key in the state folder
/// (mode 0700). Passwords and keys are encrypted at rest and bound to their record: a password whose record's host or
/// port was changed behind the recorder's back cannot be read.
///
/// Owner:   an object holds one database connection. Opening takes a fraction of a millisecond: make one a call. Keep
///          one, as long as IsCurrent, for what every request asks.
/// Thread:  one thread at a time uses an object. Objects of any threads and processes work side by side; a writer
///          waits up to 5 s for another.
/// Time:    a change is on the disk when the call returns.
/// Failure: throws RecordsError, or std::system_error for folder and key file; the records are as before then. A file
///          of an older version of this program is brought to this one's when it is opened; that of a newer one is
///          refused and left untouched.
class Records {
 public:
  /// True when nothing is missing of the records in `stateFolder`. Any thread.
  static bool AreThere(const std::filesystem::path& stateFolder);

  /// Opens the records in `stateFolder` and makes what is missing.
  explicit Records(const std::filesystem::path& stateFolder);
  ~Records();
  Records(const Records&) = delete;
  Records& operator=(const Records&) = delete;

  /// False when other files stand in the state folder than those that were opened, and perhaps for an object that made
  /// them.
  bool IsCurrent() const;

  /// A number that is another one after somebody else, in this process or another, has changed the records. It means
  /// nothing to other objects.
  std::int64_t Version() const;

  /// Writes the records as they are now to a new SQLite file, while others read and change them. The key is not in it.
  void CopyTo(const std::filesystem::path& file) const;
  /// False when the file in `stateFolder`, which nobody has open, is empty or has had other contents made in it than
  /// this program makes. One of a newer version is true: opening it tells more. Throws RecordsError.
  static bool AreOfThisProgram(const std::filesystem::path& stateFolder);
  /// What is wrong with the file and with the key, as far as reading all that is stored can tell; "" for nothing.
  std::string Damage() const;

  /// Stores a camera (`camera.id` and `camera.revision` are ignored) and returns its id. A mistake is a RecordsError.
  /// `check` is called while nobody else changes the records: what it throws keeps the camera from being stored.
  int Add(const CameraRecord& camera, const std::string& password, const std::vector<CameraStream>& streams = {},
          const std::vector<CameraFact>& facts = {}, const std::function<void()>& check = nullptr);
  /// All cameras by id.
  std::vector<CameraRecord> List() const;
  /// Their revisions, by id.
  std::map<int, int> Revisions() const;
  /// All cameras of a model by id.
  std::vector<CameraRecord> ListModel(const std::string& vendor, const std::string& model) const;
  std::optional<CameraRecord> Find(int id) const;
  /// The stored password of a camera that was found here; the caller wipes it.
  std::string Password(const CameraRecord& camera) const;
  /// How it is stored: another text whenever it was set. "" where there is no such camera.
  std::string SealedPassword(int id) const;
  /// The streams of a camera: its main one, and those that were stored with it. None where there is no such camera.
  std::vector<CameraStream> Streams(int id) const;
  /// The names of these, of all cameras.
  std::map<int, std::vector<std::string>> StreamNames() const;
  /// What is known of a camera, in the order in which it was stored.
  std::vector<CameraFact> Facts(int id) const;

  /// Stores a change of a camera, which nobody else changes meanwhile. Where the stored password may not stay (see
  /// KeepsPassword) and no other one is given, that is a RecordsError, as a mistake is. What was known of the camera as
  /// it was before is forgotten: at another address the login and the certificates; for another host or user the
  /// streams and facts that are not given anew; where a stream is asked by something else, its address and facts, and
  /// if it is the main one, the outcome. Where a login may work now, its refusals are forgotten, at other records of
  /// it, too.
  ChangeResult Change(int id, const CameraChange& change);
  /// Removes a camera: from now on there is none of that id, unless it is restored. `revision`: that it must have.
  ChangeResult Remove(int id, std::optional<int> revision = std::nullopt);
  /// Brings a camera back as it was. False when none was removed within kUndoTime; what was removed before that is
  /// deleted when the records are opened. `check` as for Add; it may look at the camera.
  bool Restore(int id, const std::function<void()>& check = nullptr);
  /// Keeps `method` as the strongest login that worked, unless a stronger one did. False when there is no such camera.
  bool RaiseLogin(int id, LoginMethod method);

  /// Notes what contact with a camera came to. It writes nothing when the contact before came to the same, or there is
  /// no such camera; else outcome and event together, and forgets events of more than kEventsKept before, and the
  /// oldest of the camera beyond kMostEvents.
  void NoteOutcome(int id, const CameraContact& contact);
  /// What contact came to with those cameras with which there was any since a change of theirs (see Change).
  std::map<int, CameraOutcome> Outcomes() const;
  /// What contact came to with one of them.
  std::optional<CameraOutcome> OutcomeOf(int id) const;
  /// Those of them that refused the login.
  std::vector<RefusedCamera> RefusedCameras() const;
  /// At most `most` events of stored cameras with ids below `id`, the newest first; with ids above it, the oldest
  /// first.
  std::vector<CameraEvent> EventsBefore(std::int64_t id, int most, const EventFilter& filter = {}) const;
  std::vector<CameraEvent> EventsAfter(std::int64_t id, int most, const EventFilter& filter = {}) const;
  /// How often each camera, or that one, has changed since then, in seconds since 1970; those that have not are left
  /// out.
  std::map<int, int> Flips(std::int64_t since, std::optional<int> cameraId = std::nullopt) const;
  /// All cameras, counted by both.
  std::vector<CameraCount> CountCameras() const;

  std::optional<Webhook> FindWebhook() const;
  /// Its secret, which the caller wipes.
  std::string WebhookSecret(const Webhook& webhook) const;
  /// Sets the webhook. A new one is told nothing of what was before; another address of one that was there goes on
  /// where that was.
  void SetWebhook(const std::string& url, const std::string& secret);
  /// False when there is none.
  bool RemoveWebhook();
  /// Keeps how far the webhook was told and what that came to, unless it was set anew meanwhile.
  void NoteTold(const Webhook& webhook);

  /// The certificates that are pinned for a camera.
  Certificates PinnedCertificates(int id) const;
  /// The one that is pinned for `port` of a camera, which is `certificate` where there was none. Of ports other than
  /// the record's own, those beyond the first kMostPinnedPorts stay without one.
  std::string PinCertificate(int id, int port, const std::string& certificate);

  /// What cameras are known again by; none of those of which nothing was learnt since their password was set.
  std::map<int, CameraIdentity> Identities() const;
  /// Keeps what was not known of a camera yet, as far as its texts are no longer than kLongestFoundName.
  void LearnIdentity(int id, const CameraIdentity& identity);

  /// Stores a key. False when the name is taken.
  bool AddKey(TrustKind kind, const std::string& name, const SecretKey& key);
  /// False when there is no such name.
  bool RemoveKey(TrustKind kind, const std::string& name);
  /// True when there is a key of any kind.
  bool HasKeys() const;
  /// All keys by name.
  std::vector<TrustedKey> ListKeys(TrustKind kind) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace recorder
