#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "recorder/request/lent_password.h"
#include "recorder/request/request_budget.h"
#include "recorder/request/row_reports.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/outcome.h"
#include "recorder/utility/rung_times.h"

namespace recorder {

/// Where a stream of a camera is.
struct StreamPlace {
  std::string host;
  int port = 0;
  std::string path;
  bool operator==(const StreamPlace&) const = default;
};

/// A stream of a camera beside its usual one.
struct OtherStream {
  int videoType = 0;        ///< a VIDEO_TYPE
  bool isOverHttp = false;  ///< else over RTSP
  StreamPlace place;
};

/// Asks a camera for a key frame of a stream by another way than that stream, with this login, until `end` at the
/// latest. False when that failed.
using KeyFrameCall = std::function<bool(const std::string& user, const std::string& password, Clock::time_point end)>;

/// What one request knows about the cameras that it contacts: the deadline and the bytes that its contacts share, the
/// failures that later calls get again without another contact (so that one wrong password is one login attempt), which
/// hosts asked for Digest, and the stored passwords that are lent to it. `net/` asks it before every connection and
/// every login.
///
/// A lent password travels as a token: a random text that stands for it in this scope and is worth nothing elsewhere.
///
/// Owner:   the request process opens one for each request, one at a time; any other thread (a batch worker) gets one
///          of its own at first use, which ends with the thread and then reports to the request's.
/// Thread:  a scope belongs to one thread.
/// Time:    steady clock.
/// Secrets: holds no password.
class RequestScope {
 public:
  /// The calling thread's scope.
  static RequestScope& Current();

  /// Opens a request's scope for the calling thread with `limit` for its camera work, in which cameras may send
  /// `bytes`. The destructor makes the one before current again, but causes of threads go on to this one.
  explicit RequestScope(std::chrono::milliseconds limit, std::uint64_t bytes = kCameraBytes);
  /// Opens the scope of a part of a request's work, in whatever thread: other threads go on reporting to the request.
  struct OfPart {};
  RequestScope(std::chrono::milliseconds limit, OfPart);
  ~RequestScope();
  RequestScope(const RequestScope&) = delete;
  RequestScope& operator=(const RequestScope&) = delete;

  /// When camera work must end, a HalfTime considered. The first call starts the clock.
  Clock::time_point Deadline();

  /// Counts `bytes` that `host` has sent. False when all is spent: the caller then ends with kNotUnderstood. That is
  /// logged once.
  bool Spend(std::uint64_t bytes, const std::string& host);

  /// From now on each request counts in `budget`, which outlives the scope.
  void CountIn(RequestBudget& budget) { budget_ = &budget; }

  /// Counts a request that is about to be sent. False when all are spent: the caller then ends with kTimedOut.
  bool TakeRequest() { return budget_ == nullptr || budget_->Take(); }

  /// Takes a lent password up and returns the token for it.
  std::string Lend(LentPassword password);

  /// What `password` is the token of; null when it is none of this scope's.
  LentPassword* FindLent(const std::string& password);
  const LentPassword* FindLent(const std::string& password) const;

  /// Adds a port that a camera itself or its own model named to what is lent for it; ignored for another host.
  void AllowPort(const std::string& host, int port);

  /// Remembers that the camera whose usual stream is at `usual` has another one in another codec.
  void RememberStream(const StreamPlace& usual, OtherStream other);

  /// The stream of `videoType` that is remembered of the camera whose usual stream is at `usual`; null: there is none
  /// but the usual one.
  const OtherStream* FindStream(const StreamPlace& usual, int videoType) const;

  /// Remembers by what call the camera is asked for a key frame of the stream at `stream`.
  void RememberKeyFrameCall(const StreamPlace& stream, KeyFrameCall call);

  /// Makes that call, if there is one. One that fails is not made again; how it failed is not remembered for other
  /// contacts.
  void CallForKeyFrame(const StreamPlace& stream, const std::string& user, const std::string& password,
                       Clock::time_point end);

  /// Says that the request names no codec, whatever the module hands on as one.
  void TakeAnyCodec() { takesAnyCodec_ = true; }
  bool TakesAnyCodec() const { return takesAnyCodec_; }

  /// Remembers that something at `host` asked for Digest: from then on no login by Basic may go there, to any port.
  void RememberDigest(const std::string& host);
  bool KnowsDigest(const std::string& host) const;

