#include <gtest/gtest.h>

#include "recorder/decode/jpeg_check.h"
#include "recorder/decode/picture_finder.h"
#include "recorder/net/http/http_place.h"
#include "recorder/utility/bytes.h"

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

/// A grey JPEG of 64 x 64 pixels. Each block is two bits of its scan, both 0.
const std::string kHead = "\xFF\xD8\xFF\xDB\x00\x43\x00"s + std::string(64, '\1') +
                          "\xFF\xC0\x00\x0B\x08\x00\x40\x00\x40\x01\x01\x11\x00"
                          "\xFF\xC4\x00\x14\x00\x01\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
                          "\xFF\xC4\x00\x14\x10\x01\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
                          "\xFF\xDA\x00\x08\x01\x01\x00\x00\x3F\x00"s;
const std::string kEnd = "\xFF\xD9";
const std::string kWithoutEnd = kHead + std::string(16, '\0');
const std::string kJpeg = kWithoutEnd + kEnd;
const std::string kHalf = kHead + std::string(8, '\0') + kEnd;

using enum PictureFinder::State;

/// The first whole picture of a body is found however the body arrives.
void ExpectPicture(const std::string& body, PictureFinder::State wanted = kPicture) {
  for (const std::size_t step : {std::size_t{1}, std::size_t{7}, body.size()}) {
    PictureFinder finder(400);
    auto state = kMore;
    for (std::size_t at = 0; at < body.size() && state == kMore; at += step) state = finder.Feed(body.substr(at, step));
    if (state == kMore) state = finder.Finish();
    EXPECT_EQ(state, wanted) << body.substr(0, 60) << " by " << step;
    EXPECT_EQ(finder.TakePicture(), state == kPicture ? kJpeg : "") << body.substr(0, 60) << " by " << step;
  }
}

TEST(PictureTest, IsFoundWhateverIsAroundIt) {
  ExpectPicture(kJpeg);
  ExpectPicture(kJpeg + kJpeg);
  ExpectPicture("\r\n--b\r\n\r\n" + kJpeg + "\r\n--b\r\n");
  ExpectPicture("--b\r\nContent-Length: 0\r\n\r\n\r\n" + kJpeg);
  ExpectPicture(std::string(9000, 'x') + "\r\n\r\n" + kJpeg);
  ExpectPicture("--b\r\n\r\n\xFF\xD8\xFF\xD8hello\r\n--b\r\n\r\n" + kJpeg);
  ExpectPicture(kHalf + "\r\n--b\r\n\r\n" + kJpeg);
  ExpectPicture(kWithoutEnd + "\r\n--b\r\nContent-Type: image/jpeg\r\n\r\n" + kJpeg);
  ExpectPicture(kWithoutEnd + kJpeg);
  ExpectPicture(kWithoutEnd);
}

TEST(PictureTest, IsBounded) {
  const std::string large = "\xFF\xD8\xFF\xE1\x01\xF0" + std::string(500, 'x');
  ExpectPicture(large + kJpeg, kMalformed);
  ExpectPicture(kHalf + kHalf + kHalf + kHalf + kJpeg, kMalformed);
  ExpectPicture("<html>Please log in</html>", kMalformed);
  ExpectPicture(kHalf.substr(0, kHalf.size() - 2), kMalformed);
  ExpectPicture(kHead, kMalformed);
}

}  // namespace
}  // namespace recorder
