#pragma once

#include <cstddef>
#include <string>
#include <vector>

// Names of models as people type them. Pure functions, any thread.

namespace recorder {

/// A model by the recorder's own names.
struct ModelName {
  std::string vendor;
  std::string model;
};

/// Both names, with a blank between them; the vendor alone where its model has no name.
std::string LabelOf(const ModelName& name);

/// `text` in lower case, with one blank between words.
std::string PlainName(const std::string& text);

/// Those of `models` that are most like `wanted`, vendor and model as PlainName gives them, at most `most`: the likest
/// first, and those of a vendor that is named before all others. None when `wanted` is longer than any name.
std::vector<ModelName> NearestModels(const std::vector<ModelName>& models, const std::string& wanted, std::size_t most);

}  // namespace recorder
