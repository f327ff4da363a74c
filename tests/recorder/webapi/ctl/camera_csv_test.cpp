#include "recorder/webapi/ctl/camera_csv.h"

#include <gtest/gtest.h>
#include <json/json.h>

#include <fstream>

#include "recorder/utility/text.h"
#include "recorder/webapi/ctl/csv_cell.h"
#include "tests/recorder/rows.h"

namespace recorder {
namespace {

/// The mistakes as "line:column", a blank behind each.
std::string Places(const CameraList& list) {
  std::string places;
  for (const ListMistake& mistake : list.mistakes) places += std::to_string(mistake.line) + ':' + mistake.column + ' ';
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
  EXPECT_EQ(list.cameras[1].camera.port, 554);
  EXPECT_EQ(list.cameras[1].line, 4);
  EXPECT_EQ(list.cameras[1].password, " c ") << "blanks belong to the cell";
  EXPECT_EQ(list.cameras[1].camera.name, "cam2");
  EXPECT_EQ(Places(ReadCameraCsv("")), "1: ");
}

/// The page's test reads the same rows.
TEST(CameraCsvTest, NoCellIsAFormulaAndEachIsReadAsItWas) {
  Json::Value rows;
  std::ifstream(SOURCE_FOLDER "/tests/data/csv/formulas.json") >> rows;
  ASSERT_GT(rows.size(), 10U);
  for (const Json::Value& row : rows) {
    const std::string text = row[0].asString();
    EXPECT_EQ(WithoutGuards(row[1].asString()), text);
    const std::string cell = ToCsvCell(text);
    const bool hasQuote = text.find('"') != std::string::npos;
    EXPECT_TRUE(hasQuote || cell == '"' + row[1].asString() + '"') << cell;
    if (HoldsControls(text)) continue;  // no value of a camera
    const CameraList list = ReadCameraCsv("vendor,model,host,port,password\nAcme,X,cam1,80," + cell);
    ASSERT_EQ(list.cameras.size(), 1U) << cell;
    EXPECT_EQ(list.cameras[0].password, text);
  }
  for (const char* foreign : {"'=a;=b", "it's", "a,'b"}) EXPECT_EQ(WithoutGuards(foreign), foreign);
}

struct CsvCase {
  const char* name;
  std::string lines;  // behind the one of cam1, before that of cam9
  const char* places;
  const char* heading = "vendor,model,host,port,name";
};

const CsvCase kCsvCases[] = {
    {"PortWithTail", "Acme,X,cam2,80 ,n\n", "3:port "},
    {"PortTooLarge", "Acme,X,cam2,65536,n\n", "3:port "},
    {"HostMissing", "Acme,X,,80,\n", "3:host "},
    {"LoginInHost", "Acme,X,a@evil.example,80,n\n", "3:host "},
    {"BlankInVendor", "Ac me,X,cam2,80,n\n", "3:vendor "},
    {"Latin1Name", "Acme,X,cam2,80,T\xfcr\n", "3:name "},
    {"LineBreakInName", "Acme,X,cam2,80,\"n\nm\"\nAcme,X,cam3,http,n\n", "3:name 5:port "},
    {"PlaceholderAsPassword", std::string("Acme,X,cam2,80,") + gszFakePass + "\n", "3:password ",
     "vendor,model,host,port,password"},
    {"TooFewCells", "Acme,X,cam2\n", "3: "},
    {"TooManyCells", "Acme,X,cam2,80,n,\n", "3: "},
    {"TextAfterQuote", "Acme,X,\"cam\"2,80,n\n", "3:host "},
    {"QuoteInside", "Acme,X\"1\",cam2,80,n\n", "3:model "},
    {"QuoteNeverClosed", "Acme,X,cam2,80,\"n\n", "3:name "},
    {"UnknownColumn", "", "1:nmae ", "vendor,model,host,port,nmae"},
    {"ColumnTwice", "", "1:host ", "vendor,model,host,port,host"},
    {"ColumnMissing", "", "1:port ", "vendor,model,host,name,user"},
};

class CsvMistakeTest : public testing::TestWithParam<CsvCase> {};

TEST_P(CsvMistakeTest, NamesLineAndColumnAndKeepsTheRest) {
  const CsvCase& row = GetParam();
  const CameraList list =
      ReadCameraCsv(std::string(row.heading) + "\nAcme,X,cam1,80,n\n" + row.lines + "Acme,X,cam9,80,n\n");
  EXPECT_EQ(Places(list), row.places);
  ASSERT_EQ(list.cameras.size(), row.lines.empty() ? 0U : 2U);
  EXPECT_TRUE(list.cameras.empty() || list.cameras[1].camera.host == "cam9");
}

INSTANTIATE_TEST_SUITE_P(List, CsvMistakeTest, testing::ValuesIn(kCsvCases), kByName);

}  // namespace
}  // namespace recorder
