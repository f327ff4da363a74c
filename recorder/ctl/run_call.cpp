#include "recorder/ctl/run_call.h"

#include <unistd.h>

#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string_view>

#include "recorder/ctl/progress.h"
#include "recorder/host/stored_call.h"
#include "recorder/media/media_pool.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/outcome.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

ApiAnswer RunInSight(const ApiCall& call, const std::string& work) {
  const Progress progress(work);
  return RunCall(call);
}

/// Whether `causes`, names with commas between them, tell of a failure.
bool TellFailure(std::string_view causes) {
  while (!causes.empty()) {
    if (Trimmed(TakeUntil(causes, ',')) != NameOf(Outcome::kOk)) return true;
  }
  return false;
}

/// Tells on standard error why a camera failed, which the answer itself may not say.
void PrintCauses(const std::string& causes) {
  if (TellFailure(causes)) std::cerr << "recorderctl: cause: " << causes << "\n";
}

/// A camera's picture is a JPEG; the default one alone is a PNG, here as it is or in base64.
void RefuseDefaultPicture(std::string_view picture) {
  if (picture.starts_with("\x89PNG\r\n\x1a\n") || picture.starts_with("iVBORw0KGgo")) {
    throw std::runtime_error("no picture came from the camera");
  }
}

void PrintJson(const std::string& text) {
  std::string ignored;
  const Json::Value json = ParseStrictJson(text, ignored).value_or(Json::Value());
  RefuseDefaultPicture(json["data"].isObject() ? json["data"]["img"].asString() : "");
  std::cout << text << "\n";
  if (!json["success"].asBool()) throw CLI::RuntimeError(1);
}

/// Writes the picture of a raw answer, without its header lines.
void WritePicture(std::string_view raw, const std::filesystem::path& file) {
  const std::size_t headerEnd = raw.find("\r\n\r\n");
  const std::string_view picture = headerEnd == std::string_view::npos ? raw : raw.substr(headerEnd + 4);
  RefuseDefaultPicture(picture);
  if (file.empty()) {
    if (isatty(STDOUT_FILENO) != 0)
      throw CLI::ValidationError("the answer is a picture, which no terminal shows; give -o FILE");
    std::cout.write(picture.data(), static_cast<std::streamsize>(picture.size())).flush();
    return;
  }
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream.write(picture.data(), static_cast<std::streamsize>(picture.size()));
  stream.close();
  if (!stream) throw std::runtime_error("cannot write " + file.string());
}

}  // namespace

void AddPictureFile(CLI::App& command, std::string& file) {
  command.add_option("-o,--output", file, "file for a raw picture");
}

std::filesystem::path PictureFile(const std::string& option) {
  return option.empty() ? std::filesystem::path() : std::filesystem::absolute(option);
}

Host StartHostFor(std::string_view method, const std::string& configOption) {
  const std::filesystem::path configFile = FindConfigFile(configOption);
  if (method == kPictureMethod) StartMedia();
  return StartHost(configFile);
}

void RunAndPrint(const ApiCall& call, const std::string& work, const std::filesystem::path& pictureFile) {
  const ApiAnswer answer = RunInSight(call, work);
  DismissMedia();
  PrintCauses(answer.causes);
  switch (answer.kind) {
    case ApiAnswer::Kind::kJson:
      PrintJson(answer.json);
      return;
    case ApiAnswer::Kind::kRaw:
      WritePicture(answer.raw, pictureFile);
      return;
    case ApiAnswer::Kind::kBadParameter:
      throw CLI::ValidationError("the parameter \"" + answer.parameter + "\" has a wrong type or is missing");
    case ApiAnswer::Kind::kException:
      throw std::runtime_error("the module failed: " + answer.reason);
    case ApiAnswer::Kind::kNone:
      throw std::runtime_error("the module wrote no answer");
  }
}

}  // namespace recorder
