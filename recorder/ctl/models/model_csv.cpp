#include "recorder/ctl/models/model_csv.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>

#include "recorder/ctl/camera/csv_cell.h"
#include "recorder/ctl/camera/csv_reader.h"
#include "recorder/device/model/model.h"
#include "recorder/media/codecs.h"
#include "recorder/net/camera_address.h"
#include "recorder/utility/text.h"

namespace recorder {

const char kModelCsvTemplate[] =
    "maker,model,stream,path,port,codecs\n"
    "Acme,X100,main,/live/{channel}/main,554,\"H.264, H.265\"\n"
    "Acme,X100,sub,/live/{channel}/sub,554,H.264\n";

namespace {

constexpr char kMaker[] = "maker";
constexpr char kModel[] = "model";
constexpr char kStream[] = "stream";
constexpr char kPath[] = "path";
constexpr char kPort[] = "port";
constexpr char kCodecs[] = "codecs";
constexpr const char* kColumns[] = {kMaker, kModel, kStream, kPath, kPort, kCodecs};
constexpr const char* kNeeded[] = {kMaker, kModel, kPath};

// --- Heading --------------------------------------------------------------------------------------------------------

/// The columns of a list, and how its rows are read on.
struct Heading {
  int line = 1;
  std::vector<std::string> columns;
  CsvReader rows;

  bool Holds(std::string_view column) const {
    return std::find(columns.begin(), columns.end(), column) != columns.end();
  }
};

bool IsColumn(const std::string& name) {
  return std::find(std::begin(kColumns), std::end(kColumns), name) != std::end(kColumns);
}

/// The first line, by the separator that finds most columns in it.
std::optional<Heading> FindHeading(std::string_view text) {
  std::optional<Heading> best;
  std::ptrdiff_t most = 0;
  for (const char separator : {',', ';', '\t'}) {
    CsvReader reader(text, separator);
    const std::optional<CsvLine> line = reader.Next();
    if (!line || !line->mistake.empty()) continue;
    Heading heading{line->number, {}, reader};
    for (const std::string& cell : line->cells) heading.columns.push_back(LowerCase(Trimmed(cell)));
    const auto known = std::count_if(heading.columns.begin(), heading.columns.end(), IsColumn);
    if (known > most) best = std::move(heading);
    most = std::max(most, known);
  }
  return best;
}

std::vector<ListMistake> HeadingMistakes(const Heading& heading) {
  std::vector<ListMistake> mistakes;
  std::set<std::string> names;
  for (const std::string& name : heading.columns) {
    if (!IsColumn(name)) mistakes.push_back({heading.line, name, "is no column of a list of models; see --template"});
    if (!names.insert(name).second) mistakes.push_back({heading.line, name, "is there twice"});
  }
  for (const char* name : kNeeded) {
    if (!heading.Holds(name)) mistakes.push_back({heading.line, name, "is missing in the heading"});
  }
  return mistakes;
}

// --- One row --------------------------------------------------------------------------------------------------------

struct Row {
  int line = 0;
  std::string maker;
  std::string model;
  std::string stream;
  std::string path;
  int port = 0;
  std::vector<std::string> codecs;
  std::optional<ListMistake> mistake = {};
};

/// How a codec's name is compared: "h264" is "H.264".
std::string Plain(std::string_view codec) {
  std::string plain = LowerCase(codec);
  std::erase_if(plain, [](char c) { return c == '.' || c == '-' || c == '_'; });
  return plain;
}

std::string AllCodecs() {
  std::string all;
  for (const Codec& codec : Codecs()) all += (all.empty() ? "" : ", ") + std::string(codec.name);
  return all;
}

/// Nothing when one of them is not known.
std::optional<std::vector<std::string>> ReadCodecs(std::string cell) {
  std::replace_if(
      cell.begin(), cell.end(), [](char c) { return c == ',' || c == ';' || c == '/'; }, ' ');
  std::vector<std::string> names;
  for (const std::string_view word : Split(cell, ' ')) {
    if (word.empty()) continue;
    const auto known = std::find_if(Codecs().begin(), Codecs().end(),
                                    [&](const Codec& codec) { return Plain(codec.name) == Plain(word); });
    if (known == Codecs().end()) return std::nullopt;
    names.emplace_back(known->name);
  }
  return names;
}

using Cells = std::map<std::string, std::string>;

Cells CellsOf(const CsvLine& line, const Heading& heading) {
  Cells cells;
  for (std::size_t i = 0; i < heading.columns.size(); ++i) {
    cells[heading.columns[i]] = WithoutGuards(Trimmed(line.cells[i]));
  }
  return cells;
}

/// Fills in `row`, or says what is wrong.
std::optional<ListMistake> ReadCells(Cells& cells, Row& row) {
  row.maker = cells[kMaker];
  row.model = cells[kModel];
  row.path = cells[kPath];
  for (const char* needed : {kMaker, kModel, kPath}) {
    if (cells[needed].empty()) return ListMistake{row.line, needed, "is empty"};
  }
  row.stream = cells[kStream].empty() ? kMainStream : LowerCase(cells[kStream]);
  const bool isStream = row.stream == kMainStream || row.stream == kSubStream || row.stream == kThirdStream;
  if (!isStream) return ListMistake{row.line, kStream, "is none of main, sub and third"};
  row.port = cells[kPort].empty() ? kRtspPort : ParseNumber<int>(cells[kPort]).value_or(0);
  if (row.port < 1 || row.port > kLargestPort) return ListMistake{row.line, kPort, "is no port from 1 to 65535"};
  const auto codecs = ReadCodecs(cells[kCodecs]);
  if (!codecs) return ListMistake{row.line, kCodecs, "holds a codec that is none of " + AllCodecs()};
  row.codecs = *codecs;
  return std::nullopt;
}

/// Without maker and model when the line has another shape than the heading.
Row ReadRow(const CsvLine& line, const Heading& heading) {
  Row row;
  row.line = line.number;
  row.mistake = ShapeMistake(line, heading.columns);
  if (row.mistake) return row;
  Cells cells = CellsOf(line, heading);
  row.mistake = ReadCells(cells, row);
  return row;
}

// --- Rows to models -------------------------------------------------------------------------------------------------

/// Makes the entry of a model of its rows.
class ModelMaker {
 public:
  explicit ModelMaker(const std::vector<Row>& rows) : rows_(rows) {}

