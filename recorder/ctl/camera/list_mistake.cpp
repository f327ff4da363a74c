#include "recorder/ctl/camera/list_mistake.h"

#include <algorithm>
#include <iostream>

#include "recorder/utility/text.h"

namespace recorder {

namespace {

void Print(const std::string& file, const ListMistake& mistake) {
  std::cerr << "recorderctl: " << file << ", line " << mistake.line;
  if (!mistake.column.empty()) std::cerr << ", column " << EscapeControls(mistake.column);
  std::cerr << ": " << EscapeControls(mistake.text) << "\n";
}

}  // namespace

std::optional<ListMistake> ShapeMistake(const CsvLine& line, const std::vector<std::string>& headings) {
  const std::size_t count = line.cells.size();
  const std::size_t width = headings.size();
  if (!line.mistake.empty()) return ListMistake{line.number, count < width ? headings[count] : "", line.mistake};
  const auto isBlank = [](const std::string& cell) { return Trimmed(cell).empty(); };
  const bool isLong =
      count > width && !std::all_of(line.cells.begin() + static_cast<std::ptrdiff_t>(width), line.cells.end(), isBlank);
  if (count >= width && !isLong) return std::nullopt;
  return ListMistake{line.number, "", std::to_string(count) + " cells, but the heading has " + std::to_string(width)};
}

void PrintMistakes(const std::string& file, std::vector<ListMistake> mistakes) {
  std::stable_sort(mistakes.begin(), mistakes.end(),
                   [](const ListMistake& one, const ListMistake& other) { return one.line < other.line; });
  for (const ListMistake& mistake : mistakes) Print(file, mistake);
}

}  // namespace recorder
