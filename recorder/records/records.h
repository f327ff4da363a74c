#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/utility.h"
#include "recorder/utility/login_method.h"
#include "recorder/utility/secrets.h"

namespace recorder {

/// One stored camera. Its password is not part of the record, so that a list of cameras is no list of passwords.
struct CameraRecord {
  int id = 0;  ///< given by Records::Add, never given again after a Remove
  std::string name;
  std::string vendor;
  std::string model;  ///< "" for vendor "User"
  std::string host;
  int port = 0;
  std::string user;
  std::string channel;     ///< "": any
  std::string sourcePath;  ///< for a model whose stream path the user gives
  CAM_CONN_STATUS status = CAM_CONN_STATUS_NORMAL;
  int ownerKdId = kLocalOwnerKdId;
  LoginMethod strongestLogin = LoginMethod::kNone;  ///< that ever worked; the stored password goes by no weaker one
};

/// What tells a camera's TLS certificates, by port: the SHA-256 of each one's DER, in hexadecimal.
using Certificates = std::map<int, std::string>;

/// What a stored camera is known again by at another address. Each is "" as long as it is not known.
struct CameraIdentity {
  std::string endpoint;  ///< its id of WS-Discovery
  std::string serial;    ///< serial number, as it says itself

  bool operator==(const CameraIdentity&) const = default;
};

/// What is wrong with a record or password.
struct RecordMistake {
  std::string member;  ///< JSON key style: "port", "sourcePath", "password"
  std::string text;    ///< for users, without the value
};

/// The first mistake that keeps a record from being stored, if there is one.
std::optional<RecordMistake> FindMistake(const CameraRecord& camera, const std::string& password);

/// Whether the stored password of a camera may stay when its record changes: not when it would go to another address,
/// log in somebody else, or open another path.
bool KeepsPassword(const CameraRecord& before, const CameraRecord& after);

/// Whom a key is for.
enum class TrustKind {
  kClient,       ///< a trusted client
  kServerGroup,  ///< the recording servers of this recorder's group
};

struct TrustedKey {
  std::string name;
  SecretKey key;
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

  /// Stores a camera (`camera.id` is ignored) and returns its id. A record with a mistake is a RecordsError.
  int Add(const CameraRecord& camera, const std::string& password);
  /// All cameras by id.
  std::vector<CameraRecord> List() const;
  /// All cameras of a model by id.
  std::vector<CameraRecord> ListModel(const std::string& vendor, const std::string& model) const;
  std::optional<CameraRecord> Find(int id) const;
  /// The stored password of a camera that was found here; the caller wipes it.
  std::string Password(const CameraRecord& camera) const;

  /// The following are false when there is no such camera.
  bool Remove(int id);
  bool SetPassword(int id, const std::string& password);
  bool SetStatus(int id, CAM_CONN_STATUS status);
  /// Stores what `change` makes of the record, which nobody else changes meanwhile. Without a `password` the stored one
  /// stays; where it may not (see KeepsPassword), that is a RecordsError. At another address no login has worked and no
  /// certificate was seen yet.
  bool Change(int id, const std::function<void(CameraRecord&)>& change, const std::optional<std::string>& password);
  /// Keeps `method` as the strongest login that worked, unless a stronger one did.
  bool RaiseLogin(int id, LoginMethod method);
  /// As if no login had worked yet.
  bool ForgetLogin(int id);

  /// The certificates that are pinned for a camera.
  Certificates PinnedCertificates(int id) const;
  /// The one that is pinned for `port` of a camera, which is `certificate` where there was none. Of ports other than
  /// the record's own, those beyond the first kMostPinnedPorts stay without one.
  std::string PinCertificate(int id, int port, const std::string& certificate);
  /// As if no certificate had been seen yet.
  void ForgetCertificates(int id);

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