  ListedModel Make() {
    model_.vendor = rows_.front().maker;
    for (const Row& row : rows_) model_.lines.push_back(row.line);
    Json::Value& entry = model_.entry;
    entry["name"] = rows_.front().model;
    entry["channels"] = Channels();
    entry["streams"] = 0;  // there may be more
    entry["snapshot"]["kind"] = "stream";
    entry["check"] = "stream";
    for (const Row& row : rows_) {
      if (row.stream == kMainStream) AddMain(row);
    }
    for (const Row& row : rows_) {
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
                                   [](const Row& row) { return row.path.find("{channel") != std::string::npos; });
    if (isAny) channels["others"] = true;
    return channels;
  }

  void AddMain(const Row& row) {
    if (model_.entry.isMember("stream")) {
      for (const std::string& codec : row.codecs) AddOther(row, codec);
      return;
    }
    AddCodecs(row);
    AddPath(row, model_.entry["stream"], "/stream");
  }

  void AddOther(const Row& row, const std::string& codec) {
    AddCodecs(row);
    Json::Value& others = model_.entry["stream"]["others"];
    const std::string place = "/stream/others/" + std::to_string(others.size());
    Json::Value& other = others.append(Json::Value(Json::objectValue));
    if (row.stream != kMainStream) other["stream"] = row.stream;
    if (!codec.empty()) other["codec"] = codec;
    AddPath(row, other, place);
  }

  void AddPath(const Row& row, Json::Value& target, const std::string& place) {
    target["path"] = row.path;
    target["port"] = row.port;
    model_.places.emplace_back(place, row.line);
  }

