#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "recorder/records/records.h"
#include "recorder/utility/login_method.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// The camera that a request wants to log in to.
struct WantedCamera {
  std::string vendor;
  std::string model;
  std::string host;
  int port = 0;
  std::string user;
  std::optional<std::string> sourcePath;  ///< nothing: the work that follows uses none
  std::string defaultChannel;             ///< of the model; "" when it is not known, then any will do
};

/// A stream of a stored camera, as what a request may want.
struct Lender {
  CameraRecord camera;  ///< with vendor, model, channel and source path of the stream; the port is the record's own
  int port = 0;         ///< that the stream is asked at
};

/// A stored password that is lent to one request, which never gets to see it. It can do nothing but log in to the
/// camera of its record: the request has to want vendor, model, host, port, user and source path as the record has
/// them, or, where it names the record by id, one of its further streams.
///
/// Thread:  one, that of the request.
/// Failure: nothing throws but std::bad_alloc; why a password is not lent is logged, once for each reason.
/// Secrets: holds records, no password. It is decrypted for a login at the moment at which that is made.
class LentPassword {
 public:
  /// Of one of `cameras`. `channel`: the one that the request names ("": the model's default one), which the record
  /// has to have, unless its own is "", which is any.
  LentPassword(const std::vector<CameraRecord>& cameras, std::string channel);

  /// Of the camera that the request names by id, with its streams (see Records::Streams). The main one may be wanted in
  /// any channel, each other in its own.
  LentPassword(const CameraRecord& camera, const std::vector<CameraStream>& streams, std::string channel);

  /// Lends for the camera that `wanted` is, and for no other. Until then, and when no record fits, or several do, the
  /// password is lent for nothing.
  void LendFor(const WantedCamera& wanted);

  /// Adds a port that the camera at `host` itself or its model named; ignored for any other host.
  void AllowPort(const std::string& host, int port);

  /// True when it is lent for `user` at that address.
  bool IsFor(const std::string& host, int port, const std::string& user) const;

  /// Compares what was seen at `port`, the SHA-256 of a certificate's DER in hexadecimal, with what is pinned for it in
  /// the record; the first one is pinned. kCertificateChanged, and logged: it is another one. kRecorderFailed: the
  /// records cannot be used.
  Outcome TrustCertificate(int port, const std::string& certificate);

  /// True when a login by `method` may go to `port`: to the record's own by none that is weaker than what worked
  /// before, to one that was named by a Digest, unless the camera itself is there, as its certificate proves, and took
  /// none before, and as KeepsTls has it. `isTls`: the connection is TLS, with a certificate that is trusted. Logged if
  /// not.
  bool MayLogIn(int port, bool isTls, LoginMethod method);

  /// False, and logged, for a connection without TLS to a port that has a certificate: no login goes there.
  bool KeepsTls(int port, bool isTls);

  /// Remembers in the records that a login by `method` worked at `port`. What the own port takes is the measure for it;
  /// of any other it counts only that the camera knows Digest, since some have one protocol that is behind the others.
  void Worked(int port, LoginMethod method);

  /// The password; nothing, logged, when it is lent for nothing or cannot be decrypted. The caller wipes it.
  std::optional<std::string> Reveal() const;

 private:
  std::optional<Lender> Choose(const WantedCamera& wanted, std::string& reason) const;
  Certificates& Pinned();
  bool IsProven(int port);
  LoginMethod WeakestAt(int port, bool isTls);
  std::string ReasonAgainst(int port, LoginMethod weakest) const;
  std::string NameAt(int port) const;

  std::vector<Lender> lenders_;
  std::string channel_;
  std::optional<CameraRecord> camera_;  // with its own port
  int askedPort_ = 0;                   // of the stream that it is lent for
  std::set<int> namedPorts_;
  std::optional<Certificates> pinned_;  // for the camera, once they were asked for
  std::string lastReason_;              // why it was not lent
};

}  // namespace recorder
