#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/utility/secrets.h"

namespace recorder {

/// One line of a table; in quotes it may hold line breaks. Cells are wiped at the end, since one may be a password.
struct CsvLine {
  ~CsvLine() { std::for_each(cells.begin(), cells.end(), Wipe); }

  int number = 0;  ///< of the line of text that it begins in, from 1
  std::vector<std::string> cells;
  std::string mistake;  ///< of the cell after `cells`; "" for none
};

/// Reads separated values (RFC 4180, in UTF-8 with or without a byte order mark) line by line. Lines in which every
/// cell is blank are left out. After a mistake it goes on with the next line of the text, so that one forgotten quote
/// does not swallow the rest. A copy reads on from the same place.
class CsvReader {
 public:
  /// `text` must outlive the reader.
  CsvReader(std::string_view text, char separator);

  /// The next line; nothing at the end.
  std::optional<CsvLine> Next();

 private:
  CsvLine ReadLine();
  bool EndsLine() const { return text_.starts_with('\n') || text_.starts_with("\r\n"); }
  bool EndsCell() const { return text_.empty() || text_.front() == separator_ || EndsLine(); }
  bool Skip(std::string_view token);
  char Take();
  std::string ReadQuoted(std::string& cell);
  std::string ReadPlain(std::string& cell);

  std::string_view text_;
  char separator_;
  int number_ = 1;
};

}  // namespace recorder
