#include "recorder/device/multipart.h"

#include <gtest/gtest.h>

#include "tests/recorder/device/canned_server.h"

namespace recorder {
namespace {

constexpr std::size_t kMaxPart = 1000;

struct PartCase {
  const char* name;
  const char* contentType;
  std::string body;
  MultipartReader::State state;
};

using enum MultipartReader::State;

const std::string kLength = "Content-Length: " + std::to_string(TinyJpeg().size()) + "\r\n\r\n";

const PartCase kPartCases[] = {
    {"WithLength", "multipart/x-mixed-replace; boundary=b", "--b\r\n" + kLength + TinyJpeg(), kPicture},
    {"WithoutLength", "multipart/x-mixed-replace; boundary=b", "\r\n--b\r\n\r\n" + TinyJpeg() + "\r\n--b\r\n",
     kPicture},
    {"NoEndYet", "multipart/x-mixed-replace; boundary=b", "--b\r\n\r\n" + TinyJpeg(), kMore},
    {"DashesInTheBoundary", "multipart/x-mixed-replace;boundary=\"--b\"", "--b\n" + kLength + TinyJpeg(), kPicture},
    {"NoDashesOnTheLine", "Multipart/mixed; boundary=b", "b\r\n\r\n" + TinyJpeg() + "\r\nb\r\n", kPicture},
    {"NoBoundaryNamed", "multipart/x-mixed-replace", "--any\r\n\r\n" + TinyJpeg() + "\r\n--any", kPicture},
    {"TextFirst", "multipart/mixed; boundary=b", "--b\r\n\r\nhello\r\n--b\r\n" + kLength + TinyJpeg(), kPicture},
    {"LengthTooBig", "multipart/mixed; boundary=b", "--b\r\nContent-Length: 1001\r\n\r\n", kMalformed},
    {"LengthIsNoNumber", "multipart/mixed; boundary=b", "--b\r\nContent-Length: -1\r\n\r\n", kMalformed},
    {"PartTooBig", "multipart/mixed; boundary=b", "--b\r\n\r\n" + std::string(1100, 'x'), kMalformed},
    {"NeverADelimiter", "multipart/mixed; boundary=b", std::string(9000, 'x'), kMalformed},
    {"EndlessHeaders", "multipart/mixed; boundary=b", "--b\r\n" + std::string(9000, 'x'), kMalformed},
};

MultipartReader::State Feed(MultipartReader& reader, const std::string& body, std::size_t step) {
  auto state = kMore;
  for (std::size_t at = 0; at < body.size() && state == kMore; at += step) {
    state = reader.Feed(std::string_view(body).substr(at, step));
  }
  return state;
}

class PartTest : public testing::TestWithParam<PartCase> {};

TEST_P(PartTest, TakesTheFirstPictureHoweverItArrives) {
  for (const std::size_t step : {std::size_t{1}, std::size_t{7}, std::size_t{100'000}}) {
    MultipartReader reader(GetParam().contentType, kMaxPart);
    EXPECT_EQ(Feed(reader, GetParam().body, step), GetParam().state) << step;
    EXPECT_EQ(reader.TakePicture(), GetParam().state == kPicture ? TinyJpeg() : "") << step;
  }
}

INSTANTIATE_TEST_SUITE_P(Part, PartTest, testing::ValuesIn(kPartCases),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace recorder
