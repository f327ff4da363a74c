#pragma once

#include <optional>
#include <type_traits>
#include <utility>

#include "interface/handlerutils.h"
#include "platform/memfunc.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// What a functor returns for a method's own result: of an outcome its number, else the result itself.
template <class R>
using FunctorResult = std::conditional_t<std::is_same_v<R, Outcome>, int, R>;

/// The outcome whose number a functor returned; nothing for a number that is none.
inline std::optional<Outcome> OutcomeOfNumber(int number) {
  const bool isOutcome = number >= 0 && number < static_cast<int>(Outcome::kCount);
  return isOutcome ? std::optional(static_cast<Outcome>(number)) : std::nullopt;
}

/// Wraps one member function, such as &CameraDriver::NeedsSourcePath, for calls through a Functor.
template <auto kMethod>
class MemberFunction;

template <class Object, class R, class... Args, R (Object::*kMethod)(Args...)>
class MemberFunction<kMethod> : public MemFuncInterface<FunctorResult<R>, Args...> {
 public:
  FunctorResult<R> Invoke(DPObjectBase* object, Args... args) override {
    return static_cast<FunctorResult<R>>((static_cast<Object*>(object)->*kMethod)(std::forward<Args>(args)...));
  }
};

template <class Method>
struct ObjectOf;

template <class Object, class R, class... Args>
struct ObjectOf<R (Object::*)(Args...)> {
  using Type = Object;
};

/// Makes `functor` call `kMethod` on `object`, which stays the caller's and may be null: such calls are logged under
/// `name`. A signature that does not fit the functor's does not compile.
template <auto kMethod, class... Signature>
void Register(Functor<Signature...>& functor, typename ObjectOf<decltype(kMethod)>::Type* object, const char* name) {
  static_assert(std::is_base_of_v<MemFuncInterface<Signature...>, MemberFunction<kMethod>>);
  static MemberFunction<kMethod> wrapper;  // has no state
  functor.wrapper = &wrapper;
  functor.object = object;
  functor.name = name;
}

}  // namespace recorder
