#include "recorder/utility/cause_table.h"

#include <algorithm>
#include <iterator>

namespace recorder {
namespace {

constexpr CauseRow kCauses[] = {
    {Outcome::kOk, "ok", "no failure", CAMERA_VERIFY_PASSED, CAMCAP_FILE_OBTAINED, Reach::kContact, {200}},
    {Outcome::kUnreachable, "unreachable", "not reachable", CAMERA_VERIFY_UNREACHABLE, CAMCAP_FILE_UNREACHABLE,
     Reach::kConversation},
    // "Unreachable" would send users to the camera's network.
    {Outcome::kBlocked, "blocked", "address not allowed by this recorder's policy", CAMERA_VERIFY_NOT_UNDERSTOOD,
     CAMCAP_FILE_NOT_UNDERSTOOD, Reach::kConversation},
    {Outcome::kTimedOut, "timedOut", "timed out", CAMERA_VERIFY_TIMED_OUT, CAMCAP_FILE_UNREACHABLE, Reach::kRequest},
    // With 403 the user is known, but not allowed.
    {Outcome::kLoginRefused,
     "loginRefused",
     "login refused",
     CAMERA_VERIFY_LOGIN_REFUSED,
     CAMCAP_FILE_LOGIN_REFUSED,
     Reach::kRequest,
     {401, 403},
     {401, 403}},
    // The password may be right.
    {Outcome::kClockUnknown, "clockUnknown",
     "login refused, and the camera does not tell the time that the login depends on", CAMERA_VERIFY_NOT_UNDERSTOOD,
     CAMCAP_FILE_NOT_UNDERSTOOD, Reach::kRequest},
    // Another password would not help.
    {Outcome::kLoginUnsupported, "loginUnsupported", "login method not supported", CAMERA_VERIFY_NOT_UNDERSTOOD,
     CAMCAP_FILE_NOT_UNDERSTOOD, Reach::kConversation},
    // Other ports of the camera may have another one.
    {Outcome::kCertificateChanged, "certificateChanged", "another TLS certificate than before",
     CAMERA_VERIFY_NOT_UNDERSTOOD, CAMCAP_FILE_NOT_UNDERSTOOD, Reach::kConversation},
    {Outcome::kNoSuchStream,
     "noSuchStream",
     "no such stream",
     CAMERA_VERIFY_NO_SUCH_STREAM,
     CAMCAP_FILE_NO_SERVICE,
     Reach::kContact,
     {404, 410},
     {404, 410, 454}},
    {Outcome::kNoVideo, "noVideo", "no wanted video", CAMERA_VERIFY_NO_VIDEO, CAMCAP_FILE_NOT_UNDERSTOOD,
     Reach::kContact},
    {Outcome::kEncryptedStream, "encryptedStream", "encrypted stream (SRTP)", CAMERA_VERIFY_NO_VIDEO,
     CAMCAP_FILE_NOT_UNDERSTOOD, Reach::kContact},
    // "Busy" would have users try again: a camera that refuses each way to send will not grant one later either.
    {Outcome::kTransportRefused,
     "transportRefused",
     "no video over TCP or UDP",
     CAMERA_VERIFY_NOT_UNDERSTOOD,
     CAMCAP_FILE_NOT_UNDERSTOOD,
     Reach::kContact,
     {},
     {461}},
    {Outcome::kBusy,
     "busy",
     "camera busy",
     CAMERA_VERIFY_BUSY,
     CAMCAP_FILE_NOT_UNDERSTOOD,
     Reach::kContact,
     {429, 503},
     {453, 503}},
    {Outcome::kNotThisProtocol, "notThisProtocol", "another protocol is spoken there", CAMERA_VERIFY_NOT_UNDERSTOOD,
     CAMCAP_FILE_NO_SERVICE, Reach::kContact},
    // "No such stream" would send users to the path.
    {Outcome::kNoService, "noService", "no such service at this port", CAMERA_VERIFY_NOT_UNDERSTOOD,
     CAMCAP_FILE_NO_SERVICE, Reach::kContact},
    {Outcome::kNotUnderstood, "notUnderstood", "answer not understood", CAMERA_VERIFY_NOT_UNDERSTOOD,
     CAMCAP_FILE_NOT_UNDERSTOOD, Reach::kContact},
    {Outcome::kUnknownModel, "unknownModel", "no model file knows it", CAMERA_VERIFY_NOT_PREPARED,
     CAMCAP_FILE_NOT_UNDERSTOOD, Reach::kContact},
    {Outcome::kNoPath, "noPath", "the path of its stream is missing", CAMERA_VERIFY_NOT_PREPARED,
     CAMCAP_FILE_NOT_UNDERSTOOD, Reach::kContact},
    {Outcome::kForeignPath, "foreignPath", "the path of its stream is an address elsewhere", CAMERA_VERIFY_NOT_PREPARED,
     CAMCAP_FILE_NOT_UNDERSTOOD, Reach::kContact},
    {Outcome::kDisabled, "disabled", "camera switched off on this recorder", CAMERA_VERIFY_NOT_PREPARED,
     CAMCAP_FILE_NOT_UNDERSTOOD, Reach::kContact},
    {Outcome::kBadRow, "badRow", "row not readable", CAMERA_VERIFY_NOT_PREPARED, CAMCAP_FILE_NOT_UNDERSTOOD,
     Reach::kContact},
    {Outcome::kDecoderFailed, "decoderFailed", "the recorder's decoder failed over the picture",
     CAMERA_VERIFY_NOT_UNDERSTOOD, CAMCAP_FILE_NOT_UNDERSTOOD, Reach::kContact},
    // What the camera said could not be kept: what is known of its model stands in.
    {Outcome::kRecorderFailed, "recorderFailed", "the recorder failed", CAMERA_VERIFY_NOT_PREPARED,
     CAMCAP_FILE_SUBSTITUTED, Reach::kContact},
};

constexpr std::size_t IndexOf(Outcome outcome) { return static_cast<std::size_t>(outcome); }

constexpr bool IsInOrder() {
  for (std::size_t i = 0; i < std::size(kCauses); ++i) {
    if (IndexOf(kCauses[i].outcome) != i) return false;
  }
  return true;
}
static_assert(std::size(kCauses) == IndexOf(Outcome::kCount), "each Outcome has a row here");
static_assert(IsInOrder(), "rows stand in the order of Outcome");

using Statuses = std::array<int, 3> CauseRow::*;

Outcome OutcomeBy(Statuses column, long status) {
  for (const CauseRow& row : kCauses) {
    const auto& statuses = row.*column;
    const bool isMeant = status != 0 && std::find(statuses.begin(), statuses.end(), status) != statuses.end();
    if (isMeant) return row.outcome;
  }
  return Outcome::kNotUnderstood;
}

}  // namespace

std::span<const CauseRow> Causes() { return kCauses; }

const CauseRow& RowOf(Outcome outcome) {
  const std::size_t index = IndexOf(outcome);
  return kCauses[index < std::size(kCauses) ? index : IndexOf(Outcome::kNotUnderstood)];
}

std::string_view NameOf(Outcome outcome) { return RowOf(outcome).name; }

std::string_view Describe(Outcome outcome) { return RowOf(outcome).phrase; }

std::optional<Outcome> OutcomeNamed(std::string_view name) {
  const auto row = std::ranges::find(Causes(), name, &CauseRow::name);
  return row == Causes().end() ? std::nullopt : std::optional(row->outcome);
}

bool MayBeRefusedLogin(std::optional<Outcome> outcome) {
  return outcome == Outcome::kLoginRefused || outcome == Outcome::kClockUnknown;
}

Outcome OutcomeOfHttp(long status) { return OutcomeBy(&CauseRow::httpStatuses, status); }

Outcome OutcomeOfRtsp(int status) { return OutcomeBy(&CauseRow::rtspStatuses, status); }

}  // namespace recorder
