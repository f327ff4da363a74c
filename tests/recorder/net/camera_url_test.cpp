#include "recorder/net/camera_url.h"

#include <gtest/gtest.h>

#include <string>

namespace recorder {
namespace {

/// "scheme host port path" of an address, "none" for what is no address.
std::string Parts(const std::string& text) {
  const auto url = ParseCameraUrl(text);
  return url ? url->scheme + ' ' + url->host + ' ' + std::to_string(url->port) + ' ' + url->path : "none";
}

TEST(CameraUrlTest, KeepsWhatIsOfUse) {
  EXPECT_EQ(Parts("http://cam/a?b=/c"), "http cam 80 /a?b=/c");
  EXPECT_EQ(Parts(" HTTPS://CAM.?x@y:1\n"), "https cam 443 /?x@y:1");
  EXPECT_EQ(Parts("rtsp://[fe80::1]:8554/a/../b#c"), "rtsp fe80::1 8554 /a/../b");
  EXPECT_EQ(Parts("rtsp://[FE80::0:1%25eth0]:/"), "rtsp fe80::1 554 /");
  EXPECT_EQ(Parts("rtsps://u:p@ss:1@cam"), "rtsps cam 322 /") << "an at sign and a colon in the password";
  EXPECT_EQ(Parts("onvif://cam_1/\xC3\xA4 {0}?%"), "onvif cam_1 0 /%C3%A4%20%7B0%7D?%");
}

TEST(CameraUrlTest, RefusesWhatIsNoAddress) {
  for (const char* other : {"http://cam:65536/", "http://cam:0/", "http://cam:8o/", "http:///a", "http:/cam/a",
                            "http:/a://cam/", "http://u:p@/a", "http://a b/", "http://fe80::1/", "http://cam/a\nb",
                            "http://cam/\xC2\x85", "file:///etc/passwd", "//cam/a", "/onvif", ""}) {
    EXPECT_EQ(Parts(other), "none") << other;
  }
}

}  // namespace
}  // namespace recorder
