#include "recorder/utility/cause_table.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <sstream>

#include "recorder/utility/files.h"

namespace recorder {
namespace {

/// The first three cells behind each cause, in the table of docs/causes.md whose heading has these columns first.
std::map<std::string, std::vector<std::string>> ReadTable(const std::string& columns) {
  const std::regex pattern(R"(\| (\w+) \| (.*?) ?\| (.*?) ?\| (.*?) ?\|.*)");
  const std::string page = ReadFile(SOURCE_FOLDER "/docs/causes.md");
  std::istringstream lines(page.substr(page.find("| " + columns + " |")));
  std::map<std::string, std::vector<std::string>> table;
  std::string line;
  std::getline(lines, line);
  while (std::getline(lines, line) && !line.empty()) {
    std::smatch cells;
    if (std::regex_match(line, cells, pattern)) table[cells.str(1)] = {cells.str(2), cells.str(3), cells.str(4)};
  }
  return table;
}

/// What the module makes of the results of a test and of asking for a file.
std::string TestCode(int result) {
  const bool hasOwnCode = result >= CAMERA_VERIFY_UNREACHABLE && result <= CAMERA_VERIFY_NO_VIDEO;
  return std::to_string(hasOwnCode ? 458 + result : result == CAMERA_VERIFY_BUSY ? 467 : 468);
}
std::string FileCode(int result) {
  const std::map<int, const char*> codes{{CAMCAP_FILE_UNREACHABLE, "458"},
                                         {CAMCAP_FILE_SUBSTITUTED, "459"},
                                         {CAMCAP_FILE_NO_SERVICE, "460"},
                                         {CAMCAP_FILE_LOGIN_REFUSED, "461"}};
  return codes.contains(result) ? codes.at(result) : "457";
}

/// An empty cell stands for a cause that is never told so, words in parentheses for one that the log does not word.
TEST(CausesInDocuments, HaveTheWordsAndCodesThatAreTold) {
  const auto table = ReadTable("Cause | Words of the log");
  const auto texts = ReadTable("Cause | Heading");
  ASSERT_EQ(table.size(), Causes().size() - 1) << "all but ok";
  EXPECT_EQ(texts.size(), Causes().size());
  for (const CauseRow& row : Causes().subspan(1)) {
    ASSERT_TRUE(table.contains(std::string(row.name))) << row.name;
    EXPECT_TRUE(texts.contains(std::string(row.name))) << row.name;
    const std::vector<std::string>& cells = table.at(std::string(row.name));
    EXPECT_TRUE(cells[0] == row.phrase || cells[0].starts_with('(')) << row.name << ": " << cells[0];
    EXPECT_TRUE(cells[1].empty() || cells[1].starts_with(TestCode(row.result))) << row.name << ": " << cells[1];
    EXPECT_TRUE(cells[2].empty() || cells[2].starts_with(FileCode(row.fileResult))) << row.name << ": " << cells[2];
  }
}

}  // namespace
}  // namespace recorder
