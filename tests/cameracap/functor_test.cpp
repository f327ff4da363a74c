#include <functional>
#include <list>

#include "interface/handlerutils.h"
#include "tests/cameracap/request.h"

namespace {

template <class R, class... Args>
struct Registered : MemFuncInterface<R, Args...> {
  explicit Registered(std::function<R(Args...)> body) : function(std::move(body)) {}
  R Invoke(DPObjectBase* object, Args... args) override {
    calledOn = object;
    return function(std::forward<Args>(args)...);
  }

  std::function<R(Args...)> function;
  DPObjectBase* calledOn = nullptr;
};

struct FunctorTest : ModuleTest {
  template <class R, class... Args>
  void ExpectNeutral(int nullObjectLine, int notRegisteredLine, Args... args) {
    scripted::Reset();
    Registered<R, Args...> right{[](Args...) { return ADD_FAILURE() << "called", R{}; }};
    Registered<unsigned> other{[] { return ADD_FAILURE() << "called", 1U; }};
    DPObjectBase object;
    const auto call = [&](MemFuncBase* wrapper, DPObjectBase* target) {
      Functor<R, Args...> functor;
      functor.wrapper = wrapper;
      functor.object = target;
      functor.name = "Name";
      EXPECT_EQ(functor(args...), R{});
    };
    call(nullptr, nullptr);
    call(&right, nullptr);
    call(&other, nullptr);
    call(nullptr, &object);
    call(&other, &object);
    const std::string nullObject = NullObject(nullObjectLine, "Name");
    const std::string notRegistered = NotRegistered(notRegisteredLine, "Name");
    EXPECT_EQ(Transcript(), nullObject + nullObject + nullObject + notRegistered + notRegistered);
  }
};

TEST_F(FunctorTest, LogsACallThatCannotBeMade) {
  using std::string;
  using Strings = std::list<string>;
  string text;
  int number = 0;
  ExpectNeutral<bool>(514, 517);
  ExpectNeutral<int>(514, 517);
  ExpectNeutral<string>(514, 517);
  ExpectNeutral<Strings>(514, 517);
  ExpectNeutral<Strings, int>(495, 498, 1);
  ExpectNeutral<int, int>(495, 498, 1);
  ExpectNeutral<int, int, int>(476, 479, 1, 2);
  ExpectNeutral<int, string&, int&>(476, 479, text, number);
  ExpectNeutral<int, string&, int&, int&>(456, 459, text, number, number);
  ExpectNeutral<int, int, string, string, string, string>(416, 419, 1, "a", "b", "c", "d");
}

TEST_F(FunctorTest, PassesReferencesThroughAndCopiesValues) {
  DPObjectBase object;
  Registered<int, std::string&, int&> fill{[](std::string& path, int& port) {
    path += "/live";
    return port++;
  }};
  Functor<int, std::string&, int&> filling{&fill, &object, "Fill"};
  std::string path = "a";
  int port = 80;
  EXPECT_EQ(filling(path, port), 80);
  EXPECT_EQ(path, "a/live");
  EXPECT_EQ(port, 81);
  EXPECT_EQ(fill.calledOn, &object);

  Registered<int, int, std::string, std::string, std::string, std::string> load{
      [](int source, std::string vendor, const std::string& model, const std::string& channel,
         const std::string& file) {
        vendor += model + channel + file;
        return vendor == "vmcf" ? -source : 0;
      }};
  Functor<int, int, std::string, std::string, std::string, std::string> loading{&load, &object, "Load"};
  const std::string vendor = "v";
  EXPECT_EQ(loading(1, vendor, "m", "c", "f"), -1);
  EXPECT_EQ(vendor, "v");
  EXPECT_EQ(Transcript(), "");
}

TEST_F(FunctorTest, LetsExceptionsThrough) {
  DPObjectBase object;
  Registered<int> failing{[]() -> int { throw std::out_of_range("device"); }};
  EXPECT_THROW((Functor<int>{&failing, &object, "Fail"}()), std::out_of_range);
}

}  // namespace
