#pragma once

#include <string>
#include <type_traits>
#include <utility>

#include "platform/memfunc.h"
#include "platform/utility.h"

/// Number of argument places that a signature uses.
template <class... Types>
constexpr int CountArguments() {
  return (0 + ... + (std::is_same_v<Types, NoneT> ? 0 : 1));
}

/// Calls a member function that the recorder registered, provided that object and signature are right.
///
/// Owner:   the recorder fills the three fields; what they point to stays its own and may be null.
/// Failure: a call that cannot be made costs one log line, and its caller gets the empty value of the type: false, 0,
///          "" or no entries. As a number, 0 reads as success. What the called function throws passes through.
/// Thread:  that of the object.
template <class R, class A1 = NoneT, class A2 = NoneT, class A3 = NoneT, class A4 = NoneT, class A5 = NoneT,
          class A6 = NoneT, class A7 = NoneT>
struct Functor {
  MemFuncBase* wrapper = nullptr;  ///< the registered member function
  DPObjectBase* object = nullptr;  ///< what the call is made on
  std::string name;                ///< for the log lines

  static constexpr int kArity = CountArguments<A1, A2, A3, A4, A5, A6, A7>();

  // An overload for each arity, with the line numbers under which its two failures are logged.
  R operator()() const requires(kArity == 0) { return Call<514, 517>(); }
  R operator()(A1 a1) const requires(kArity == 1) { return Call<495, 498>(std::forward<A1>(a1)); }
  R operator()(A1 a1, A2 a2) const requires(kArity == 2) {
    return Call<476, 479>(std::forward<A1>(a1), std::forward<A2>(a2));
  }
  R operator()(A1 a1, A2 a2, A3 a3) const requires(kArity == 3) {
    return Call<456, 459>(std::forward<A1>(a1), std::forward<A2>(a2), std::forward<A3>(a3));
  }
  R operator()(A1 a1, A2 a2, A3 a3, A4 a4, A5 a5) const requires(kArity == 5) {
    return Call<416, 419>(std::forward<A1>(a1), std::forward<A2>(a2), std::forward<A3>(a3), std::forward<A4>(a4),
                          std::forward<A5>(a5));
  }

 private:
  template <int kNullObjectLine, int kNotRegisteredLine, class... Args>
  R Call(Args&&... args) const {
    using Wrapper = MemFuncInterface<R, A1, A2, A3, A4, A5, A6, A7>;
    auto* function = dynamic_cast<Wrapper*>(wrapper);
    if (object == nullptr) {
      LogFailure(kNullObjectLine, "[%s] Error: Failed to run functor with DPObjectBase as NULL.\n");
      return R{};
    }
    if (function == nullptr) {
      LogFailure(kNotRegisteredLine,
                 "[%s] Error: Some Functor is not registered properly. Check the template argument list and Function "
                 "ID.\n");
      return R{};
    }
    return function->Invoke(object, std::forward<Args>(args)...);
  }

  void LogFailure(int line, const char* format) const {
    VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, "interface/handlerutils", line, "operator()", format, name.c_str());
  }
};
