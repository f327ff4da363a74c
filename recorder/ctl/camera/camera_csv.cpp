#include "recorder/ctl/camera/camera_csv.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

#include "recorder/ctl/camera/camera_address.h"
#include "recorder/ctl/camera/csv_cell.h"
#include "recorder/ctl/camera/csv_reader.h"
#include "recorder/ctl/camera/headings.h"
#include "recorder/device/model/model.h"
#include "recorder/net/camera_address.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

constexpr int kMostLinesToHeading = 5;
constexpr char kNoColumn[] = "-";

/// A cell of each column, by what it holds.
using Cells = std::map<std::string, std::string>;

struct Column {
  std::string name;                   ///< as the list has it
  std::optional<std::string> member;  ///< see MemberOf
};

/// The columns of a list, and how its rows are read on.
struct Heading {
  int line = 1;
  std::vector<Column> columns;
  CsvReader rows;

  bool Holds(const std::string& member) const {
    return std::any_of(columns.begin(), columns.end(), [&](const Column& c) { return c.member == member; });
  }

  std::ptrdiff_t CountKnown() const {
    return std::count_if(columns.begin(), columns.end(),
                         [](const Column& c) { return !c.member.value_or("").empty(); });
  }

  /// One known word alone may be a value, such as a user name, and a password may stand beside it.
  bool IsSure() const { return Holds("address") || CountKnown() > 1; }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    std::transform(columns.begin(), columns.end(), std::back_inserter(names), [](const Column& c) { return c.name; });
    return names;
  }

  /// The list's own name for the column that holds `member`.
  std::string NameOf(const std::string& member) const {
    const auto column =
        std::find_if(columns.begin(), columns.end(), [&](const Column& c) { return c.member == member; });
    return column == columns.end() ? HeadingOf(member) : column->name;
  }
};

std::optional<std::string> MemberBy(const std::string& heading, const ListRules& rules) {
  const auto rule = rules.columns.find(PlainHeading(heading));
  if (rule == rules.columns.end()) return heading.empty() ? "" : MemberOf(heading);
  return rule->second == kNoColumn ? "" : MemberOf(rule->second);
}

std::vector<Column> ColumnsOf(const CsvLine& line, const ListRules& rules) {
  std::vector<Column> columns;
  for (const std::string& cell : line.cells) {
    std::string name(Trimmed(cell));
    std::optional<std::string> member = MemberBy(name, rules);
    columns.push_back({std::move(name), std::move(member)});
  }
  return columns;
}

/// Whether a cell is a number or an address, which no heading is.
bool IsValue(const std::string& cell) {
  const bool isNumber = !cell.empty() && cell.find_first_not_of("0123456789.: ") == std::string::npos;
  return isNumber || cell.find("://") != std::string::npos;
}

/// The line and the separator by which most headings are known.
std::optional<Heading> FindHeading(std::string_view text, const ListRules& rules) {
  std::optional<Heading> best;
  for (const char separator : {',', ';', '\t'}) {
    CsvReader reader(text, separator);
    for (int i = 0; i < kMostLinesToHeading; ++i) {
      const std::optional<CsvLine> line = reader.Next();
      if (!line || std::any_of(line->cells.begin(), line->cells.end(), IsValue)) break;
      Heading heading{line->number, ColumnsOf(*line, rules), reader};
      const bool isBetter = !best || heading.CountKnown() > best->CountKnown();
      if (line->mistake.empty() && heading.IsSure() && isBetter) best = std::move(heading);
    }
  }
  return best;
}

/// What is wrong with the columns. One that is not known goes by its number: if the line is no heading after all, a
/// password may stand there.
std::vector<ListMistake> ColumnMistakes(const Heading& heading) {
  std::vector<ListMistake> mistakes;
  std::set<std::string> members;
  int number = 0;
  for (const auto& [name, member] : heading.columns) {
    ++number;
    if (!member) {
      mistakes.push_back(
          {heading.line, std::to_string(number),
           "is no known column; --map HEADING=COLUMN says what it holds, --map HEADING=- passes over it"});
    } else if (!member->empty() && !members.insert(*member).second) {
      mistakes.push_back({heading.line, name, "is there twice; --map HEADING=- passes over one of them"});
    }
  }
  return mistakes;
}

std::vector<ListMistake> HeadingMistakes(const Heading& heading, const ListRules& rules) {
  std::vector<ListMistake> mistakes = ColumnMistakes(heading);
  for (const auto& rule : rules.columns) {
    const bool isThere = std::any_of(heading.columns.begin(), heading.columns.end(),
                                     [&](const Column& c) { return PlainHeading(c.name) == rule.first; });
    if (!isThere) mistakes.push_back({heading.line, rule.first, "is not in the heading, though --map names it"});
  }
  if (!heading.Holds("address")) {
    mistakes.push_back({heading.line, HeadingOf("address"), "is missing in the heading"});
  }
  return mistakes;
}

