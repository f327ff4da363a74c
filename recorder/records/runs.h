#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "recorder/records/camera_record.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// Where a run of tests stands.
enum class RunState {
  kOpen,       ///< takes rows
  kStarted,    ///< its rows are tested
  kEnded,      ///< all are
  kCancelled,  ///< by a user: what was waiting then is not tested any more
  kExpired,    ///< the same, since it was as old as kRunPasswordsKept
};

/// The name by which clients are told, such as "started".
std::string_view NameOf(RunState state);

/// What a row comes to where nobody knows: the recorder stopped, or the process that tested it. It stands where
/// otherwise the name of an Outcome does.
inline constexpr char kUnknownResult[] = "unknown";

/// A run and how far it has come. Times are in seconds since 1970; 0: not yet.
struct Run {
  int id = 0;
  RunState state = RunState::kOpen;
  std::string owner;  ///< who opened it
  std::int64_t openedAt = 0;
  std::int64_t startedAt = 0;
  std::int64_t endedAt = 0;
  int rows = 0;
  int atHand = 0;                      ///< that are being tested
  std::map<std::string, int> results;  ///< how many rows came to each; the others are waiting or at hand
};

/// The camera of a row, whose id is its number in the run, from 1.
struct RunCamera : CameraRecord {
  std::string codec = {};       ///< such as "H.264"; "": any
  std::string streamType = {};  ///< "RTSP", "HTTP", or "" for either
};

/// A row that is to be tested. Whoever has one wipes the password.
struct RunRow {
  RunCamera camera;
  std::string password;
};

void WipePasswords(std::vector<RunRow>& rows);

/// A row as far as it has come.
struct RunResult {
  RunCamera camera;
  bool isAtHand = false;
  std::string result = {};  ///< the name of an Outcome, or kUnknownResult; "": none yet
  std::int64_t at = 0;      ///< when the test began, in seconds since 1970
  std::chrono::milliseconds time{0};
};

/// What a test came to.
struct RowOutcome {
  int number = 0;
  std::optional<Outcome> outcome = std::nullopt;  ///< nothing: nobody knows
  std::chrono::milliseconds time{0};
};

/// What became of a change of a run.
enum class RunChange {
  kDone,
  kNoRun,       ///< there is none of that id
  kNotOpen,     ///< it takes no rows any more
  kOtherCount,  ///< it has another number of rows than the caller thinks
  kTooMany,     ///< it would have more than kMostRunRows
  kNoRows,      ///< there is nothing to start
};

inline constexpr int kMostRunRows = 100'000;
/// Runs that are kept: a few hundred megabytes at most.
inline constexpr int kMostRuns = 20;
/// After opening a run, passwords of rows that still wait are wiped; after its end, the run is forgotten.
inline constexpr std::chrono::hours kRunPasswordsKept{24};
inline constexpr std::chrono::hours kRunsKept{7 * 24};

/// Long lists of cameras that are tested in the background: runs.db (mode 0600) in the state folder. The workers fill
/// and read them, recorder-watch tests their rows.
///
/// Owner:   an object holds one database connection. Make one a step; no process is copied while it has one.
/// Thread:  one at a time uses an object. Objects of any threads and processes work side by side.
/// Time:    a change is on the disk when the call returns.
/// Failure: throws RecordsError, or std::system_error for folder and key file.
/// Secrets: a row's password is sealed with the key of the records and bound to the row's place and address. It is
///          overwritten as soon as the row has a result, its run is cancelled or kRunPasswordsKept is over; what the
///          write-ahead log still has of it goes at the end of the run.
class Runs {
 public:
  /// False where there never was a run. Any thread.
  static bool AreThere(const std::filesystem::path& stateFolder);

  /// Opens the file, makes what is missing, and wipes and forgets what has been kept long enough.
  explicit Runs(const std::filesystem::path& stateFolder);
  ~Runs();
  Runs(const Runs&) = delete;
  Runs& operator=(const Runs&) = delete;

  /// Does what opening does about time, as if it were `now`, in seconds since 1970.
  void Expire(std::int64_t now);

  // --- For whoever asks for a run ---

  /// Opens one; nothing where there are kMostRuns.
  std::optional<int> Open(const std::string& owner);
  /// Adds rows at the end, all or none, whose mistakes the caller has looked for; their ids are ignored. `after`: how
  /// many rows the run must have, so that a list that was sent twice is added once.
  RunChange Add(int id, const std::vector<RunRow>& rows, std::optional<int> after = std::nullopt);
  RunChange Start(int id);
  /// Of a run that is open or started: nothing of it begins any more, what is at hand ends. Any other is forgotten.
  RunChange Cancel(int id);

  std::optional<Run> Find(int id) const;
  /// All by id.
  std::vector<Run> List() const;
  /// Rows with numbers above `after`, in order, at most `most`.
  std::vector<RunResult> Results(int id, int after, int most) const;

  // --- For the one process that tests rows ---

  /// Of rows that were at hand when the process before ended nobody knows: they are never tried again.
  void Recover();
  /// The started run that was opened first.
  std::optional<int> FindStarted() const;
  /// Its rows that wait.
  std::vector<RunCamera> Waiting(int id) const;
  /// The hosts (see NormalizedHost) whose last row in any run came to Outcome::kTimedOut.
  std::set<std::string> SilentHosts() const;
  /// Keeps that those of these rows are at hand that were waiting, and returns them: all that may be tested now.
  /// One whose password cannot be opened comes to Outcome::kRecorderFailed. Nothing where the run is over.
  std::optional<std::vector<RunRow>> Begin(int id, const std::vector<int>& numbers);
  /// Keeps what rows came to. Where a login may have been refused, or nobody knows, the same counts for all that wait
  /// with that password for that login (see LoginOf): cameras lock users out. A run without further rows ends.
  void Finish(int id, const std::vector<RowOutcome>& outcomes);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace recorder
