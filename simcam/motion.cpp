#include "simcam/motion.h"

namespace simcam {
namespace {

constexpr const char* kEndMarker = "\xFF\xD9";

/// The header line of a part's length.
std::string LengthLine(Fault fault, size_t size) {
  if (fault == Fault::kPartLengthZero) size = 0;
  if (fault == Fault::kPartLengthShort) size -= 3;
  if (fault == Fault::kPartLengthLong) size += 3;
  return "Content-Length: " + std::to_string(size) + "\r\n";
}

}  // namespace

std::string MotionHead(Fault fault) {
  const std::string status = fault == Fault::kIcyStatus ? "ICY 200 OK\r\n" : "HTTP/1.1 200 OK\r\n";
  const std::string type = fault == Fault::kNoContentType ? ""
                           : fault == Fault::kRawJpegs
                               ? "Content-Type: image/jpeg\r\n"
                               : "Content-Type: multipart/x-mixed-replace; boundary=picture\r\n";
  return status + type + "Connection: close\r\n\r\n";
}

std::string MotionPart(Fault fault, const std::string& jpeg, bool isFirst) {
  if (fault == Fault::kRawJpegs) return jpeg;
  const bool isBare = isFirst && fault == Fault::kNoFirstBoundary;
  const std::string delimiter = isBare ? "" : fault == Fault::kOtherBoundary ? "--other\r\n" : "--picture\r\n";
  const std::string more = fault == Fault::kLongPartHeaders ? "X-Scene: " + std::string(9000, 'x') + "\r\n" : "";
  const std::string blank = fault == Fault::kBlankLineFirst ? "\r\n" : "";
  return delimiter + "Content-Type: image/jpeg\r\n" + more + LengthLine(fault, jpeg.size()) + "\r\n" + blank + jpeg +
         "\r\n";
}

std::string OddJpeg(Fault fault, const std::string& jpeg) {
  if (fault == Fault::kHalfJpegWithEnd) return jpeg.substr(0, jpeg.size() / 2) + kEndMarker;
  return fault == Fault::kNoEndMarker ? jpeg.substr(0, jpeg.size() - 2) : jpeg;
}

}  // namespace simcam
