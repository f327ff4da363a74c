#pragma once

#include <json/json.h>
#include <sys/types.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "rig/http_client.h"
#include "rig/temp_folder.h"

// The real thing, end to end: web server, workers, module file and simulated cameras, all on 127.0.0.1, asked over
// HTTP.

namespace rig {

/// Where the API's methods are, for users and for trusted recorders.
inline constexpr char kApi[] = "/api/NORV.Vistrel.CameraCap/1/";
inline constexpr char kTrusted[] = "/trusted/NORV.Vistrel.CameraCap/1/";

/// Empty when it cannot be read.
std::string ReadText(const std::filesystem::path& file);
Json::Value ParseJson(const std::string& text);
std::string ToText(const Json::Value& json);

/// A child process; it is told to end with this object.
class Process {
 public:
  /// Its standard error goes to `errorFile`, or where its output goes when that is empty.
  explicit Process(std::vector<std::string> command, const std::filesystem::path& errorFile = {},
                   const std::string& input = {});
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  /// The first line that the child prints; throws when it ends without one.
  std::string ReadLine();
  /// All that the child prints until it ends by itself.
  std::string ReadAll();
  /// The exit status of a child that ends by itself.
  int Wait();

 private:
  pid_t id_ = 0;
  std::ifstream output_;
};

struct Finished {
  int status = -1;
  std::string output;  ///< standard output and error
};

/// Runs a command of this build's to its end, with `input` on its standard input.
Finished Run(const std::string& program, const std::vector<std::string>& arguments, const std::string& input = {});

/// Those of a line, for Run().
std::vector<std::string> Words(const std::string& line);

/// False when RunAlone() needs more than this user may do.
bool CanRunAlone();

/// Moves this process, and all that it starts, to a network of nothing but a loopback interface that takes multicasts,
/// where each port is free. False when this user may not.
bool EnterOwnNetwork();

/// Runs recorderctl for five seconds at most, on a machine of its own: with the simulated cameras of cameras.json in
/// `folder`, a network of nothing but a loopback interface that takes multicasts, has the address 192.0.2.1/24 as well,
/// and those of resolv.conf(5) and nsswitch.conf(5) that are in `folder`.
Finished RunAlone(const TempFolder& folder, const std::vector<std::string>& arguments, const std::string& input = {});

/// Simulated cameras, by name.
class SimCameras {
 public:
  explicit SimCameras(const Json::Value& cameras);

  int Port(const std::string& name) const { return ports_.at(name); }
  /// What the camera has seen: connections, login attempts, paths.
  Json::Value Log(const std::string& name) const { return Ask(name, "/sim/log"); }
  /// Lets it be silent from now on, or answer again.
  void TakeDown(const std::string& name) const { Ask(name, "/sim/down"); }
  void BringUp(const std::string& name) const { Ask(name, "/sim/up"); }

 private:
  std::string FirstLine() const;
  Json::Value Ask(const std::string& name, const std::string& path) const;

  TempFolder folder_;
  std::unique_ptr<Process> process_;
  std::map<std::string, int> ports_;
  std::map<std::string, std::string> addresses_;
};

/// The code of an error answer; 0 for a success; -1 when there was no such answer.
int ErrorCode(const Json::Value& answer);

struct Answer : Reply {
  explicit Answer(Reply reply);
  int Code() const { return ErrorCode(json); }

  Json::Value json;
  std::string cause;  ///< of the header Recorder-Cause
};

/// What a login by name and password looks like.
Headers LoginOf(const std::string& user, const std::string& password);

/// A recorder of its own, with one user. Limits are in milliseconds.
class TestRecorder {
 public:
  struct Options {
    int testMs = 5000;
    int pictureMs = 5000;
    int workers = 2;
    std::filesystem::path modelsFolder = SOURCE_FOLDER "/models";
    std::vector<std::string> allow = {"127.0.0.0/8", "::1"};  ///< addresses to open; simulated cameras are there
    std::vector<std::string> deny = {};
    int hashMemoryMiB = 1;  ///< cheap, since tests log in often
    int hashPasses = 1;
    int watchSeconds = 0;                   ///< how often stored cameras are checked; 0: never
    int watchSpeed = 1;                     ///< seconds of the watch's time that pass in one
    std::vector<std::string> proxies = {};  ///< that are believed whom they ask for
    std::vector<std::string> serveArguments = {};
    std::string pageFolder = {};
    std::string log = "text";
    /// What is done before it is started, instead of making its user.
    std::function<void(const TestRecorder&)> prepare = &TestRecorder::AddTester;
  };
  TestRecorder();
  explicit TestRecorder(const Options& options);

  Answer Post(const std::string& method, const Json::Value& params) const;
  Answer Get(const std::string& method, const std::string& query = {}) const;
  /// Any request, without the usual login unless `headers` carry one.
  Answer Send(const std::string& verb, const std::string& path, const Headers& headers,
              const std::string& body = {}) const {
    return Answer(Ask(verb, path, headers, body));
  }
  /// The same, without a look at what comes.
  Reply Ask(const std::string& verb, const std::string& path, const Headers& headers,
            const std::string& body = {}) const;
  Headers Login() const;
  /// Makes the user of Login().
  void AddTester() const;

  /// recorderctl with this recorder's configuration.
  Finished Control(const std::vector<std::string>& arguments, const std::string& input = {}) const;
  /// Runs "recorderctl trust add" with these arguments, waits until the web server takes requests of trusted recorders,
  /// and returns what was printed.
  std::string Trust(std::vector<std::string> arguments) const;
  /// What a trusted recorder proves itself by, as "recorderctl trust pair" makes it.
  struct Pair {
    std::string cookie;
    std::string timestamp;
  };
  Pair MakePair(std::vector<std::string> arguments) const;
  /// Stores a camera at 127.0.0.1 and returns its id.
  int AddCamera(const std::string& vendor, const std::string& model, int port, const std::string& user,
                const std::string& password, const std::string& channel = "1", const std::string& path = "") const;

  std::string Log() const { return ReadText(folder_.Path() / "log"); }
  std::filesystem::path StateFolder() const { return folder_.Path() / "state"; }
  std::filesystem::path ConfigFile() const { return folder_.Path() / "recorder.json"; }
  /// Forgets what cameras have said about themselves.
  void ForgetCameras() const { std::filesystem::remove_all(StateFolder() / "capabilities"); }
  int Port() const { return port_; }

 private:
  TempFolder folder_;
  std::unique_ptr<Process> server_;
  int port_ = 0;
};

std::string DecodeBase64(const std::string& text);

}  // namespace rig
