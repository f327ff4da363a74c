#include "recorder/device/check/http_probe.h"

#include <optional>
#include <string_view>
#include <utility>

#include "recorder/decode/picture_finder.h"
#include "recorder/net/http/http_client.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/log.h"

namespace recorder {
namespace {

/// Keeps the first picture of a body.
class PictureReader : public BodyReader {
 public:
  Step Read(std::string_view bytes) override {
    received_ += bytes.size();  // what is no picture must come to an end, too
    switch (finder_.Feed(bytes)) {
      case PictureFinder::State::kPicture:
        return Step::kEnough;
      case PictureFinder::State::kMalformed:
        return Step::kMalformed;
      case PictureFinder::State::kMore:
        break;
    }
    return received_ > 2 * kLargestHttpPicture ? Step::kMalformed : Step::kMore;
  }

  /// After the body. Nothing when there was no whole picture.
  std::optional<std::string> TakePicture() {
    if (finder_.Finish() != PictureFinder::State::kPicture) return std::nullopt;
    return finder_.TakePicture();
  }

  bool HasBegun() const { return finder_.HasBegun(); }

 private:
  PictureFinder finder_{kLargestHttpPicture};
  std::size_t received_ = 0;
};

}  // namespace

Outcome FetchPicture(const CameraAddress& address, const std::string& path, std::string& jpeg) {
  bool hasBegun = false;
  return FetchPicture(address, path, jpeg, hasBegun);
}

Outcome FetchPicture(const CameraAddress& address, const std::string& path, std::string& jpeg, bool& hasBegun) {
  PictureReader reader;
  Outcome outcome = HttpGet(address, path, reader);
  hasBegun = reader.HasBegun();
  std::optional<std::string> picture = outcome == Outcome::kOk ? reader.TakePicture() : std::nullopt;
  if (outcome == Outcome::kOk && !picture) outcome = Outcome::kNotUnderstood;
  if (picture) {
    jpeg = std::move(*picture);
  } else {
    LogFailure("No picture over HTTP from " + PlaceOf(address) + ": " + std::string(Describe(outcome)));
  }
  return outcome;
}

Outcome ProbeHttpStream(const CameraAddress& address, const std::string& path) {
  std::string jpeg;
  return FetchPicture(address, path, jpeg);
}

}  // namespace recorder
