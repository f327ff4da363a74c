#include "recorder/own/camera_tally.h"

#include <algorithm>
#include <array>

#include "recorder/records/records.h"
#include "recorder/utility/outcome.h"

namespace recorder {

namespace {

/// The causes that have a row of their own, since each wants another remedy.
constexpr std::array kCauses = {Outcome::kUnreachable,  Outcome::kTimedOut, Outcome::kLoginRefused,
                                Outcome::kNoSuchStream, Outcome::kBusy,     Outcome::kCertificateChanged};

std::vector<CameraTally> EmptyTallies() {
  std::vector<CameraTally> tallies = {{"up", ""}, {"unknown", ""}, {"off", ""}, {"down", "other"}};
  for (const Outcome cause : kCauses) tallies.push_back({"down", NameOf(cause)});
  return tallies;
}

CameraTally KindOf(const CameraCount& cameras) {
  if (cameras.status == CAM_CONN_STATUS_DISABLED) return {"off", ""};
  if (!cameras.cause) return {"unknown", ""};
  if (*cameras.cause == Outcome::kOk) return {"up", ""};
  const bool hasRow = std::ranges::find(kCauses, *cameras.cause) != kCauses.end();
  return {"down", hasRow ? NameOf(*cameras.cause) : "other"};
}

}  // namespace

std::vector<CameraTally> TallyCameras(const std::filesystem::path& stateFolder) {
  std::vector<CameraTally> tallies = EmptyTallies();
  for (const CameraCount& cameras : Records(stateFolder).CountCameras()) {
    const CameraTally kind = KindOf(cameras);
    const auto isKind = [&](const CameraTally& tally) {
      return tally.state == kind.state && tally.cause == kind.cause;
    };
    std::ranges::find_if(tallies, isKind)->count += cameras.count;
  }
  return tallies;
}

}  // namespace recorder
