#include "recorder/webapi/ctl/camera_csv.h"

#include <gtest/gtest.h>

namespace recorder {
namespace {

/// The mistakes as "line:column", one blank between them.
std::string Places(const CameraList& list) {
  std::string places;
  for (const ListMistake& mistake : list.mistakes) {
    places += (places.empty() ? "" : " ") + std::to_string(mistake.line) + ':' + mistake.column;
  }
  return places;
}

TEST(CameraCsvTest, ReadsQuotedCellsInAnyOrder) {
  const CameraList list = ReadCameraCsv(
      "\xef\xbb\xbfport,host,model,vendor,password,name\r\n"
      "80,cam1,X 100,Acme,\"a,\"\"b\"\"\",\"Gate, north\"\r\n"
      "\r\n"
      "554,cam2,X200,Acme, c ,");
  EXPECT_EQ(Places(list), "");
  ASSERT_EQ(list.cameras.size(), 2U);
  EXPECT_EQ(list.cameras[0].password, "a,\"b\"");
  EXPECT_EQ(list.cameras[0].camera.name, "Gate, north");
  EXPECT_EQ(list.cameras[0].camera.port, 80);
  EXPECT_EQ(list.cameras[1].line, 4);
  EXPECT_EQ(list.cameras[1].password, " c ") << "blanks belong to the cell";
  EXPECT_EQ(list.cameras[1].camera.name, "cam2");
}

struct CsvCase {
  const char* name;
  const char* heading;
  const char* lines;  // the first good line is cam1's, the last cam9's
  const char* places;
  std::size_t imported;
};

constexpr auto kHeading = "vendor,model,host,port,name\n";

const CsvCase kCsvCases[] = {
    {"PortIsText", kHeading, "Acme,X,cam2,http,n\n", "3:port", 2},
    {"PortWithTail", kHeading, "Acme,X,cam2,80 ,n\n", "3:port", 2},
    {"PortTooLarge", kHeading, "Acme,X,cam2,65536,n\n", "3:port", 2},
    {"HostMissing", kHeading, "Acme,X,,80,\n", "3:host", 2},
    {"TooFewCells", kHeading, "Acme,X,cam2\n", "3:", 2},
    {"TooManyCells", kHeading, "Acme,X,cam2,80,n,\n", "3:", 2},
    {"TwoMistakes", kHeading, "Ac me,X,cam2,80,n\nAcme,X,c@m,80,n\n", "3:vendor 4:host", 2},
    {"TextAfterQuote", kHeading, "Acme,X,\"cam\"2,80,n\n", "3:host", 2},
    {"QuoteInside", kHeading, "Acme,X\"1\",cam2,80,n\n", "3:model", 2},
    {"QuoteNeverClosed", kHeading, "Acme,X,cam2,80,\"n\n", "3:name", 2},
    {"LineBreakInCell", kHeading, "Acme,X,cam2,80,\"n\nm\"\nAcme,X,cam3,0,n\n", "3:name 5:port", 2},
    {"UnknownColumn", "vendor,model,host,port,nmae\n", "", "1:nmae", 0},
    {"ColumnTwice", "vendor,model,host,port,host\n", "", "1:host", 0},
    {"ColumnMissing", "vendor,model,host,name,user\n", "", "1:port", 0},
    {"NoHeading", "", "", "1:", 0},
};

class CsvMistakeTest : public testing::TestWithParam<CsvCase> {};

TEST_P(CsvMistakeTest, NamesLineAndColumnAndKeepsTheRest) {
  std::string text = GetParam().heading;
  if (!text.empty()) text += std::string("Acme,X,cam1,80,n\n") + GetParam().lines + "Acme,X,cam9,80,n\n";
  const CameraList list = ReadCameraCsv(text);
  EXPECT_EQ(Places(list), GetParam().places);
  ASSERT_EQ(list.cameras.size(), GetParam().imported);
  if (GetParam().imported == 2) {
    EXPECT_EQ(list.cameras[1].camera.host, "cam9");
  }
}

INSTANTIATE_TEST_SUITE_P(List, CsvMistakeTest, testing::ValuesIn(kCsvCases),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace recorder
