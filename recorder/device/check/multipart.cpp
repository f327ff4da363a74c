#include "recorder/device/check/multipart.h"

#include <algorithm>
#include <utility>

#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

std::string_view WithoutDashes(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of('-'), text.size()));
  return text;
}

std::string Boundary(std::string_view contentType) {
  constexpr std::string_view kName = "boundary=";
  TakeUntil(contentType, ';');
  while (!contentType.empty()) {
    std::string_view parameter = Trimmed(TakeUntil(contentType, ';'));
    if (!StartsWithIgnoreCase(parameter, kName)) continue;
    parameter = Trimmed(parameter.substr(kName.size()));
    if (parameter.size() >= 2 && parameter.front() == '"') parameter = parameter.substr(1, parameter.size() - 2);
    return std::string(WithoutDashes(parameter));
  }
  return "";
}

}  // namespace

MultipartReader::MultipartReader(std::string_view contentType, std::size_t maxPart)
    : boundary_(Boundary(contentType)), maxPart_(maxPart) {
  buffer_.reserve(maxPart);  // growth would hold twice as much; what is not filled costs no memory
}

bool MultipartReader::IsMultipart(std::string_view contentType) {
  return StartsWithIgnoreCase(contentType, "multipart/");
}

MultipartReader::State MultipartReader::Feed(std::string_view bytes) {
  buffer_ += bytes;
  while (state_ == State::kMore && Advance()) {
  }
  return state_;
}

/// One line or part further. False when that needs more bytes.
bool MultipartReader::Advance() {
  switch (stage_) {
    case Stage::kDelimiter:
      return ReadDelimiter();
    case Stage::kHeaders:
      return ReadHeader();
    case Stage::kBody:
      return ReadBody();
  }
  return false;
}

bool MultipartReader::TakeLine(std::string& line) {
  const std::size_t end = buffer_.find('\n');
  const bool isWhole = end != std::string::npos;
  lineBytes_ += isWhole ? end + 1 : 0;
  if (lineBytes_ > kLargestPartLines || (!isWhole && lineBytes_ + buffer_.size() > kLargestPartLines))
    state_ = State::kMalformed;
  if (!isWhole || state_ == State::kMalformed) return false;
  line = Trimmed(std::string_view(buffer_).substr(0, end));
  buffer_.erase(0, end + 1);
  return true;
}

bool MultipartReader::ReadDelimiter() {
  std::string line;
  if (!TakeLine(line)) return false;
  const bool isDelimiter = boundary_.empty() ? line.starts_with("--") : WithoutDashes(line) == boundary_;
  if (!isDelimiter) return true;
  delimiter_ = line;
  partLength_.reset();
  stage_ = Stage::kHeaders;
  return true;
}

bool MultipartReader::ReadHeader() {
  std::string line;
  if (!TakeLine(line)) return false;
  if (line.empty()) {
    stage_ = Stage::kBody;
    searched_ = 0;
    return true;
  }
  constexpr std::string_view kName = "Content-Length:";
  if (!StartsWithIgnoreCase(line, kName)) return true;
  const std::string_view value = Trimmed(std::string_view(line).substr(kName.size()));
  partLength_ = ParseNumber<std::size_t>(value);
  if (!partLength_ || *partLength_ > maxPart_) state_ = State::kMalformed;
  return true;
}

bool MultipartReader::ReadBody() {
  if (partLength_) {
    if (buffer_.size() < *partLength_) return false;
    FinishPart(*partLength_, *partLength_);
    return true;
  }
  const std::size_t end = FindEnd();
  if (end == std::string::npos) {
    if (buffer_.size() > maxPart_ + delimiter_.size() + 2) state_ = State::kMalformed;
    return false;
  }
  const std::size_t length = end > 0 && buffer_[end - 1] == '\r' ? end - 1 : end;
  if (length > maxPart_) {
    state_ = State::kMalformed;
    return false;
  }
  FinishPart(length, end + 1);
  return true;
}

/// Place of the line end before the delimiter.
std::size_t MultipartReader::FindEnd() {
  const std::string end = "\n" + delimiter_;
  const std::size_t found = buffer_.find(end, searched_);
  searched_ = buffer_.size() > end.size() ? buffer_.size() - end.size() : 0;
  return found;
}

void MultipartReader::FinishPart(std::size_t length, std::size_t next) {
  constexpr std::string_view kJpegStart = "\xFF\xD8";
  if (std::string_view(buffer_).substr(0, length).starts_with(kJpegStart)) {
    buffer_.resize(length);
    picture_ = std::move(buffer_);
    state_ = State::kPicture;
    return;
  }
  buffer_.erase(0, next);
  lineBytes_ = 0;
  stage_ = Stage::kDelimiter;
}

}  // namespace recorder
