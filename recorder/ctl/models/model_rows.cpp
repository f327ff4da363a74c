#include "recorder/ctl/models/model_rows.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <utility>

#include "recorder/ctl/camera/csv_cell.h"
#include "recorder/ctl/camera/csv_reader.h"
#include "recorder/device/model/model.h"
#include "recorder/media/codecs.h"
#include "recorder/net/camera_address.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

constexpr const char* kColumns[] = {kMakerColumn, kModelColumn, kStreamColumn, kPathColumn, kPortColumn, kCodecsColumn};
constexpr const char* kNeeded[] = {kMakerColumn, kModelColumn, kPathColumn};

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
std::optional<ListMistake> ReadCells(Cells& cells, ModelRow& row) {
  row.maker = cells[kMakerColumn];
  row.model = cells[kModelColumn];
  row.path = cells[kPathColumn];
  for (const char* needed : {kMakerColumn, kModelColumn, kPathColumn}) {
    if (cells[needed].empty()) return ListMistake{row.line, needed, "is empty"};
  }
  row.stream = cells[kStreamColumn].empty() ? kMainStream : LowerCase(cells[kStreamColumn]);
  const bool isStream = row.stream == kMainStream || row.stream == kSubStream || row.stream == kThirdStream;
  if (!isStream) return ListMistake{row.line, kStreamColumn, "is none of main, sub and third"};
  row.port = cells[kPortColumn].empty() ? kRtspPort : ParseNumber<int>(cells[kPortColumn]).value_or(0);
  if (row.port < 1 || row.port > kLargestPort) return ListMistake{row.line, kPortColumn, "is no port from 1 to 65535"};
  const auto codecs = ReadCodecs(cells[kCodecsColumn]);
  if (!codecs) return ListMistake{row.line, kCodecsColumn, "holds a codec that is none of " + AllCodecs()};
  row.codecs = *codecs;
  return std::nullopt;
}

/// Without maker and model when the line has another shape than the heading.
ModelRow ReadRow(const CsvLine& line, const Heading& heading) {
  ModelRow row;
  row.line = line.number;
  row.mistake = ShapeMistake(line, heading.columns);
  if (row.mistake) return row;
  Cells cells = CellsOf(line, heading);
  row.mistake = ReadCells(cells, row);
  return row;
}

}  // namespace

ModelRows ReadModelRows(std::string_view text) {
  ModelRows read;
  std::optional<Heading> heading = FindHeading(text);
  read.mistakes = heading ? HeadingMistakes(*heading)
                          : std::vector<ListMistake>{{1, "", "there is no heading; --template prints one"}};
  if (!read.mistakes.empty()) return read;
  while (const std::optional<CsvLine> line = heading->rows.Next()) {
    ModelRow row = ReadRow(*line, *heading);
    if (row.maker.empty() || row.model.empty()) {
      read.mistakes.push_back(std::move(*row.mistake));
    } else {
      read.rows.push_back(std::move(row));
    }
  }
  return read;
}

}  // namespace recorder
