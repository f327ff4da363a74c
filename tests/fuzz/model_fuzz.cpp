#include <vector>

#include "recorder/device/capability/capability_document.h"
#include "recorder/device/model/model_reader.h"
#include "recorder/device/model/path_template.h"
#include "tests/fuzz/fuzz.h"

// The text of a model file, and the capability documents of what it describes.

namespace recorder {

void RunInput(std::string_view input) {
  static const ModelReader reader(SCHEMA_FILE);
  std::vector<ModelMistake> mistakes;
  const auto vendor = reader.ReadText(std::string(input), "fuzz.json", mistakes);
  Require((vendor == nullptr) == !mistakes.empty());
  if (vendor == nullptr) return;
  for (const Model& model : vendor->models) {
    Require(CapabilityDocument(model).isObject());
    if (model.stream) FillPath(model.stream->path, {{"channel", "1"}, {"stream", "2"}});
  }
}

}  // namespace recorder
