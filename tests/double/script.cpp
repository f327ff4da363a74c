#include "tests/double/script.h"

#include <cstdio>
#include <mutex>
#include <set>
#include <sstream>
#include <stdexcept>

namespace scripted {
namespace {

struct Answers {
  std::vector<Json::Value> values;
  size_t next = 0;
};

struct State {
  std::mutex mutex;
  std::map<int, std::vector<std::string>> lines;           // by worker
  std::map<std::pair<int, std::string>, Answers> answers;  // by worker (0: any) and function
  std::map<std::string, int> made;
  std::map<std::string, int> alive;
  std::vector<std::string> faults;
};

State& TheState() {
  static auto* state = new State;  // outlives every thread
  return *state;
}

Answers* FindAnswers(State& state, const std::string& function) {
  for (const int worker : {CurrentWorker(), 0}) {
    const auto found = state.answers.find({worker, function});
    if (found != state.answers.end()) return &found->second;
  }
  return nullptr;
}

bool IsEverywhere(const std::string& line) {
  static const std::set<std::string> kFunctions{"GetParam", "IsCmsHost", "IsAuthorized", "GetAPIMethod"};
  return kFunctions.count(line.substr(0, line.find('('))) != 0;
}

std::string Join(int worker, bool all) {
  State& state = TheState();
  const std::lock_guard lock{state.mutex};
  std::string text;
  for (const std::string& line : state.lines[worker]) {
    if (all || !IsEverywhere(line)) text += line + "\n";
  }
  return text;
}

}  // namespace

Json::Value Parse(const std::string& text) {
  Json::Value value;
  std::istringstream{text} >> value;
  return value;
}

void Reset() {
  State& state = TheState();
  {
    const std::lock_guard lock{state.mutex};
    state.lines.clear();
    state.answers.clear();
    state.made.clear();
    state.alive.clear();
    state.faults.clear();
  }
  Script("IsCmsHost", false);
  Script("IsAuthorized", true);
}

void SetAnswers(int worker, const std::string& function, std::vector<Json::Value> answers) {
  State& state = TheState();
  const std::lock_guard lock{state.mutex};
  state.answers[{worker, function}] = {std::move(answers), 0};
}

std::string Transcript(int worker) { return Join(worker, false); }
std::string FullTranscript() { return Join(0, true); }

int Made(const std::string& type) {
  State& state = TheState();
  const std::lock_guard lock{state.mutex};
  return state.made[type];
}

std::vector<std::string> Finish() {
  FinishWorkers();
  FinishPictures();
  State& state = TheState();
  const std::lock_guard lock{state.mutex};
  for (const auto& [type, count] : state.alive) {
    if (count != 0) state.faults.push_back(std::to_string(count) + " of " + type + " left alive");
  }
  return std::move(state.faults);
}

std::string Lines(const std::string& text) {
  std::string lines = text;
  for (size_t at = 0; (at = lines.find("; ", at)) != std::string::npos;) lines[at] = '\n';
  std::istringstream stream{lines};
  std::string result;
  for (std::string line; std::getline(stream, line);) {
    const size_t start = line.find_first_not_of(' ');
    if (start != std::string::npos) result += line.substr(start) + "\n";
  }
  return result;
}

void Write(const std::string& line) {
  State& state = TheState();
  const std::lock_guard lock{state.mutex};
  state.lines[CurrentWorker()].push_back(line);
}

void Fault(const std::string& what) {
  State& state = TheState();
  const std::lock_guard lock{state.mutex};
  state.faults.push_back(what);
}

Json::Value Answer(const std::string& function) {
  Json::Value answer;
  {
    State& state = TheState();
    const std::lock_guard lock{state.mutex};
    Answers* answers = FindAnswers(state, function);
    if (answers == nullptr) {
      state.faults.push_back("nobody scripted " + function);
      return answer;
    }
    answer = answers->values[answers->next];
    if (answers->next + 1 < answers->values.size()) ++answers->next;
  }
  if (answer == Json::Value(kThrow)) throw std::runtime_error(function);
  return answer;
}

bool IsScripted(const std::string& function, const char* marker) {
  State& state = TheState();
  const std::lock_guard lock{state.mutex};
  const Answers* answers = FindAnswers(state, function);
  return answers != nullptr && answers->values[answers->next] == Json::Value(marker);
}

void CountObject(const std::string& type, int change) {
  State& state = TheState();
  const std::lock_guard lock{state.mutex};
  state.alive[type] += change;
  if (change > 0) ++state.made[type];
}

int& CurrentWorker() {
  thread_local int worker = 0;
  return worker;
}

std::string Quote(const char* text, size_t length) {
  std::string quoted = "\"";
  for (const char byte : std::string{text, length}) {
    const auto code = static_cast<unsigned char>(byte);
    char shown[8];
    std::snprintf(shown, sizeof shown, byte == '\n' ? "\\n" : code < 32 || code > 126 ? "\\%02x" : "%c", code);
    quoted += shown;
  }
  return quoted + "\"";
}

std::string Compact(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  return Json::writeString(builder, value);
}

}  // namespace scripted