/// What becomes of a row's parts: a login or a port in an address or a path goes where it belongs, unless something
/// stands there. A login in the path's column comes before one in the address.
void SpreadAddress(Cells& cells) {
  const auto fill = [&](const char* member, const std::string& value) {
    if (cells[member].empty()) cells[member] = value;
  };
  PathParts path = SplitPath(cells["path"]);
  const WipeAtEnd wipePath(path.password);
  cells["path"] = path.path;
  fill("user", path.user);
  fill("password", path.password);
  AddressParts address = SplitAddress(cells["address"]);
  const WipeAtEnd wipeAddress(address.password);
  cells["address"] = address.host;
  fill("port", address.port);
  fill("user", address.user);
  fill("password", address.password);
  fill("path", address.path);
}

int PortOf(const std::string& cell, const CameraRecord& camera) {
  if (!cell.empty()) return ParseNumber<int>(cell).value_or(0);  // no port
  return camera.vendor == kUserVendor ? kRtspPort : kHttpPort;
}

/// A mistake of a record, by the member of a list.
RecordMistake OfList(const RecordMistake& mistake, const CameraRecord& camera) {
  // An empty host makes an empty name, too; the column that the user has is the address.
  if (mistake.member == "host" || (mistake.member == "name" && camera.host.empty())) return {"address", mistake.text};
  return {mistake.member == "sourcePath" ? "path" : mistake.member, mistake.text};
}

std::optional<RecordMistake> MakeCamera(Cells& cells, const ListRules& rules, ListedCamera& listed) {
  SpreadAddress(cells);
  CameraRecord& camera = listed.camera;
  camera.host = cells["address"];
  camera.name = cells["name"].empty() ? camera.host : cells["name"];
  camera.user = cells["user"];
  camera.channel = cells["channel"];
  camera.sourcePath = cells["path"];
  camera.vendor = cells["vendor"];
  camera.model = cells["model"];
  listed.password = cells["password"];
  if (camera.vendor.empty() && camera.model.empty() && !camera.sourcePath.empty()) camera.vendor = kUserVendor;
  const bool isNamed = !camera.vendor.empty() || !camera.model.empty();
  const std::string modelMistake = isNamed ? NameModel(camera, rules.models) : "";
  if (!modelMistake.empty() && !rules.anyModel) return RecordMistake{"model", modelMistake};
  camera.port = PortOf(cells["port"], camera);
  const auto mistake = FindMistake(camera, listed.password);
  return mistake ? std::optional(OfList(*mistake, camera)) : std::nullopt;
}

/// The cells of a line as wide as its heading.
Cells CellsOf(const CsvLine& line, const std::vector<Column>& columns) {
  Cells cells;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const std::string& member = *columns[i].member;
    if (member.empty()) continue;
    const std::string& cell = line.cells[i];
    cells[member] = WithoutGuards(member == "password" ? std::string_view(cell) : Trimmed(cell));
  }
  return cells;
}

void ReadRow(const CsvLine& line, const Heading& heading, const ListRules& rules, CameraList& list) {
  if (auto mistake = ShapeMistake(line, heading.Names())) {
    list.mistakes.push_back(std::move(*mistake));
    return;
  }
  Cells cells = CellsOf(line, heading.columns);
  const WipeAtEnd wipePassword(cells["password"]);
  const WipeAtEnd wipeAddress(cells["address"]);  // these two may hold a login
  const WipeAtEnd wipePath(cells["path"]);
  for (const char* member : {"codec", "stream"}) {
    const std::string name = heading.NameOf(member);
    const bool isNew = std::find(list.notStored.begin(), list.notStored.end(), name) == list.notStored.end();
    if (!cells[member].empty() && isNew) list.notStored.push_back(name);
  }
  ListedCamera listed{.line = line.number, .camera = {}, .password = {}};
  if (const auto mistake = MakeCamera(cells, rules, listed)) {
    list.mistakes.push_back({line.number, heading.NameOf(mistake->member), mistake->text});
  } else {
    list.cameras.push_back(std::move(listed));
  }
}

}  // namespace

CameraList ReadCameraCsv(std::string_view text, const ListRules& rules) {
  CameraList list;
  std::optional<Heading> heading = FindHeading(text, rules);
  list.mistakes = heading ? HeadingMistakes(*heading, rules) : std::vector<ListMistake>{{1, "", "there is no heading"}};
  if (!list.mistakes.empty()) return list;
  while (const std::optional<CsvLine> line = heading->rows.Next()) ReadRow(*line, *heading, rules, list);
  return list;
}

}  // namespace recorder
