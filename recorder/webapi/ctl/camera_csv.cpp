#include "recorder/webapi/ctl/camera_csv.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "recorder/utility/text.h"
#include "recorder/webapi/ctl/csv_cell.h"

namespace recorder {

namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

struct CsvLine {
  int number = 0;
  std::vector<std::string> cells;
  std::string mistake;  ///< of the cell after `cells`; "" for none
};

/// Reads records one by one. After a mistake it goes on with the next line of the text, so that one forgotten quote
/// does not swallow the rest.
class CsvReader {
 public:
  explicit CsvReader(std::string_view text) : text_(text) {
    if (text_.starts_with(kByteOrderMark)) text_.remove_prefix(kByteOrderMark.size());
  }

  std::optional<CsvLine> Next() {
    while (EndsLine()) EndLine();
    if (text_.empty()) return std::nullopt;
    const std::string_view start = text_;
    CsvLine line;
    line.number = number_;
    do {
      std::string cell;
      line.mistake = text_.starts_with('"') ? ReadQuoted(cell) : ReadPlain(cell);
      if (!line.mistake.empty()) {
        text_ = start.substr(std::min(start.find('\n'), start.size()));
        number_ = line.number;
        break;
      }
      line.cells.push_back(std::move(cell));
    } while (Skip(","));
    EndLine();
    return line;
  }

 private:
  bool EndsLine() const { return text_.starts_with('\n') || text_.starts_with("\r\n"); }
  bool EndsCell() const { return text_.empty() || text_.front() == ',' || EndsLine(); }

  bool Skip(std::string_view token) {
    if (!text_.starts_with(token)) return false;
    text_.remove_prefix(token.size());
    return true;
  }

  void EndLine() {
    if (Skip("\r\n") || Skip("\n")) ++number_;
  }

  char Take() {
    const char c = text_.front();
    text_.remove_prefix(1);
    if (c == '\n') ++number_;
    return c;
  }

  std::string ReadQuoted(std::string& cell) {
    Take();
    for (;;) {
      if (text_.empty()) return "the quote is never closed";
      if (Skip("\"\"")) {
        cell += '"';
      } else if (Skip("\"")) {
        return EndsCell() ? "" : "text after the closing quote";
      } else {
        cell += Take();
      }
    }
  }

  std::string ReadPlain(std::string& cell) {
    while (!EndsCell()) {
      if (text_.front() == '"') return "a quote in a cell that does not begin with one";
      cell += Take();
    }
    return "";
  }

  std::string_view text_;
  int number_ = 1;
};

/// Stores a cell of `column`; false for a column that is not known. A port that is no number becomes 0, which is no
/// port.
bool Store(ListedCamera& listed, const std::string& column, const std::string& cell) {
  CameraRecord& camera = listed.camera;
  const std::pair<std::string_view, std::string*> texts[] = {
      {"name", &camera.name},       {"vendor", &camera.vendor},
      {"model", &camera.model},     {"host", &camera.host},
      {"user", &camera.user},       {"password", &listed.password},
      {"channel", &camera.channel}, {"sourcePath", &camera.sourcePath},
  };
  for (const auto& [name, target] : texts) {
    if (name != column) continue;
    *target = cell;
    return true;
  }
  if (column != "port") return false;
  camera.port = ParseNumber<int>(cell).value_or(0);
  return true;
}

std::vector<ListMistake> HeadingMistakes(const CsvLine& heading) {
  std::vector<ListMistake> mistakes;
  if (!heading.mistake.empty()) return {{heading.number, "", heading.mistake}};
  const auto& columns = heading.cells;
  for (auto column = columns.begin(); column != columns.end(); ++column) {
    ListedCamera ignored;
    if (!Store(ignored, *column, "")) mistakes.push_back({heading.number, *column, "is not a known column"});
    if (std::find(columns.begin(), column, *column) != column)
      mistakes.push_back({heading.number, *column, "is there twice"});
  }
  for (const char* wanted : {"vendor", "model", "host", "port"}) {
    if (std::find(columns.begin(), columns.end(), wanted) == columns.end()) {
      mistakes.push_back({heading.number, wanted, "is missing in the heading"});
    }
  }
  return mistakes;
}

/// Turns a line into a camera, or into a mistake.
std::optional<ListMistake> ReadCamera(const CsvLine& line, const std::vector<std::string>& columns,
                                      ListedCamera& listed) {
  const std::size_t count = line.cells.size();
  if (!line.mistake.empty())
    return ListMistake{line.number, count < columns.size() ? columns[count] : "", line.mistake};
  if (count != columns.size()) {
    return ListMistake{line.number, "",
                       std::to_string(count) + " cells, but the heading has " + std::to_string(columns.size())};
  }
  listed.line = line.number;
  for (std::size_t i = 0; i < count; ++i) Store(listed, columns[i], WithoutGuards(line.cells[i]));
  if (listed.camera.name.empty()) listed.camera.name = listed.camera.host;
  const auto mistake = FindMistake(listed.camera, listed.password);
  if (!mistake) return std::nullopt;
  // An empty host makes an empty name too; the column that the user has is the host's.
  const bool isNameOfHost = mistake->member == "name" && listed.camera.host.empty();
  return ListMistake{line.number, isNameOfHost ? "host" : mistake->member, mistake->text};
}

}  // namespace

CameraList ReadCameraCsv(std::string_view text) {
  CameraList list;
  CsvReader reader(text);
  const std::optional<CsvLine> heading = reader.Next();
  list.mistakes = heading ? HeadingMistakes(*heading) : std::vector<ListMistake>{{1, "", "there is no heading"}};
  if (!list.mistakes.empty()) return list;
  while (const std::optional<CsvLine> line = reader.Next()) {
    ListedCamera listed;
    if (auto mistake = ReadCamera(*line, heading->cells, listed)) {
      list.mistakes.push_back(std::move(*mistake));
    } else {
      list.cameras.push_back(std::move(listed));
    }
  }
  return list;
}

}  // namespace recorder
