#pragma once

#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "recorder/utility/handle.h"

namespace recorder {

/// A request of RTSP or HTTP.
struct Question {
  std::string method = {};
  std::string path = {};
  std::string action = {};  ///< of SOAP
  std::string login = {};   ///< the scheme of its login, "token", or ""
  std::string body = {};
  int number = 0;  ///< from 1, at this port
};

struct Answer {
  int status = 0;  ///< 0: none, the connection is closed
  std::string challenge = {};
  std::string body = {};  ///< of SOAP
};

struct Exchanged {
  Question asked;
  int status = 0;
};

using Script = std::function<Answer(const Question&)>;

/// A port of 127.0.0.1 that answers each request, in its own protocol, as a script says.
class ScriptedPort {
 public:
  explicit ScriptedPort(Script script);
  ~ScriptedPort();
  ScriptedPort(const ScriptedPort&) = delete;
  ScriptedPort& operator=(const ScriptedPort&) = delete;

  int Number() const { return number_; }
  std::vector<Exchanged> Log() const;

 private:
  void Accept();
  void Serve(int connection);
  std::string Take(const std::string& head, const std::string& body);

  const Script script_;
  FileDescriptor socket_;
  int number_ = 0;
  mutable std::mutex mutex_;
  std::vector<Exchanged> log_;
  std::list<std::jthread> connections_;
  std::jthread thread_;
};

}  // namespace recorder
