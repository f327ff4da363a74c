#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <regex>
#include <string>

#include "recorder/utility/files.h"

namespace recorder {
namespace {

TEST(SecurityPageTest, NamesTestsThatExist) {
  std::string sources;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(SOURCE_FOLDER "/tests")) {
    if (entry.path().extension() == ".cpp") sources += ReadFile(entry.path());
  }
  const std::string page = ReadFile(SOURCE_FOLDER "/docs/security.md");
  const std::regex test(R"(`(\w+)\.(\w+)`)");  // suite and case
  int count = 0;
  for (std::sregex_iterator name(page.begin(), page.end(), test), end; name != end; ++name, ++count) {
    EXPECT_NE(sources.find('(' + (*name)[1].str() + ", " + (*name)[2].str() + ')'), std::string::npos) << name->str();
  }
  EXPECT_GT(count, 20);
}

}  // namespace
}  // namespace recorder
