#pragma once

#include <array>
#include <string_view>

namespace recorder {

/// A method and the parameters that `call METHOD key=value` takes, with blanks between them. Lists and what carries a
/// secret are not among them. A test compares the whole with docs/openapi.yaml.
struct MethodParameters {
  std::string_view method;
  std::string_view names;
};

inline constexpr std::array<MethodParameters, 8> kMethodParameters = {{
    {"CameraModelEnum", ""},
    {"EnumExistedCamCap", ""},
    {"CamCap", "vendor model channel"},
    {"CamCapRemote", "camIP camPort camUser vendor model camChannel camCapCmd camId"},
    {"CameraTest", "camIP camPort camUserName camModel camChannel camSourcePath camVideoType camStreamingType camId"},
    {"CamBatAddVerify", ""},
    {"GetSnapshot", "camIP camPort camUserName camModel camChannel camSourcePath camVideoType camId jsonResponse"},
    {"CamCapUserDefineReso", "camIP camPort camUser vendor model camChannel camSourcePath camVdoType camId"},
}};

/// Parameters that carry a secret, which must not stand in a list of processes.
inline constexpr std::array<std::string_view, 5> kSecretParameters = {"camPass", "camPassword", "camPassWord",
                                                                      "camList", "cookie"};

}  // namespace recorder
