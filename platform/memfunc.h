#pragma once

// Wrappers around member functions of device-support objects. The recorder derives concrete ones from MemFuncInterface
// and registers them; the module only ever calls through interface/handlerutils.h, which checks them.

/// Fills the argument places that a signature does not use.
struct NoneT {};

/// Root of every object that registered functions are called on.
class DPObjectBase {
 public:
  virtual ~DPObjectBase() = default;
};

/// Root of every wrapper: the static type of a wrapper pointer, whatever its signature.
class MemFuncBase {
 public:
  virtual ~MemFuncBase() = default;
};

/// A member function that takes A1 to A7 and returns R. NoneT marks a place without an argument.
template <class R, class A1 = NoneT, class A2 = NoneT, class A3 = NoneT, class A4 = NoneT, class A5 = NoneT,
          class A6 = NoneT, class A7 = NoneT>
class MemFuncInterface;

/// `Invoke` calls the member function on `object`, which is never null and of the class the function was registered
/// for. Exceptions of the function pass through. Not thread-safe for one object.
template <class R>
class MemFuncInterface<R> : public MemFuncBase {
 public:
  virtual R Invoke(DPObjectBase* object) = 0;
};

template <class R, class A1>
class MemFuncInterface<R, A1> : public MemFuncBase {
 public:
  virtual R Invoke(DPObjectBase* object, A1 a1) = 0;
};

template <class R, class A1, class A2>
class MemFuncInterface<R, A1, A2> : public MemFuncBase {
 public:
  virtual R Invoke(DPObjectBase* object, A1 a1, A2 a2) = 0;
};

template <class R, class A1, class A2, class A3>
class MemFuncInterface<R, A1, A2, A3> : public MemFuncBase {
 public:
  virtual R Invoke(DPObjectBase* object, A1 a1, A2 a2, A3 a3) = 0;
};

template <class R, class A1, class A2, class A3, class A4, class A5>
class MemFuncInterface<R, A1, A2, A3, A4, A5> : public MemFuncBase {
 public:
  virtual R Invoke(DPObjectBase* object, A1 a1, A2 a2, A3 a3, A4 a4, A5 a5) = 0;
};
