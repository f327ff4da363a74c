#include "recorder/ctl/camera/csv_reader.h"

#include <algorithm>
#include <utility>

#include "recorder/utility/text.h"

namespace recorder {

namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

bool IsBlank(const std::string& cell) { return Trimmed(cell).empty(); }

}  // namespace

CsvReader::CsvReader(std::string_view text, char separator) : text_(text), separator_(separator) {
  if (text_.starts_with(kByteOrderMark)) text_.remove_prefix(kByteOrderMark.size());
}

std::optional<CsvLine> CsvReader::Next() {
  while (!text_.empty()) {
    CsvLine line = ReadLine();
    const bool isBlank = std::all_of(line.cells.begin(), line.cells.end(), IsBlank);
    if (!isBlank || !line.mistake.empty()) return line;
  }
  return std::nullopt;
}

CsvLine CsvReader::ReadLine() {
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
  } while (Skip({&separator_, 1}));
  if (Skip("\r\n") || Skip("\n")) ++number_;
  return line;
}

bool CsvReader::Skip(std::string_view token) {
  if (!text_.starts_with(token)) return false;
  text_.remove_prefix(token.size());
  return true;
}

char CsvReader::Take() {
  const char c = text_.front();
  text_.remove_prefix(1);
  if (c == '\n') ++number_;
  return c;
}

std::string CsvReader::ReadQuoted(std::string& cell) {
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

std::string CsvReader::ReadPlain(std::string& cell) {
  while (!EndsCell()) {
    if (text_.front() == '"') return "a quote in a cell that does not begin with one";
    cell += Take();
  }
  return "";
}

}  // namespace recorder
