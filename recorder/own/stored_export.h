#pragma once

#include <optional>

#include "recorder/device/asked/export_model.h"
#include "recorder/own/camera_json.h"

namespace recorder {

/// A stored camera as it is handed on, with its password, which the caller wipes. Throws what Records throws.
ExportedCamera Exported(const CameraRecord& camera, const Records& records);

/// A stored camera as a model file by what is known of it, without a contact: of an asked camera what it said, of one
/// whose path its user gave that stream, if a contact with it worked. Names that are "" are those of its facts. Throws
/// what Records throws.
ModelExport ExportStored(const WholeCamera& camera, const Records& records, ExportNames names);

}  // namespace recorder
