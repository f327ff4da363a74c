#include <gtest/gtest.h>

#include "recorder/device/check/multipart.h"
#include "recorder/media/jpeg_check.h"
#include "recorder/net/http/http_place.h"

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

using enum MultipartReader::State;

/// The first picture of an answer with the `parameter` of its content type is found however the answer arrives.
void ExpectPart(const std::string& parameter, const std::string& body, MultipartReader::State wanted) {
  for (const std::size_t step : {std::size_t{1}, std::size_t{7}, body.size()}) {
    MultipartReader reader("multipart/mixed; " + parameter, 1000);
    auto state = kMore;
    for (std::size_t at = 0; at < body.size() && state == kMore; at += step) state = reader.Feed(body.substr(at, step));
    EXPECT_EQ(state, wanted) << body.substr(0, 60) << " by " << step;
    EXPECT_EQ(reader.TakePicture(), state == kPicture ? kJpeg : "") << body.substr(0, 60) << " by " << step;
  }
}

const std::string kLength = "Content-Length: " + std::to_string(kJpeg.size()) + "\r\n\r\n";

TEST(PartTest, ThePictureIsFound) {
  ExpectPart("boundary=b", "\r\n--b\r\n\r\n" + kJpeg + "\r\n--b\r\n", kPicture);
  ExpectPart("boundary=b", "--b\r\n\r\n" + kJpeg, kMore);
  ExpectPart("boundary=\"--b\"", "--b\n" + kLength + kJpeg, kPicture);
  ExpectPart("boundary=b", "b\r\n\r\n" + kJpeg + "\r\nb\r\n", kPicture);
  ExpectPart("", "--any\r\n\r\n" + kJpeg + "\r\n--any", kPicture);
  ExpectPart("boundary=b", "--b\r\n\r\nhello\r\n--b\r\n" + kLength + kJpeg, kPicture);
}

TEST(PartTest, AnswersAreBounded) {
  ExpectPart("boundary=b", "--b\r\nContent-Length: 1001\r\n\r\n", kMalformed);
  ExpectPart("boundary=b", "--b\r\nContent-Length: -1\r\n\r\n", kMalformed);
  ExpectPart("boundary=b", "--b\r\n\r\n" + std::string(1100, 'x'), kMalformed);
  ExpectPart("boundary=b", std::string(9000, 'x'), kMalformed);
  ExpectPart("boundary=b", "--b\r\n" + std::string(9000, 'x'), kMalformed);
}

}  // namespace
}  // namespace recorder
