#include "tests/double/script.h"

#include <deque>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace scripted {
namespace {

// The codec is H.264. Packetize: the [flags, frame] of each unit that comes out.
const char kUsualAnswers[] = R"({
  "IsCmsHost": false, "IsAuthorized": true, "IsVTRunning": true, "IsAuthPairMatch": true, "IsAuthByPairMatch": true,
  "GetCookie": "12:34", "GetCamModelEnumInfo": [true, ["X100"]], "EnumExistedCameraCap": [true, ["a", "b"]],
  "GetVideoType": 3, "GetStreamingType": 2, "IsGenericApi": false, "GetRealCapFilePath": "/kept",
  "GetCamRealPass": "secret", "GetCamCapFile": [0, "/cap"], "LoadCapability": 0, "GetChannelList": [["8", "9"]],
  "GetDefaultChannel": "3", "GetListForCodec": [["640x480", "320x240"]], "GetDefaultVideoType": 5,
  "GetStreamingTypeFor": 1, "GetCamCap": [-1, "document"], "IsValid": true, "NeedsSourcePath": false,
  "HasStreamPath": false, "GetStreamPath": [0, "/live", 8554], "VerifyConnection": 0, "RetDevApiToRetCV": 0,
  "Verify": 0, "GetCamConnStatus": 1, "SelectVideoType": -1, "GetSnapshotPath": [0, "/shot", 8080, 1],
  "SnapshotGetFromAPI": [0, "jpg"], "ReadContentFromFileToBuf": [0, "png"], "HttpBase64EncodeUnsigned": "base64",
  "GetJpegReso": [1280, 720], "NextPartInfo": 0, "GetVideoFormat": [-1, 0, 1748121140, "cfg"], "Init": [-1, true],
  "GetImgContentInfo": [3, 1000, 0], "GetCurTimestamp": 5000000, "FetchContent": [0, "abc"],
  "Packetize": [[2, "key"]], "DoFFMpegGetJpeg": [0, "decoded"]})";

struct State {
  std::map<int, std::string> lines;  // by worker
  std::map<std::string, std::deque<Json::Value>> answers;
  std::vector<std::string> faults;
};

/// The state, for one thread at a time.
struct Locked {
  State* operator->() const { return state; }
  static inline State* const state = new State;
  static inline std::mutex mutex;
  std::unique_lock<std::mutex> lock{mutex};
};

std::deque<Json::Value>* FindAnswers(const Locked& state, const std::string& function) {
  for (const std::string& name : {function + "@" + std::to_string(currentWorker), function}) {
    const auto found = state->answers.find(name);
    if (found != state->answers.end()) return &found->second;
  }
  return nullptr;
}

}  // namespace

std::map<std::string, Json::Value> Members(const std::string& json) {
  Json::Value object;
  std::istringstream{json} >> object;
  std::map<std::string, Json::Value> members;
  for (const std::string& name : object.getMemberNames()) members[name] = object[name];
  return members;
}

void Reset() {
  const auto usual = Members(kUsualAnswers);
  const Locked state;
  state->lines.clear();
  state->answers.clear();
  for (const auto& [name, answer] : usual) state->answers[name] = {answer};
}

void Script(const std::string& function, const std::vector<Json::Value>& answers) {
  Locked()->answers[function] = {answers.begin(), answers.end()};
}

std::string Transcript(int worker) { return Locked()->lines[worker]; }

std::vector<std::string> Finish() {
  FinishProcess();
  const Locked state;
  return std::exchange(state->faults, {});
}

std::string Lines(const std::string& text) {
  std::string lines = text;
  for (size_t at = 0; (at = lines.find("; ", at)) != std::string::npos;) lines[at] = '\n';
  std::istringstream stream{lines};
  std::string result;
  for (std::string line; std::getline(stream >> std::ws, line);) result += line + "\n";
  return result;
}

void Write(const std::string& line) { Locked()->lines[currentWorker] += line + "\n"; }
void WriteLine(const std::string& function, const Json::Value& arguments) {
  const std::string list = Compact(arguments);
  Write(function + "(" + list.substr(1, list.size() - 2) + ")");
}
void Fault(const std::string& what) { Locked()->faults.push_back(what); }

Json::Value Answer(const std::string& function) {
  const Locked state;
  auto* answers = FindAnswers(state, function);
  if (answers == nullptr) return state->faults.push_back("nobody scripted " + function), Json::Value();
  Json::Value answer = answers->front();
  if (answers->size() > 1) answers->pop_front();
  if (answer == Json::Value(kThrow)) throw std::runtime_error(function);
  return answer;
}

bool IsScripted(const std::string& function, const char* marker) {
  const Locked state;
  const auto* answers = FindAnswers(state, function);
  return answers != nullptr && answers->front() == Json::Value(marker);
}

Json::Value Bytes(const unsigned char* data, int length) {
  return data == nullptr ? Json::Value() : std::string{reinterpret_cast<const char*>(data), size_t(length)};
}

std::string Compact(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  return Json::writeString(builder, value);
}

}  // namespace scripted
