#include "rig/report.h"

#include <cstdio>
#include <iostream>

namespace rig {

std::string NumberText(double value, int decimals) {
  char text[64];
  std::snprintf(text, sizeof(text), "%.*f", decimals, value);
  return text;
}

void Report::Heading(const std::string& text) { Print((text_.empty() ? "" : "\n") + text); }

void Report::Note(const std::string& text) { Print("         " + text); }

void Report::Promise(bool isKept, const std::string& text) {
  isBroken_ |= !isKept;
  Print((isKept ? "  held   " : "  BROKEN ") + text);
}

void Report::Row(const std::vector<std::string>& cells) {
  std::string line = "|";
  for (const std::string& cell : cells) line += " " + cell + " |";
  Print(line);
}

void Report::Print(const std::string& line) {
  std::cout << line << std::endl;
  text_ += line + "\n";
}

}  // namespace rig
