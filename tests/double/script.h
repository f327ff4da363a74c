#pragma once

#include <json/json.h>

#include <list>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/webapi.h"

// The language of the module's tests: what the recorder's libraries answer, and what they were asked.
//
// Every call into the double is one line of its thread's transcript: the function's name and its arguments as JSON.
// Worker n is the n-th thread that the code under test started in this case; worker 0 is the test's own thread. Any
// thread may call anything here.

struct NORV::APIRequest::Impl {
  std::string method;
  std::map<std::string, Json::Value> params;
};
struct NORV::APIResponse::Impl {
  Json::Value data;  ///< of a success
};

namespace scripted {

// Answers that are not values.
inline constexpr char kThrow[] = "<throw>";  ///< the call throws std::runtime_error
inline constexpr char kFails[] = "<fails>";  ///< "pthread_create #n" or "pthread_join #n" fails

/// The members of a JSON object.
std::map<std::string, Json::Value> Members(const std::string& json);

/// An array. As an answer: a result followed by the call's outputs.
template <class... Items>
Json::Value List(const Items&... items) {
  Json::Value list{Json::arrayValue};
  (list.append(Json::Value(items)), ...);
  return list;
}

/// Forgets the last case. Everything now answers as in a healthy recorder with a healthy camera, to a logged-in caller.
void Reset();

/// Sets a function's answers, in order; the last one goes on for ever. "name@n": for calls of worker n only.
void Script(const std::string& function, const std::vector<Json::Value>& answers);

/// A worker's lines, each with its newline.
std::string Transcript(int worker = 0);

/// Ends the case: lets workers whose join failed finish (they run only now) and names what went wrong, such as calls
/// that nobody scripted. What was not freed is the leak checker's to tell.
std::vector<std::string> Finish();

/// A raw string as a transcript: one call a line or several with "; " between, without indentation and empty lines.
std::string Lines(const std::string& text);

// --- For the double itself ------------------------------------------------------------------------------------------

void Write(const std::string& line);
void WriteLine(const std::string& function, const Json::Value& arguments);
void Fault(const std::string& what);
Json::Value Answer(const std::string& function);
/// True when the answer scripted for `function` is `marker`; consumes nothing.
bool IsScripted(const std::string& function, const char* marker);
/// Number of the worker that calls.
inline thread_local int currentWorker = 0;
/// Joins the workers whose join failed, and checks that every other one was joined.
void FinishProcess();

/// Hands out the picture of an answer [result, bytes], which the code under test has to free, and returns the result.
/// An answer that is a result alone leaves both slots untouched.
int TakePicture(const Json::Value& answer, unsigned char** picture, int* size);

/// `length` bytes as a text, or null.
Json::Value Bytes(const unsigned char* data, int length);
std::string Compact(const Json::Value& value);

template <class... Args>
void WriteCall(const std::string& function, const Args&... args) {
  WriteLine(function, List(args...));
}

template <class T>
void Convert(const Json::Value& from, T& to) {
  to = from.as<T>();
}
inline void Convert(const Json::Value& from, Json::Value& to) { to = from; }
inline void Convert(const Json::Value& from, std::list<std::string>& to) {
  for (const Json::Value& item : from) to.push_back(item.asString());
}

/// Takes the next output of an answer into an argument that is a reference to something variable.
template <class Arg>
void Fill(Arg&& argument, const Json::Value& answer, Json::ArrayIndex& next) {
  if constexpr (std::is_lvalue_reference_v<Arg> && !std::is_const_v<std::remove_reference_t<Arg>>) {
    if (answer.isArray() && next < answer.size()) Convert(answer[next++], argument);
  }
}

/// Records a call and answers it: with the answer's result, and its outputs in variable arguments. As a JSON value the
/// whole answer is the result.
template <class R = Json::Value, class... Args>
R Call(const std::string& function, Args&&... args) {
  constexpr bool kWhole = std::is_same_v<R, Json::Value>;
  WriteCall(function, args...);
  const Json::Value answer = Answer(function);
  [[maybe_unused]] Json::ArrayIndex next = 1;
  if constexpr (!kWhole) (Fill<Args>(std::forward<Args>(args), answer, next), ...);
  R result{};
  Convert(answer.isArray() && !kWhole ? answer[0] : answer, result);
  return result;
}

/// One request and its response.
struct Exchange {
  NORV::APIRequest::Impl requestImpl = {};
  NORV::APIResponse::Impl responseImpl = {};
  NORV::APIRequest request{&requestImpl};
  NORV::APIResponse response{&responseImpl};
};
}  // namespace scripted
