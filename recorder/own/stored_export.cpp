#include "recorder/own/stored_export.h"

#include <algorithm>

#include "recorder/device/model/built_in_models.h"
#include "recorder/media/codecs.h"
#include "recorder/own/main_address.h"
#include "recorder/utility/day_text.h"

namespace recorder {

namespace {

/// What is known of the camera, or of its main stream; "" for nothing.
std::string ValueOf(const std::vector<CameraFact>& facts, const std::string& stream, const std::string& name) {
  const auto fact =
      std::ranges::find_if(facts, [&](const CameraFact& one) { return one.stream == stream && one.name == name; });
  return fact == facts.end() ? "" : fact->value;
}

ModelExport ExportTyped(const WholeCamera& camera, const Records& records, const ExportNames& names) {
  if (names.vendor.empty() || names.model.empty()) return {"", {"name its vendor and its model"}};
  const std::int64_t worked = camera.state ? camera.state->outcome.lastSuccess : 0;
  if (worked == 0) return {"", {"its stream has not worked yet: test it first"}};
  const std::string codec = ValueOf(camera.facts, kOwnStream, "codec");
  UserStream stream{{},
                    camera.record.sourcePath,
                    CodecOfName(codec) == nullptr ? "" : codec,
                    IsMainOverHttp(camera.record),
                    DayText(worked)};
  stream.camera = Exported(camera.record, records);
  const WipeAtEnd wipe(stream.camera.address.password);
  return ExportUserStream(stream, names);
}

ModelExport ExportAsked(const CameraRecord& camera, const Records& records, const ExportNames& names) {
  ExportedCamera exported = Exported(camera, records);
  const WipeAtEnd wipe(exported.address.password);
  return ExportAskedCamera(camera.vendor, exported, names);
}

}  // namespace

ExportedCamera Exported(const CameraRecord& camera, const Records& records) {
  const CameraIdentity identity = records.Identities()[camera.id];
  return {{.host = camera.host, .port = camera.port, .user = camera.user, .password = records.Password(camera)},
          identity.endpoint,
          identity.serial};
}

ModelExport ExportStored(const WholeCamera& camera, const Records& records, ExportNames names) {
  const CameraRecord& record = camera.record;
  if (IsGenericVendor(record.vendor)) return ExportAsked(record, records, names);
  if (record.vendor != kUserVendor) return {"", {"a file knows its model: " + record.vendor + " " + record.model}};
  if (names.vendor.empty()) names.vendor = ValueOf(camera.facts, "", "maker");
  if (names.model.empty()) names.model = ValueOf(camera.facts, "", "model");
  return ExportTyped(camera, records, names);
}

}  // namespace recorder
