#include "platform/device.h"
#include "tests/cameracap/request.h"

namespace {

/// The line of a checked call that could not be made.
std::string BadCall(int line, const std::string& name, const std::string& cause) {
  return "log(\"interface/handlerutils:" + std::to_string(line) + "\",\"operator()\",\"[" + name + "] Error: " + cause +
         "\\n\"); ";
}
const std::string kNullObject = "Failed to run functor with DPObjectBase as NULL.";
const std::string kNotRegistered =
    "Some Functor is not registered properly. Check the template argument list and Function ID.";

/// Makes calls that cannot be made: with no function, with one of another signature, with no object.
template <class R, class... Types>
void ExpectNeutral(const Functor<R, Types...>& functor, int line, MemFuncBase* other, auto... args) {
  Reset();
  const auto call = [&](MemFuncBase* wrapper, DPObjectBase* object) {
    EXPECT_EQ((Functor<R, Types...>{wrapper, object, functor.name}(args...)), R{});
  };
  call(nullptr, functor.object);
  call(other, functor.object);
  call(other, nullptr);
  call(functor.wrapper, nullptr);
  const std::string nullObject = BadCall(line, functor.name, kNullObject);
  const std::string notRegistered = BadCall(line + 3, functor.name, kNotRegistered);
  EXPECT_EQ(Transcript(), Lines(notRegistered + notRegistered + nullObject + nullObject));
}

TEST_F(ModuleTest, CallThatCannotBeMadeIsLogged) {
  const CamCapHandler cap;
  const DeviceAPIHandler api;
  ExpectNeutral(api.HasStreamPath, 514, api.VerifyConnection.wrapper);
  ExpectNeutral(api.VerifyConnection, 514, api.HasStreamPath.wrapper);
  ExpectNeutral(cap.GetDefaultChannel, 514, cap.GetChannelList.wrapper);
  ExpectNeutral(cap.GetChannelList, 514, cap.GetDefaultChannel.wrapper);
  ExpectNeutral(cap.GetListForCodec, 495, cap.GetStreamingTypeFor.wrapper, 1);
  ExpectNeutral(api.GetStreamPath, 476, api.SelectVideoType.wrapper, std::string(), 1);
  ExpectNeutral(api.GetSnapshotPath, 456, api.GetStreamPath.wrapper, std::string(), 1, 1);
  ExpectNeutral(cap.LoadCapability, 416, cap.GetDefaultChannel.wrapper, 1, "a", "b", "c", "d");
}

}  // namespace
