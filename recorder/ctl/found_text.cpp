#include "recorder/ctl/found_text.h"

#include <string_view>
#include <utility>

#include "recorder/utility/text.h"

namespace recorder {

namespace {

std::string ProtocolsOf(const FoundPort& port) {
  std::string text;
  if (port.speaksRtsp) text += " RTSP";
  if (port.speaksHttp) text += port.isTls ? " HTTPS" : " HTTP";
  if (port.speaksOnvif) text += " ONVIF";
  return text;
}

std::string PortsOf(const FindResult& result) {
  std::string text;
  for (const FoundPort& port : result.ports) {
    text += (text.empty() ? "" : ", ") + std::to_string(port.number) + ProtocolsOf(port);
  }
  return text.empty() ? "none" : text;
}

std::string_view TextOf(FindLogin login) {
  switch (login) {
    case FindLogin::kNotTried:
      return "not tried";
    case FindLogin::kNotNeeded:
      return "not needed";
    case FindLogin::kAccepted:
      return "accepted";
    case FindLogin::kRefused:
      return "refused";
    case FindLogin::kOnvifOthers:
      return "accepted, but not over ONVIF";
  }
  return "";
}

std::string Count(std::size_t count, const std::string& thing) {
  return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

std::string Line(const std::string& name, const std::string& value, const std::string& from) {
  return value.empty() ? "" : name + '\t' + EscapeControls(value) + '\t' + EscapeControls(from) + '\n';
}

std::string SizeOf(const ListedStream& stream) {
  return stream.width == 0 ? "" : std::to_string(stream.width) + 'x' + std::to_string(stream.height);
}

std::string RowOf(const std::string& host, const ListedStream& stream) {
  const std::string rate = stream.frameRate == 0 ? "" : std::to_string(stream.frameRate);
  const std::string from = stream.from + (stream.isAsked ? "" : ", not asked");
  std::string row;
  for (const std::string& cell :
       {stream.channel, stream.name, AddressOf(host, stream), stream.codec, SizeOf(stream), rate, from}) {
    row += (row.empty() ? "" : "\t") + EscapeControls(cell);
  }
  return row + '\n';
}

std::string AboutClock(const FindResult& result) {
  using std::chrono::seconds;
  const seconds offset = result.clockOffset.value_or(seconds(0));
  const auto minutes = std::chrono::duration_cast<std::chrono::minutes>(std::chrono::abs(offset));
  return "the camera's clock is " + std::to_string(minutes.count()) + " min " +
         (offset > seconds(0) ? "fast" : "slow") + "; set it, or let it ask a time server";
}

}  // namespace

std::string TextOf(FindStep step, const FindResult& soFar) {
  switch (step) {
    case FindStep::kPorts:
      return "ports: " + PortsOf(soFar);
    case FindStep::kLogin:
      return "login: " + std::string(TextOf(soFar.login));
    case FindStep::kOnvif:
      return "ONVIF: " + Count(soFar.streams.size(), "stream");
    case FindStep::kPaths:
      return "paths of known models: " + Count(soFar.streams.size(), "stream");
  }
  return "";
}

std::string TextOf(FindWarning warning, const FindResult& result) {
  switch (warning) {
    case FindWarning::kAnyPath:
      return "the camera says yes to every path, so which streams it has is not sure; look at the picture";
    case FindWarning::kClockWrong:
      return AboutClock(result);
    case FindWarning::kOnvifOthers:
      return "the camera refused this login over ONVIF, which has users of its own there; to ask it for all that it "
             "can "
             "do, add such a user on the camera's page";
    case FindWarning::kEnded:
      return "the camera was asked as much as it may be, so that streams may be missing";
  }
  return "";
}

std::string AddressOf(const std::string& host, const ListedStream& stream) {
  const std::string scheme = stream.isOverHttp ? "http" : "rtsp";
  return scheme + (stream.isTls ? "s" : "") + "://" + WithBrackets(host) + ':' + std::to_string(stream.port) +
         stream.path;
}

std::string TextOf(const std::string& host, const FindResult& result) {
  std::string text = Line("ports", PortsOf(result), "") + Line("login", std::string(TextOf(result.login)), "");
  for (const auto& [name, fact] : {std::pair<const char*, const Fact&>("maker", result.maker),
                                   {"model", result.model},
                                   {"firmware", result.firmware},
                                   {"serial", result.serial}}) {
    text += Line(name, fact.value, fact.from);
  }
  if (result.streams.empty()) return text;
  text += "\nchannel\tstream\taddress\tcodec\tsize\tframes/s\tsaid by\n";
  for (const ListedStream& stream : result.streams) text += RowOf(host, stream);
  return text;
}

}  // namespace recorder
