#pragma once

#include <optional>
#include <string>
#include <vector>

#include "recorder/ctl/camera/csv_reader.h"

namespace recorder {

/// A mistake in a list, as a file of separated values.
struct ListMistake {
  int line = 0;        ///< from 1
  std::string column;  ///< as the heading names it, or its number, from 1; "" when the mistake is of the whole line
  std::string text;    ///< holds no value of the list
};

/// What is wrong with the shape of a line, if anything, under a heading with these names.
std::optional<ListMistake> ShapeMistake(const CsvLine& line, const std::vector<std::string>& headings);

/// Names on standard error what is wrong with `file`, line by line.
void PrintMistakes(const std::string& file, std::vector<ListMistake> mistakes);

}  // namespace recorder
