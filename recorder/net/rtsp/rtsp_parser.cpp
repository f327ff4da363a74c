#include "recorder/net/rtsp/rtsp_parser.h"

#include <algorithm>
#include <optional>

#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

constexpr std::size_t kReadSize = std::size_t{64} << 10;
constexpr std::size_t kFrameHeaderSize = 4;  // '$', channel, length in two bytes
constexpr std::string_view kAnswerStart = "RTSP/";

// What a camera may ask its client in mid-stream.
constexpr std::string_view kRequestStarts[] = {"OPTIONS ",       "ANNOUNCE ", "GET_PARAMETER ",
                                               "SET_PARAMETER ", "REDIRECT ", "TEARDOWN "};

enum class Likeness { kNo, kSoFar, kYes };

Likeness LikenessTo(std::string_view bytes, std::string_view start) {
  if (bytes.size() >= start.size()) return bytes.starts_with(start) ? Likeness::kYes : Likeness::kNo;
  return start.starts_with(bytes) ? Likeness::kSoFar : Likeness::kNo;
}

Likeness LikenessToMessage(std::string_view bytes) {
  Likeness best = LikenessTo(bytes, kAnswerStart);
  for (const std::string_view start : kRequestStarts) best = std::max(best, LikenessTo(bytes, start));
  return best;
}

/// Size of the header block with its blank line, npos when that has not come yet.
std::size_t HeaderBlockSize(std::string_view bytes) {
  for (std::size_t at = bytes.find('\n'); at != std::string_view::npos; at = bytes.find('\n', at + 1)) {
    const std::string_view after = bytes.substr(at + 1);
    if (after.starts_with('\n')) return at + 2;
    if (after.starts_with("\r\n")) return at + 3;
  }
  return std::string_view::npos;
}

std::optional<RtspMessage> ParseHeaderBlock(std::string_view block) {
  RtspMessage message;
  std::string_view start = Trimmed(TakeUntil(block, '\n'));
  const std::string_view first = TakeUntil(start, ' ');
  if (first.starts_with(kAnswerStart)) {
    const auto status = ParseNumber<int>(TakeUntil(start, ' '));
    if (!status || *status < 100 || *status > 999) return std::nullopt;
    message.status = *status;
  } else {
    message.method = first;
  }
  while (!block.empty()) {
    std::string_view line = TakeUntil(block, '\n');
    const bool continuesLine = line.starts_with(' ') || line.starts_with('\t');
    if (continuesLine && !message.headers.empty()) {
      message.headers.back().second.append(" ").append(Trimmed(line));
    } else if (line.find(':') != std::string_view::npos) {
      const std::string_view name = Trimmed(TakeUntil(line, ':'));
      message.headers.emplace_back(name, Trimmed(line));
    }
  }
  return message;
}

}  // namespace

std::string_view RtspMessage::Header(std::string_view name) const {
  const std::vector<std::string_view> values = Headers(name);
  return values.empty() ? std::string_view() : values.front();
}

std::vector<std::string_view> RtspMessage::Headers(std::string_view name) const {
  std::vector<std::string_view> values;
  for (const auto& [key, value] : headers) {
    if (EqualsIgnoreCase(key, name)) values.emplace_back(value);
  }
  return values;
}

void RtspParser::ExpectPackets(std::uint8_t rtpChannel, std::uint8_t rtcpChannel) {
  expectsPackets_ = true;
  rtpChannel_ = rtpChannel;
  rtcpChannel_ = rtcpChannel;
}

std::span<std::uint8_t> RtspParser::Space() {
  std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_), buffer_.begin() + static_cast<std::ptrdiff_t>(end_),
            buffer_.begin());
  end_ -= begin_;
  begin_ = 0;
  if (buffer_.size() < end_ + kReadSize) buffer_.resize(end_ + kReadSize);
  return std::span(buffer_).subspan(end_);
}

void RtspParser::Filled(std::size_t size) { end_ += size; }

std::string_view RtspParser::Unread() const {
  return {reinterpret_cast<const char*>(buffer_.data()) + begin_, end_ - begin_};
}

RtspParser::Item RtspParser::Next() {
  for (;;) {
    const Item item = NextHere();
    const bool isStray = item == Item::kForeign || item == Item::kMalformed;
    if (!isStray || !expectsPackets_) return item;
    if (!SkipStrayBytes()) return Item::kNone;
  }
}

RtspParser::Item RtspParser::NextHere() {
  while (begin_ < end_ && (buffer_[begin_] == '\r' || buffer_[begin_] == '\n')) ++begin_;
  if (begin_ == end_) return Item::kNone;
  if (expectsPackets_ && buffer_[begin_] == '$') return NextPacket();
  switch (LikenessToMessage(Unread())) {
    case Likeness::kNo:
      return Item::kForeign;
    case Likeness::kSoFar:
      return Item::kNone;
    case Likeness::kYes:
      break;
  }
  return NextMessage();
}

RtspParser::Item RtspParser::NextPacket() {
  const std::span<const std::uint8_t> bytes = std::span(buffer_).subspan(begin_, end_ - begin_);
  if (bytes.size() <= kFrameHeaderSize) return Item::kNone;
  const std::uint8_t channel = bytes[1];
  const std::size_t size = static_cast<std::size_t>(bytes[2] << 8 | bytes[3]);
  const bool isVersion2 = bytes[kFrameHeaderSize] >> 6 == 2;  // of RTP and RTCP alike
  if ((channel != rtpChannel_ && channel != rtcpChannel_) || !isVersion2 || size == 0) return Item::kForeign;
  if (bytes.size() < kFrameHeaderSize + size) return Item::kNone;
  packet_ = {channel == rtcpChannel_, bytes.subspan(kFrameHeaderSize, size)};
  begin_ += kFrameHeaderSize + size;
  return Item::kPacket;
}

RtspParser::Item RtspParser::NextMessage() {
  const std::string_view bytes = Unread();
  const std::size_t headerSize = HeaderBlockSize(bytes);
  if (std::min(headerSize, bytes.size()) > kLargestRtspHeaders) return Item::kMalformed;
  if (headerSize == std::string_view::npos) return Item::kNone;
  std::optional<RtspMessage> message = ParseHeaderBlock(bytes.substr(0, headerSize));
  if (!message) return Item::kMalformed;
  const std::string_view length = message->Header("Content-Length");
  const auto bodySize = ParseNumber<std::size_t>(length.empty() ? "0" : length);
  if (!bodySize || *bodySize > kLargestRtspBody) return Item::kMalformed;
  if (bytes.size() < headerSize + *bodySize) return Item::kNone;
  message->body = bytes.substr(headerSize, *bodySize);
  message_ = std::move(*message);
  begin_ += headerSize + *bodySize;
  return Item::kMessage;
}

/// Goes on to where a packet or a message may begin again. False when that is not in sight.
bool RtspParser::SkipStrayBytes() {
  const std::string_view bytes = Unread();
  std::size_t skipped = 1;
  for (; skipped < bytes.size(); ++skipped) {
    const std::string_view rest = bytes.substr(skipped);
    const bool isPacket = rest.front() == '$' && (rest.size() < 2 || rest[1] == static_cast<char>(rtpChannel_) ||
                                                  rest[1] == static_cast<char>(rtcpChannel_));
    if (isPacket || LikenessToMessage(rest) != Likeness::kNo) break;
  }
  begin_ += skipped;
  return begin_ < end_;
}

}  // namespace recorder
