#include "tests/long/report.h"

#include <iostream>

namespace bench {

void Report::Heading(const std::string& text) { std::cout << "\n" << text << std::endl; }

void Report::Note(const std::string& text) { std::cout << "         " << text << std::endl; }

void Report::Promise(bool isKept, const std::string& text) {
  if (!isKept) ++broken_;
  std::cout << (isKept ? "  held   " : "  BROKEN ") << text << std::endl;
}

}  // namespace bench
