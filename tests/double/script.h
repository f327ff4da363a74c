#pragma once

#include <json/json.h>

#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/webapi.h"

// The language of the module's tests: what the recorder's libraries answer, and what they were asked.
//
// Every call into the double is one line of its thread's transcript. Worker n is the n-th thread that the code under
// test started in this case; worker 0 is the test's own thread. Any thread may call anything here.

namespace scripted {

// Answers that are not values.
inline constexpr char kThrow[] = "<throw>";                     ///< the call throws std::runtime_error
inline constexpr char kNoObject[] = "<no object>";              ///< the Functor of that name has no object
inline constexpr char kNoWrapper[] = "<no wrapper>";            ///< ... no registered function
inline constexpr char kWrongSignature[] = "<other signature>";  ///< ... a function of another signature

/// An array: a list of strings, or a result followed by the call's outputs.
template <class... Items>
Json::Value List(const Items&... items) {
  Json::Value list{Json::arrayValue};
  (list.append(Json::Value(items)), ...);
  return list;
}

/// JSON text as a value.
Json::Value Parse(const std::string& text);

/// Forgets the last case: no line, no fault, a logged-in caller, a recorder that is not the CMS host.
void Reset();

/// Sets a function's answers, in order; the last one goes on for ever.
void SetAnswers(int worker, const std::string& function, std::vector<Json::Value> answers);
template <class... Answers>
void Script(const std::string& function, const Answers&... answers) {
  SetAnswers(0, function, {Json::Value(answers)...});
}
/// As Script, for the calls of one worker only.
template <class... Answers>
void ScriptWorker(int worker, const std::string& function, const Answers&... answers) {
  SetAnswers(worker, function, {Json::Value(answers)...});
}

/// Makes the n-th thread start or the join of worker n fail. A worker whose join fails runs only when the case ends.
void FailStart(int worker);
void FailJoin(int worker, int errorNumber);
/// Thread id of a started worker as "%d" shows it.
std::string ThreadId(int worker);

/// A worker's lines, each with its newline, without those that nearly every request has: parameter reads, login, method
/// name, CMS host.
std::string Transcript(int worker = 0);
/// All lines of worker 0.
std::string FullTranscript();
/// Number of objects of a class, such as "CamCapHandler", made in this case.
int Made(const std::string& type);

/// Ends the case: lets workers whose join failed finish and names what went wrong: calls that nobody scripted, objects
/// still alive, pictures never freed.
std::vector<std::string> Finish();

/// A raw string as a transcript: one call a line or several with "; " between, without indentation and empty lines.
std::string Lines(const std::string& text);

// --- For the double itself ------------------------------------------------------------------------------------------

void Write(const std::string& line);
void Fault(const std::string& what);
Json::Value Answer(const std::string& function);
/// True when the answer scripted for `function` is `marker`; consumes nothing.
bool IsScripted(const std::string& function, const char* marker);
void CountObject(const std::string& type, int change);
/// Hands out the picture of an answer [result, bytes], which the code under test has to free, and returns the result.
/// An answer that is a result alone leaves both slots untouched.
int TakePicture(const Json::Value& answer, unsigned char** picture, int* size);
/// Number of the worker that calls.
int& CurrentWorker();
void FinishWorkers();
void FinishPictures();

std::string Quote(const char* text, size_t length);
std::string Compact(const Json::Value& value);
/// `length` bytes as text; a null pointer stays visible.
struct Bytes {
  const unsigned char* data;
  int length;
};

template <class T>
std::string Show(const T& value) {
  if constexpr (std::is_same_v<T, bool>) {
    return value ? "true" : "false";
  } else if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
    return std::to_string(static_cast<long long>(value));
  } else if constexpr (std::is_same_v<T, Json::Value>) {
    return Compact(value);
  } else if constexpr (std::is_same_v<T, Bytes>) {
    return value.data == nullptr ? "null" : Quote(reinterpret_cast<const char*>(value.data), size_t(value.length));
  } else if constexpr (std::is_same_v<T, std::nullptr_t>) {
    return "null";
  } else {
    const std::string_view text{value};
    return Quote(text.data(), text.size());
  }
}

/// Writes "function(arguments)".
template <class... Args>
void WriteCall(const std::string& function, const Args&... args) {
  std::string line;
  ((line += (line.empty() ? "" : ", ") + Show(args)), ...);
  Write(function + "(" + line + ")");
}

template <class... Args>
Json::Value Call(const std::string& function, const Args&... args) {
  WriteCall(function, args...);
  return Answer(function);
}

/// Result of an answer that is either the result or a list of result and outputs.
inline Json::Value Result(const Json::Value& answer) { return answer.isArray() ? answer[0] : answer; }

/// Lives as a member for as long as the object that it counts.
class Life {
 public:
  explicit Life(std::string type) : type_(std::move(type)) { CountObject(type_, 1); }
  ~Life() { CountObject(type_, -1); }
  Life(const Life&) = delete;
  Life& operator=(const Life&) = delete;

 private:
  std::string type_;
};

}  // namespace scripted

struct NORV::APIRequest::Impl {
  std::string method;
  std::map<std::string, Json::Value> params;
};
struct NORV::APIResponse::Impl {
  Json::Value data;  ///< of the last answer
};
