#include "recorder/ctl/models/model_csv.h"

#include <algorithm>
#include <map>
#include <set>

#include "recorder/ctl/models/model_rows.h"
#include "recorder/device/model/model.h"
#include "recorder/utility/text.h"

namespace recorder {

const char kModelCsvTemplate[] =
    "maker,model,stream,path,port,codecs\n"
    "Acme,X100,main,/live/{channel}/main,554,\"H.264, H.265\"\n"
    "Acme,X100,sub,/live/{channel}/sub,554,H.264\n";

namespace {

/// Makes the entry of a model of its rows.
class ModelMaker {
 public:
  explicit ModelMaker(const std::vector<ModelRow>& rows) : rows_(rows) {}

  ListedModel Make() {
    model_.vendor = rows_.front().maker;
    for (const ModelRow& row : rows_) model_.lines.push_back(row.line);
    Json::Value& entry = model_.entry;
    entry["name"] = rows_.front().model;
    entry["channels"] = Channels();
    entry["streams"] = 0;  // there may be more
    entry["snapshot"]["kind"] = "stream";
    entry["check"] = "stream";
    for (const ModelRow& row : rows_) {
      if (row.stream == kMainStream) AddMain(row);
    }
    for (const ModelRow& row : rows_) {
      if (row.stream != kMainStream) AddOther(row, row.codecs.size() == 1 ? row.codecs.front() : "");
    }
    return std::move(model_);
  }

 private:
  Json::Value Channels() const {
    Json::Value channels;
    channels["values"].append("1");
    channels["default"] = "1";
    const bool isAny = std::any_of(rows_.begin(), rows_.end(),
                                   [](const ModelRow& row) { return row.path.find("{channel") != std::string::npos; });
    if (isAny) channels["others"] = true;
    return channels;
  }

  void AddMain(const ModelRow& row) {
    if (model_.entry.isMember("stream")) {
      for (const std::string& codec : row.codecs) AddOther(row, codec);
      return;
    }
    AddCodecs(row);
    AddPath(row, model_.entry["stream"], "/stream");
  }

  void AddOther(const ModelRow& row, const std::string& codec) {
    AddCodecs(row);
    Json::Value& others = model_.entry["stream"]["others"];
    const std::string place = "/stream/others/" + std::to_string(others.size());
    Json::Value& other = others.append(Json::Value(Json::objectValue));
    if (row.stream != kMainStream) other["stream"] = row.stream;
    if (!codec.empty()) other["codec"] = codec;
    AddPath(row, other, place);
  }

  void AddPath(const ModelRow& row, Json::Value& target, const std::string& place) {
    target["path"] = row.path;
    target["port"] = row.port;
    model_.places.emplace_back(place, row.line);
  }

  void AddCodecs(const ModelRow& row) {
    for (const std::string& codec : row.codecs) {
      if (!codecs_.insert(codec).second) continue;
      Json::Value& entry = model_.entry["codecs"].append(Json::Value(Json::objectValue));
      entry["name"] = codec;
      entry["streamTypes"].append("RTSP");
    }
  }

  const std::vector<ModelRow>& rows_;
  std::set<std::string> codecs_;
  ListedModel model_;
};

/// The rows of each model, in the order of their first ones.
std::vector<std::vector<ModelRow>> Grouped(std::vector<ModelRow> rows) {
  std::map<std::pair<std::string, std::string>, std::size_t> places;
  std::vector<std::vector<ModelRow>> groups;
  for (ModelRow& row : rows) {
    const auto [place, isNew] = places.try_emplace({LowerCase(row.maker), LowerCase(row.model)}, groups.size());
    if (isNew) groups.emplace_back();
    groups[place->second].push_back(std::move(row));
  }
  return groups;
}

/// Why `row` cannot stand beside the model's first row of the main stream, which may be the same; "" when it can.
std::string Conflict(const ModelRow& row, const ModelRow& main) {
  if (main.codecs.empty() && !row.codecs.empty()) return "is not blank, but that of the main stream is";
  const bool isSecond = row.stream == kMainStream && row.line != main.line;
  return isSecond && row.codecs.empty() ? "is empty; a second main row is the path of its codecs" : "";
}

/// Of rows that have none of their own.
std::vector<ListMistake> Conflicts(const std::vector<ModelRow>& rows) {
  const auto main =
      std::find_if(rows.begin(), rows.end(), [](const ModelRow& row) { return row.stream == kMainStream; });
  if (main == rows.end()) return {{rows.front().line, kStreamColumn, "there is no row of the model's main stream"}};
  std::vector<ListMistake> mistakes;
  for (const ModelRow& row : rows) {
    const std::string conflict = Conflict(row, *main);
    if (!conflict.empty()) mistakes.push_back({row.line, kCodecsColumn, conflict});
  }
  return mistakes;
}

/// What keeps the model of these rows from being made.
std::vector<ListMistake> MistakesOf(const std::vector<ModelRow>& rows) {
  std::vector<ListMistake> mistakes;
  for (const ModelRow& row : rows) {
    if (row.mistake) mistakes.push_back(*row.mistake);
  }
  return mistakes.empty() ? Conflicts(rows) : mistakes;
}

void MakeModel(const std::vector<ModelRow>& rows, ModelList& list) {
  const std::vector<ListMistake> mistakes = MistakesOf(rows);
  if (mistakes.empty()) return list.models.push_back(ModelMaker(rows).Make());
  std::vector<int> lines;
  lines.reserve(rows.size());
  for (const ModelRow& row : rows) lines.push_back(row.line);
  RefuseModel(std::move(lines), mistakes, list.mistakes);
}

}  // namespace

ModelList ReadModelCsv(std::string_view text) {
  ModelRows read = ReadModelRows(text);
  ModelList list{{}, std::move(read.mistakes)};
  for (const std::vector<ModelRow>& group : Grouped(std::move(read.rows))) MakeModel(group, list);
  return list;
}

ListMistake OfModel(const ListedModel& model, const std::string& place, const std::string& text) {
  if (place == "/vendor") return {model.lines.front(), kMakerColumn, text};
  if (place == "/name") return {model.lines.front(), kModelColumn, text};
  const auto row = std::find_if(model.places.begin(), model.places.end(), [&](const auto& known) {
    return place.starts_with(known.first + "/") && !place.starts_with(known.first + "/others");
  });
  if (row == model.places.end()) return {model.lines.front(), "", (place.empty() ? "" : place + ": ") + text};
  const std::string member = place.substr(row->first.size() + 1);
  return {row->second, member == "codec" ? kCodecsColumn : member, text};
}

void RefuseModel(std::vector<int> lines, const std::vector<ListMistake>& found, std::vector<ListMistake>& mistakes) {
  for (const ListMistake& mistake : found) {
    mistakes.push_back(mistake);
    std::erase(lines, mistake.line);
  }
  const std::string why = "is of the model in line " + std::to_string(found.front().line);
  for (const int line : lines) mistakes.push_back({line, "", why});
}

}  // namespace recorder
