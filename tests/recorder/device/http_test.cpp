#include <gtest/gtest.h>

#include "recorder/device/multipart.h"
#include "recorder/media/jpeg_check.h"
#include "recorder/net/http_place.h"
#include "tests/recorder/rows.h"

namespace recorder {
namespace {

using namespace std::string_literals;

TEST(HttpTest, RedirectsStayAtTheCamera) {
  const HttpPlace camera{false, "cam", 80, "/"};
  EXPECT_EQ(RedirectTarget(camera, "http://CAM/x?y=1"), (HttpPlace{false, "cam", 80, "/x?y=1"}));
  EXPECT_EQ(RedirectTarget(camera, "http://cam:81/"), (HttpPlace{false, "cam", 81, "/"}));
  EXPECT_EQ(RedirectTarget(camera, "https://cam/"), (HttpPlace{true, "cam", 443, "/"}));
  EXPECT_EQ(RedirectTarget({false, "::1", 80, "/"}, "http://[::1]/a"), (HttpPlace{false, "::1", 80, "/a"}));
  EXPECT_EQ(RedirectTarget({true, "cam", 443, "/"}, "http://cam/"), std::nullopt) << "https is not left";
  EXPECT_EQ(RedirectTarget(camera, "http://cam.example/"), std::nullopt);
  EXPECT_EQ(RedirectTarget(camera, "http://cam@example/"), std::nullopt);
  EXPECT_EQ(RedirectTarget(camera, "file://cam/etc/passwd"), std::nullopt);
}

TEST(HttpTest, PathCannotAddToTheRequest) {
  EXPECT_EQ(RequestPath("a/../b c?d=http://x@y#z"), "/a/../b%20c?d=http://x@y%23z");
  EXPECT_EQ(RequestPath("/a\r\nX: y"), std::nullopt);
}

/// The markers of a JPEG of 16 x 8 pixels, with a few bytes for its scan.
const std::string kJpeg =
    "\xFF\xD8"
    "\xFF\xC0\x00\x0B\x08\x00\x08\x00\x10\x01\x01\x11\x00"
    "\xFF\xDA\x00\x08\x01\x01\x00\x00\x3F\x00"
    "abc\xFF\x00\xFF\xD0xyz\xFF\xD9"s;

TEST(JpegCheckTest, EveryCutIsNoticed) {
  EXPECT_TRUE(IsWholeJpeg(kJpeg + "padding"));
  EXPECT_FALSE(IsWholeJpeg("\xFF\xD8\xFF\xD9")) << "neither a size nor a scan";
  for (std::size_t length = 0; length < kJpeg.size(); ++length) EXPECT_FALSE(IsWholeJpeg(kJpeg.substr(0, length)));
}

struct PartCase {
  const char* name;
  const char* parameter;  // of the content type
  std::string body;
  MultipartReader::State state;
};

using enum MultipartReader::State;

const std::string kLength = "Content-Length: " + std::to_string(kJpeg.size()) + "\r\n\r\n";

const PartCase kPartCases[] = {
    {"WithoutLength", "boundary=b", "\r\n--b\r\n\r\n" + kJpeg + "\r\n--b\r\n", kPicture},
    {"NoEndYet", "boundary=b", "--b\r\n\r\n" + kJpeg, kMore},
    {"DashesInTheBoundary", "boundary=\"--b\"", "--b\n" + kLength + kJpeg, kPicture},
    {"NoDashesOnTheLine", "boundary=b", "b\r\n\r\n" + kJpeg + "\r\nb\r\n", kPicture},
    {"NoBoundaryNamed", "", "--any\r\n\r\n" + kJpeg + "\r\n--any", kPicture},
    {"TextFirst", "boundary=b", "--b\r\n\r\nhello\r\n--b\r\n" + kLength + kJpeg, kPicture},
    {"LengthTooBig", "boundary=b", "--b\r\nContent-Length: 1001\r\n\r\n", kMalformed},
    {"LengthIsNoNumber", "boundary=b", "--b\r\nContent-Length: -1\r\n\r\n", kMalformed},
    {"PartTooBig", "boundary=b", "--b\r\n\r\n" + std::string(1100, 'x'), kMalformed},
    {"NeverADelimiter", "boundary=b", std::string(9000, 'x'), kMalformed},
    {"EndlessHeaders", "boundary=b", "--b\r\n" + std::string(9000, 'x'), kMalformed},
};

class PartTest : public testing::TestWithParam<PartCase> {};

TEST_P(PartTest, TakesTheFirstPictureHoweverItArrives) {
  const std::string& body = GetParam().body;
  for (const std::size_t step : {std::size_t{1}, std::size_t{7}, body.size()}) {
    MultipartReader reader("multipart/mixed; "s + GetParam().parameter, 1000);
    auto state = kMore;
    for (std::size_t at = 0; at < body.size() && state == kMore; at += step) state = reader.Feed(body.substr(at, step));
    EXPECT_EQ(state, GetParam().state) << step;
    EXPECT_EQ(reader.TakePicture(), state == kPicture ? kJpeg : "") << step;
  }
}

INSTANTIATE_TEST_SUITE_P(Part, PartTest, testing::ValuesIn(kPartCases), kByName);

}  // namespace
}  // namespace recorder
