#include "recorder/device/check/http_probe.h"

#include <string_view>

#include "recorder/media/picture_search.h"
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
    switch (search_.Feed(bytes)) {
      case PictureSearch::State::kPicture:
        return Step::kEnough;
      case PictureSearch::State::kMore:
        return received_ > 2 * kLargestHttpPicture ? Step::kMalformed : Step::kMore;
      default:
        return Step::kMalformed;
    }
  }

  /// What came of a body that was fetched with `outcome`; with kOk `jpeg` is the picture.
  Outcome Finish(Outcome outcome, std::string& jpeg) {
    if (outcome == Outcome::kOk) search_.Finish();
    if (search_.HasFailed()) return search_.Failure();
    if (outcome == Outcome::kOk && !search_.HasPicture()) return Outcome::kNotUnderstood;
    if (outcome == Outcome::kOk) jpeg = search_.TakePicture();
    return outcome;
  }

  bool HasBegun() const { return search_.HasBegun(); }

 private:
  PictureSearch search_{kLargestHttpPicture};
  std::size_t received_ = 0;
};

}  // namespace

Outcome FetchPicture(const CameraAddress& address, const std::string& path, std::string& jpeg) {
  bool hasBegun = false;
  return FetchPicture(address, path, jpeg, hasBegun);
}

Outcome FetchPicture(const CameraAddress& address, const std::string& path, std::string& jpeg, bool& hasBegun) {
  PictureReader reader;
  const Outcome outcome = reader.Finish(HttpGet(address, path, reader), jpeg);
  hasBegun = reader.HasBegun();
  if (outcome != Outcome::kOk) {
    LogFailure("No picture over HTTP from " + PlaceOf(address) + ": " + std::string(Describe(outcome)));
  }
  return outcome;
}

Outcome ProbeHttpStream(const CameraAddress& address, const std::string& path) {
  std::string jpeg;
  return FetchPicture(address, path, jpeg);
}

}  // namespace recorder
