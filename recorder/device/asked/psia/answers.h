#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/device/asked/camera_report.h"
#include "recorder/device/asked/xml.h"
#include "recorder/net/http/http_session.h"

// What the answers of the PSIA IP media device API (1.0, 1.1) say. Elements are found by local name in any namespace,
// since makers extend PSIA's. Pure functions, any thread; an answer of any content is safe to read.

namespace recorder::psia {

struct Reading {
  Outcome outcome = Outcome::kNotUnderstood;
  XmlDocument document;
};

/// Reads an answer whose root element must have one of the names `wanted`. Another outcome than kOk: that of the
/// request, of its status, or of the camera's ResponseStatus; kNotThisProtocol: a page, or no XML at all;
/// kNotUnderstood: another document, one that ends early, or one that declares a document type.
Reading ReadAnswer(const HttpAnswer& answer, std::initializer_list<std::string_view> wanted);

/// A setting of a channel: what it is now ("": not said), and what it can be.
struct Setting {
  std::string current;
  std::vector<std::string> values;
};

/// What a StreamingChannel document says. Absent values are not said.
struct StreamingChannel {
  std::string id;
  bool isEnabled = true;
  bool hasHttp = false;  ///< streams over HTTP, too
  std::optional<int> rtspPort;
  Setting codec;      ///< in the camera's words
  Setting width;      ///< pixels
  Setting height;     ///< pixels
  Setting quality;    ///< percent
  Setting frameRate;  ///< hundredths of a frame a second
  std::string input;  ///< id of the video input
  bool hasVideo = false;
  bool hasAudio = false;
};

/// Maker, model and firmware of a DeviceInfo document; and one of them.
std::string ReadDevice(const XmlElement& deviceInfo);
std::string ReadMaker(const XmlElement& deviceInfo);
std::string ReadModelName(const XmlElement& deviceInfo);

StreamingChannel ReadChannel(const XmlElement& streamingChannel);

/// The channels of a StreamingChannelList, but for those whose id cannot stand in a path: empty, or with control
/// characters.
std::vector<StreamingChannel> ReadChannels(const XmlElement& streamingChannelList);

/// The number of inputs of an IOInputPortList.
int CountInputs(const XmlElement& inputPortList);

/// Ids of those of `channels` that a MotionDetectionList (or the one MotionDetection) names, by their own id or by that
/// of their video input; the one called `asked` where motion detection is there without a name that we know.
std::vector<std::string> ReadMotionChannels(const XmlElement& motionDetection,
                                            const std::vector<StreamingChannel>& channels, const std::string& asked);

/// Fills in what follows from the chosen channel alone: codecs, settings, stream and snapshot. False when it names no
/// codec that the recorder knows.
bool FillIn(const StreamingChannel& channel, CameraReport& report);

}  // namespace recorder::psia
