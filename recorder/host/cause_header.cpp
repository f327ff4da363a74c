#include "recorder/host/cause_header.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "recorder/utility/cause_table.h"
#include "recorder/utility/limits.h"

namespace recorder {

namespace {

/// Whether the module can read a row: nobody works for any other.
bool IsReadable(const Json::Value& row) {
  constexpr std::array kTexts = {"tmpId", "name", "ip", "username", "vendor", "model", "password", "isAuth"};
  const auto isText = [&](const char* key) { return row[key].isConvertibleTo(Json::stringValue); };
  return row.isObject() && std::all_of(kTexts.begin(), kTexts.end(), isText) &&
         row["port"].isConvertibleTo(Json::intValue);
}

CameraEntry EntryOf(const Json::Value& row) {
  return {row["vendor"].asString(), row["model"].asString(), row["ip"].asString(), row["port"].asInt(),
          row["username"].asString()};
}

/// The cause of a row with `result`. Rows of one camera have several reports where only their passwords differ; the
/// result tells which.
Outcome CauseOfRow(const Json::Value& row, int result, const std::vector<RowReport>& reports) {
  if (result == CAMERA_VERIFY_PASSED) return Outcome::kOk;
  if (!IsReadable(row)) return Outcome::kBadRow;
  const CameraEntry entry = EntryOf(row);
  const auto report = std::find_if(reports.begin(), reports.end(), [&](const RowReport& candidate) {
    const CameraEntry modelAlone{entry.vendor, entry.model, {}, 0, {}};
    return (candidate.camera == entry || candidate.camera == modelAlone) && RowOf(candidate.cause).result == result;
  });
  return report == reports.end() ? Outcome::kBadRow : report->cause;
}

std::string CausesOfList(const Json::Value& rows, const Json::Value& results, const std::vector<RowReport>& reports) {
  if (!rows.isArray() || !results.isArray() || rows.size() != results.size()) return "";
  std::string causes;
  for (Json::ArrayIndex i = 0; i < rows.size() && causes.size() <= kLargestCauses; ++i) {
    if (i > 0) causes += ", ";
    causes += NameOf(CauseOfRow(rows[i], results[i]["result"].asInt(), reports));
  }
  return causes.size() <= kLargestCauses ? causes : "";
}

/// A document of what is known already, for which nobody was asked.
bool IsDocument(const Json::Value& data) { return data.isObject() && data.isMember("camCap"); }

}  // namespace

std::string CausesOf(const ApiCall& call, const Json::Value& data, const RequestScope& scope) {
  if (ContactsNoCamera(call.method->name)) return "";
  if (TakesList(call.method->name)) {
    return CausesOfList(call.params["camList"], data["resultList"], scope.Reports());
  }
  if (const auto cause = scope.Cause()) return std::string(NameOf(*cause));
  return IsDocument(data) ? std::string(NameOf(Outcome::kOk)) : "";
}

}  // namespace recorder
