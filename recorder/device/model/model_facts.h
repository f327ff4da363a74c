#pragma once

#include <json/json.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/device/model/model.h"

// The facts of a model: the members of its entry in a model file that say something of the camera, and who says so.
// Pure functions, any thread.

namespace recorder {

using ModelSources = std::shared_ptr<const std::vector<ModelSource>>;

/// The sources of a model file that follows the schema; null when it names none.
ModelSources ReadSources(const Json::Value& json);

/// The facts of an entry of a model file that follows the schema. A key that `sources` does not have is no source.
std::vector<ModelFact> ReadFacts(const Json::Value& model, const ModelSources& sources);

/// The fact's name in model files, such as "codecs", "stream" or "stream/others/0".
std::string FactName(const ModelFact& fact);

/// Who says the fact of this model, or the fact of this name; null when nobody is named.
const ModelSource* SourceOf(const Model& model, const ModelFact& fact);
const ModelSource* SourceOf(const Model& model, std::string_view factName);

/// Model::streams[index] as a fact: "stream", "stream/others/0".
std::string StreamFactName(std::size_t index);

inline constexpr SaidBy kAllWhoSay[] = {SaidBy::kDocument, SaidBy::kAgreeing, SaidBy::kReported, SaidBy::kCamera,
                                        SaidBy::kUser};

/// As model files have it, such as "reported".
std::string_view NameOf(SaidBy by);

/// How many facts are said by whom, by the names of SaidBy; "" without a source.
using FactCounts = std::map<std::string_view, std::size_t>;
void CountFacts(const Model& model, FactCounts& counts);

}  // namespace recorder
