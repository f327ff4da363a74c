#include "recorder/http/request_note.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "recorder/utility/counts.h"
#include "recorder/utility/log.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

constexpr std::size_t kLongestMethod = 100;

std::string VariableOf(const Exchange& exchange, const char* name) {
  const char* value = exchange.variable(name);
  return value == nullptr ? "" : value;
}

/// Whoever checks a login is told the whole address alone (FastCGI 1.0 section 6.3).
std::string PathOf(const Exchange& exchange) {
  const std::string path = VariableOf(exchange, "SCRIPT_NAME") + VariableOf(exchange, "PATH_INFO");
  const std::string address = VariableOf(exchange, "REQUEST_URI");
  return path.empty() ? address.substr(0, address.find('?')) : path;
}

bool IsOfModule(std::string_view path) { return path.starts_with("/api/") || path.starts_with("/trusted/"); }

/// What is no address of ours may be of any length.
std::string MethodOf(const std::string& verb, const std::string& path) {
  const std::string method = IsOfModule(path) ? path.substr(path.rfind('/') + 1) : verb + ' ' + path;
  return method.substr(0, kLongestMethod);
}

/// 200 where the answer has no such line first.
long StatusOf(std::string_view answer) {
  constexpr std::string_view kStatus = "Status: ";
  if (!answer.starts_with(kStatus)) return 200;
  return ParseNumber<int>(answer.substr(kStatus.size(), 3)).value_or(0);
}

/// Of a list, how often there is each: "ok:8,timedOut:2".
std::string Folded(const std::string& cause) {
  if (cause.find(',') == std::string::npos) return cause;
  std::map<std::string, int> counts;
  for (const std::string_view part : Split(cause, ',')) ++counts[std::string(Trimmed(part))];
  std::string text;
  for (const auto& [name, count] : counts) text += (text.empty() ? "" : ",") + name + ':' + std::to_string(count);
  return text;
}

std::int64_t MillisecondsOf(std::chrono::microseconds time) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

void Count(const RequestNote& note, long status, std::chrono::microseconds time) {
  Counts& counts = SharedCounts();
  counts.AddRequest(note.method, status);
  if (note.isTimed) counts.AddTime(time);
  if (note.hasLogin && (status == 401 || status == 429)) ++counts.refusedLogins;
  const auto keyFrame = note.rungs.Of(Rung::kKeyFrame);
  if (keyFrame.count() > 0) counts.keyFrames.Add(keyFrame);
}

void Log(const RequestNote& note, long status, std::chrono::microseconds time) {
  std::vector<LogField> fields = {{"method", note.method}, {"status", std::int64_t{status}}};
  if (!note.user.empty()) fields.emplace_back("user", note.user);
  if (!note.cause.empty()) fields.emplace_back("cause", Folded(note.cause));
  fields.emplace_back("ms", MillisecondsOf(time));
  for (int i = 1; i < static_cast<int>(Rung::kCount); ++i) {
    const auto rung = static_cast<Rung>(i);
    const auto part = note.rungs.Of(rung);
    if (part.count() > 0) fields.emplace_back(NameOf(rung), MillisecondsOf(part));
  }
  LogNote("request", fields);
}

}  // namespace

RequestNote NoteOf(const Exchange& exchange) {
  return {.method = MethodOf(VariableOf(exchange, "REQUEST_METHOD"), PathOf(exchange))};
}

void TakeDown(const RequestNote& note, std::string_view answer) {
  const long status = StatusOf(answer);
  if (note.isQuiet && status == 200) return;
  const auto time = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - note.begin);
  Count(note, status, time);
  Log(note, status, time);
}

}  // namespace recorder
