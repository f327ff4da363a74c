#pragma once

#include <optional>
#include <string>
#include <vector>

#include "recorder/device/find/find.h"
#include "recorder/device/model/model_files.h"

namespace recorder::find {

/// A main stream that a camera may have, since a model file knows it.
struct PathToTry {
  const Model* model = nullptr;         ///< lives as long as the catalog
  const ModelStream* stream = nullptr;  ///< of the model
  std::string path;                     ///< of its first channel
};

/// The main streams of all models of `catalog`, each path once: first those of `vendors`, in their order, then those
/// that most vendors have. Pure.
std::vector<PathToTry> PathsToTry(const ModelCatalog& catalog, const std::vector<std::string>& vendors);

/// The main stream that answers at `port` by this path, but for its codec.
ListedStream StreamAt(const PathToTry& path, const FoundPort& port);

/// All streams that the model of `tried` has, by channel, where a camera has that one as `found`.
std::vector<ListedStream> StreamsOfModel(const PathToTry& tried, const ListedStream& found);

/// The picture of `model`'s first channel over HTTP at `port`; nothing when it has none.
std::optional<ListedSnapshot> SnapshotOfModel(const Model& model, int port);

/// Who says what a model says, for people.
std::string SourceOf(const Model& model);

}  // namespace recorder::find
