#include "recorder/device/check/http_probe.h"

#include <optional>
#include <string_view>
#include <utility>

#include "recorder/device/check/multipart.h"
#include "recorder/media/jpeg_check.h"
#include "recorder/net/http/http_client.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/log.h"

namespace recorder {
namespace {

/// Keeps the first picture of a body.
class PictureReader : public BodyReader {
 public:
  Step Begin(const std::string& contentType) override {
    if (MultipartReader::IsMultipart(contentType)) multipart_.emplace(contentType, kLargestHttpPicture);
    return Step::kMore;
  }

  Step Read(std::string_view bytes) override {
    hasBegun_ = true;
    return multipart_ ? ReadParts(bytes) : ReadWhole(bytes);
  }

  std::string TakePicture() { return std::move(picture_); }

  bool HasBegun() const { return hasBegun_; }

 private:
  Step ReadParts(std::string_view bytes) {
    received_ += bytes.size();  // parts that are no picture must come to an end, too
    switch (multipart_->Feed(bytes)) {
      case MultipartReader::State::kMalformed:
        return Step::kMalformed;
      case MultipartReader::State::kMore:
        return received_ > 2 * kLargestHttpPicture ? Step::kMalformed : Step::kMore;
      case MultipartReader::State::kPicture:
        break;
    }
    picture_ = multipart_->TakePicture();
    return Step::kEnough;
  }

  Step ReadWhole(std::string_view bytes) {
    if (bytes.size() > kLargestHttpPicture - picture_.size()) return Step::kMalformed;
    picture_.reserve(kLargestHttpPicture);  // growth would hold twice as much; what is not filled costs no memory
    picture_ += bytes;
    return Step::kMore;
  }

  std::optional<MultipartReader> multipart_;
  std::size_t received_ = 0;
  bool hasBegun_ = false;
  std::string picture_;
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
  std::string picture = reader.TakePicture();
  if (outcome == Outcome::kOk && !IsWholeJpeg(picture)) outcome = Outcome::kNotUnderstood;
  if (outcome == Outcome::kOk) {
    jpeg = std::move(picture);
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
