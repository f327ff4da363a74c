#include "recorder/device/find/model_paths.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <string_view>
#include <tuple>

#include "recorder/device/model/model_stream.h"
#include "recorder/device/model/path_template.h"
#include "recorder/net/camera_address.h"

namespace recorder::find {
namespace {

/// Where in the order of trying a path stands: its vendor's place, how few vendors have it, whether it is one of the
/// model's further ones.
using Rank = std::tuple<std::size_t, std::ptrdiff_t, bool>;

using VendorsByPath = std::map<std::string, std::set<std::string_view>>;

void AddPaths(const Model& model, std::vector<PathToTry>& paths, VendorsByPath& vendors) {
  for (const ModelStream& stream : model.streams) {
    if (stream.name != kMainStream) continue;
    paths.push_back({&model, &stream, StreamPath(stream, model.channels.preset)});
    vendors[paths.back().path].insert(model.vendor);
  }
}

/// A stream of the model like `found`, which is its main one.
ListedStream Derived(const ListedStream& found, const ModelStream& main, const ModelStream& stream,
                     const std::string& channel) {
  ListedStream derived = found;
  derived.name = stream.name;
  derived.channel = channel;
  derived.path = StreamPath(stream, channel);
  if (stream.from.port != main.from.port) derived.port = stream.from.port.value_or(found.port);
  if (derived.path == found.path && derived.port == found.port) return found;
  derived.codec = stream.codec;
  derived.isAsked = false;
  return derived;
}

}  // namespace

std::vector<PathToTry> PathsToTry(const ModelCatalog& catalog, const std::vector<std::string>& vendors) {
  std::vector<PathToTry> paths;
  VendorsByPath users;
  for (const VendorModels& vendor : catalog.vendors) {
    for (const Model& model : vendor.models) AddPaths(model, paths, users);
  }
  std::ranges::stable_sort(paths, {}, [&](const PathToTry& one) -> Rank {
    const auto place = static_cast<std::size_t>(std::ranges::find(vendors, one.model->vendor) - vendors.begin());
    return {place, -std::ssize(users[one.path]), one.stream != &one.model->streams.front()};
  });
  std::set<std::string> seen;
  std::erase_if(paths, [&](const PathToTry& one) { return !seen.insert(one.path).second; });
  return paths;
}

ListedStream StreamAt(const PathToTry& path, const FoundPort& port) {
  ListedStream stream;
  stream.isOverHttp = path.stream->isOverHttp;
  stream.port = port.number;
  stream.isTls = port.isTls;
  stream.name = kMainStream;
  stream.path = path.path;
  stream.channel = path.model->channels.preset;
  stream.from = SourceOf(*path.model);
  return stream;
}

std::vector<ListedStream> StreamsOfModel(const PathToTry& tried, const ListedStream& found) {
  std::vector<ListedStream> streams;
  for (const std::string& channel : tried.model->channels.values) {
    for (const std::string_view name : {kMainStream, kSubStream, kThirdStream}) {
      const ModelStream* other = FindModelStream(*tried.model, name, tried.stream->codec);
      const ModelStream* stream = name == kMainStream ? tried.stream : other;
      const bool isThere = stream != nullptr && stream->isOverHttp == found.isOverHttp;
      if (isThere) streams.push_back(Derived(found, *tried.stream, *stream, channel));
    }
  }
  return streams;
}

std::optional<ListedSnapshot> SnapshotOfModel(const Model& model, int port) {
  if (model.snapshot.kind != ModelSnapshotKind::kHttpJpeg) return std::nullopt;
  const int there = model.snapshot.from.port.value_or(port);
  const auto& settings = model.snapshot.settings;
  const std::string setting = settings.empty() ? "" : settings.front().values.front();
  const std::string path = FillPath(model.snapshot.from.path, {.channel = model.channels.preset, .setting = setting});
  return ListedSnapshot{path, there, there == kHttpsPort, SourceOf(model)};
}

std::string SourceOf(const Model& model) { return "model file: " + model.vendor + " " + model.name; }

}  // namespace recorder::find
