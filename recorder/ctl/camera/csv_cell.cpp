#include "recorder/ctl/camera/csv_cell.h"

#include <algorithm>

namespace recorder {

namespace {

constexpr char kGuard = '\'';
constexpr std::string_view kFormulaSigns[] = {"=", "+", "-", "@", "\t", "\r", "＝", "＋", "－", "＠"};
constexpr std::string_view kSeparators = ";,|\t\r\n";
constexpr std::string_view kPassedOver = " \"'";  // a cell still begins behind them

bool StartsWithSign(std::string_view text) {
  return std::any_of(std::begin(kFormulaSigns), std::end(kFormulaSigns),
                     [&](std::string_view sign) { return text.starts_with(sign); });
}

/// Whether a cell may begin behind `c`, when one might have begun before it or not.
bool MayBegin(bool mightBefore, char c) {
  return kSeparators.find(c) != std::string_view::npos ||
         (mightBefore && kPassedOver.find(c) != std::string_view::npos);
}

std::string Guarded(std::string_view text) {
  std::string guarded;
  bool mayBegin = true;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (mayBegin && StartsWithSign(text.substr(i))) guarded += kGuard;
    guarded += text[i];
    mayBegin = MayBegin(mayBegin, text[i]);
  }
  return guarded;
}

}  // namespace

std::string ToCsvCell(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : Guarded(text)) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + '"';
}

std::string WithoutGuards(std::string_view cell) {
  std::string text;
  bool mayBegin = true;
  for (std::size_t i = 0; i < cell.size(); ++i) {
    const bool isGuard = mayBegin && cell[i] == kGuard && StartsWithSign(cell.substr(i + 1));
    if (!isGuard) text += cell[i];
    mayBegin = MayBegin(mayBegin, cell[i]);
  }
  return Guarded(text) == cell ? text : std::string(cell);
}

}  // namespace recorder