  void AddCodecs(const Row& row) {
    for (const std::string& codec : row.codecs) {
      if (!codecs_.insert(codec).second) continue;
      Json::Value& entry = model_.entry["codecs"].append(Json::Value(Json::objectValue));
      entry["name"] = codec;
      entry["streamTypes"].append("RTSP");
    }
  }

  const std::vector<Row>& rows_;
  std::set<std::string> codecs_;
  ListedModel model_;
};

/// The rows of each model, in the order of their first ones.
std::vector<std::vector<Row>> Grouped(std::vector<Row> rows) {
  std::map<std::pair<std::string, std::string>, std::size_t> places;
  std::vector<std::vector<Row>> groups;
  for (Row& row : rows) {
    const auto [place, isNew] = places.try_emplace({LowerCase(row.maker), LowerCase(row.model)}, groups.size());
    if (isNew) groups.emplace_back();
    groups[place->second].push_back(std::move(row));
  }
  return groups;
}

/// Why `row` cannot stand beside the model's first row of the main stream, which may be the same; "" when it can.
std::string Conflict(const Row& row, const Row& main) {
  if (main.codecs.empty() && !row.codecs.empty()) return "is not blank, but that of the main stream is";
  const bool isSecond = row.stream == kMainStream && row.line != main.line;
  return isSecond && row.codecs.empty() ? "is empty; a second main row is the path of its codecs" : "";
}

/// Of rows that have none of their own.
std::vector<ListMistake> Conflicts(const std::vector<Row>& rows) {
  const auto main = std::find_if(rows.begin(), rows.end(), [](const Row& row) { return row.stream == kMainStream; });
  if (main == rows.end()) return {{rows.front().line, kStream, "there is no row of the model's main stream"}};
  std::vector<ListMistake> mistakes;
  for (const Row& row : rows) {
    const std::string conflict = Conflict(row, *main);
    if (!conflict.empty()) mistakes.push_back({row.line, kCodecs, conflict});
  }
  return mistakes;
}

/// What keeps the model of these rows from being made.
std::vector<ListMistake> MistakesOf(const std::vector<Row>& rows) {
  std::vector<ListMistake> mistakes;
  for (const Row& row : rows) {
    if (row.mistake) mistakes.push_back(*row.mistake);
  }
  return mistakes.empty() ? Conflicts(rows) : mistakes;
}

void MakeModel(const std::vector<Row>& rows, ModelList& list) {
  const std::vector<ListMistake> mistakes = MistakesOf(rows);
  if (mistakes.empty()) return list.models.push_back(ModelMaker(rows).Make());
  std::vector<int> lines;
  lines.reserve(rows.size());
  for (const Row& row : rows) lines.push_back(row.line);
  RefuseModel(std::move(lines), mistakes, list.mistakes);
}

}  // namespace

ModelList ReadModelCsv(std::string_view text) {
  ModelList list;
  std::optional<Heading> heading = FindHeading(text);
  list.mistakes = heading ? HeadingMistakes(*heading)
                          : std::vector<ListMistake>{{1, "", "there is no heading; --template prints one"}};
  if (!list.mistakes.empty()) return list;
  std::vector<Row> rows;
  while (const std::optional<CsvLine> line = heading->rows.Next()) {
    Row row = ReadRow(*line, *heading);
    if (row.maker.empty() || row.model.empty()) {
      list.mistakes.push_back(std::move(*row.mistake));
    } else {
      rows.push_back(std::move(row));
    }
  }
  for (const std::vector<Row>& group : Grouped(std::move(rows))) MakeModel(group, list);
  return list;
}

ListMistake OfModel(const ListedModel& model, const std::string& place, const std::string& text) {
  if (place == "/vendor") return {model.lines.front(), kMaker, text};
  if (place == "/name") return {model.lines.front(), kModel, text};
  const auto row = std::find_if(model.places.begin(), model.places.end(), [&](const auto& known) {
    return place.starts_with(known.first + "/") && !place.starts_with(known.first + "/others");
  });
  if (row == model.places.end()) return {model.lines.front(), "", (place.empty() ? "" : place + ": ") + text};
  const std::string member = place.substr(row->first.size() + 1);
  return {row->second, member == "codec" ? kCodecs : member, text};
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
