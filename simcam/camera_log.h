#pragma once

#include <deque>
#include <map>
#include <mutex>
#include <string>

#include "simcam/request.h"

namespace simcam {

/// What came to one camera, for GET /sim/log. Any thread. Holds paths and methods, never a login.
class CameraLog {
 public:
  void CountConnection(int change = 1);
  void CountRequest(const Request& request);
  /// `action`: what a SOAP request asks for.
  void CountRequest(const std::string& protocol, const std::string& method, const std::string& path, bool withLogin,
                    const std::string& action = {});
  /// So many connections are open at once.
  void CountOpen(int connections);
  void CountLogin(bool accepted);
  /// The user's name came with a login that was refused.
  void CountRefused(const std::string& user);
  void CountSession();
  void CountPli();
  /// A clip of so many kbit/s is played.
  void TakeBitRate(int kbitPerSecond);

  /// {"connections", "mostConnections", "logins", "refusedLogins", "refusedUsers": how often each was, "sessions",
  /// "pli", "bitRate": of the last clip, 0 before, "requestCount", "requests": the last 200}.
  [[nodiscard]] std::string ToJson() const;

 private:
  struct Line {
    std::string protocol;
    std::string method;
    std::string path;
    bool withLogin;
    std::string action;
  };

  mutable std::mutex mutex_;
  int connections_ = 0;
  int mostConnections_ = 0;
  int logins_ = 0;
  int refusedLogins_ = 0;
  std::map<std::string, int> refusedUsers_;
  int sessions_ = 0;
  int pli_ = 0;
  int bitRate_ = 0;
  int requestCount_ = 0;
  std::deque<Line> lines_;
};

}  // namespace simcam