  /// Says that a login goes out to a camera, and that a camera took one.
  void SendLogin() { hasSentLogin_ = true; }
  void TakeLogin() {
    isLoginTaken_ = true;
    if (whenLoginTaken_) whenLoginTaken_();
  }
  bool HasSentLogin() const { return hasSentLogin_; }
  bool IsLoginTaken() const { return isLoginTaken_; }

  /// Calls `call` each time when a camera has taken a login.
  void WhenLoginTaken(std::function<void()> call) { whenLoginTaken_ = std::move(call); }

  /// Asked before contacting `host`: the failure to report without a contact, if there is one. That is a spent
  /// deadline, spent bytes (not understood), an earlier refused login of `user` or time-out at this host, or a token of
  /// a password that is not lent for this (a refused login). Host names and addresses are compared as text, without
  /// regard to letter case, brackets or a final dot.
  std::optional<Outcome> Refusal(const std::string& host, int port, const std::string& user,
                                 const std::string& password) const;

  /// Remembers how a contact failed, if that answers later contacts too (Reach::kRequest).
  void Remember(const std::string& host, const std::string& user, Outcome outcome);

  /// How asking the camera that `key` stands for failed in this request, if it did.
  std::optional<Outcome> FailedAsking(const std::string& key) const;
  void RememberFailedAsking(const std::string& key, Outcome outcome) { failedAskings_.try_emplace(key, outcome); }

  /// True once the request works: it has named a camera, contacted one, or said how that ended.
  bool HasBegun() const { return deadline_ || cause_ || camera_ != CameraEntry{}; }

  /// Says for which camera of the request the work is that follows.
  void WorkFor(CameraEntry camera) { camera_ = std::move(camera); }

  /// Says how the work has ended so far; the last word counts.
  void SetCause(Outcome outcome) { cause_ = outcome; }

  /// What SetCause was told, if it was, as people are told.
  std::optional<Outcome> Cause() const { return cause_ ? std::optional(Told(*cause_)) : std::nullopt; }

  /// Says that a stored password could not be had for a reason of the recorder's own. Methods go on as if the login was
  /// refused.
  void FailLending() { hasFailedLending_ = true; }

  /// What people are told of an outcome: not that a camera refused a login which it never got.
  Outcome Told(Outcome outcome) const;

  /// The times of the work of this thread, for the log.
  RungTimes& Rungs() { return rungs_; }

  /// The cameras that other threads worked for while this scope was the request's, and how that ended. Complete for
  /// threads that have ended.
  std::vector<RowReport> Reports() const { return reports_->All(); }

 private:
  friend class HalfTime;

  struct OfThread {};
  RequestScope(std::chrono::milliseconds limit, OfThread);

  std::chrono::milliseconds limit_;
  std::optional<Clock::time_point> deadline_;
  std::optional<Clock::time_point> share_;  // ends before the deadline
  std::uint64_t bytesLeft_;
  RequestBudget* budget_ = nullptr;           // null: as many requests as there is time for
  bool isSpent_ = false;                      // more came than there was left
  std::map<std::string, LentPassword> lent_;  // by token
  std::set<std::string> digestHosts_;
  bool hasFailedLending_ = false;
  bool hasSentLogin_ = false;
  bool isLoginTaken_ = false;
  std::function<void()> whenLoginTaken_;
  std::map<std::pair<std::string, std::string>, Outcome> failures_;  // by host and user
  std::map<std::string, Outcome> failedAskings_;
  std::vector<std::pair<StreamPlace, OtherStream>> streams_;         // by the usual one
  std::vector<std::pair<StreamPlace, KeyFrameCall>> keyFrameCalls_;  // one a stream
  bool takesAnyCodec_ = false;
  CameraEntry camera_;
  std::optional<Outcome> cause_;
  RungTimes rungs_;
  std::shared_ptr<RowReports> reports_;  // of the request, also for a thread's scope
  bool isOfThread_ = false;
  RequestScope* previous_;
};

/// While it lives, camera work of the calling thread has half of the time that is left, so that there is some for what
/// comes after it. What times out by that is not remembered, since it says nothing of later contacts.
class HalfTime {
 public:
  HalfTime();
  ~HalfTime();
  HalfTime(const HalfTime&) = delete;
  HalfTime& operator=(const HalfTime&) = delete;

  /// When half of the time that is left will be over.
  static Clock::time_point End();

 private:
  RequestScope& scope_;
};

}  // namespace recorder
