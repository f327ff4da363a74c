#include "platform/media.h"

#include <cstdlib>
#include <cstring>

#include "tests/double/script.h"

using scripted::Bytes;
using scripted::Call;
using scripted::Result;
using scripted::WriteCall;

namespace {

// A grab is single-threaded.
int lastUnit = 0;                   // number of the unit made last
bool packetizerMakesUnits = false;  // making those is not a call of the module's
const ESFormat* streamFormat = nullptr;

unsigned char* CopyBlock(const void* block, int size) {
  if (block == nullptr || size == 0) return nullptr;
  void* copy = std::malloc(size_t(size));
  return static_cast<unsigned char*>(std::memcpy(copy, block, size_t(size)));
}

}  // namespace

ESFormat::ESFormat() = default;
ESFormat::~ESFormat() { std::free(extradata); }
ESFormat::ESFormat(const ESFormat& other) { *this = other; }
ESFormat& ESFormat::operator=(const ESFormat& other) {
  if (this == &other) return *this;
  std::free(extradata);
  type = other.type;
  codec = other.codec;
  extradata = CopyBlock(other.extradata, other.extradataSize);
  extradataSize = other.extradataSize;
  return *this;
}

struct RtpFetch::Impl {
  scripted::Life life{"RtpFetch"};
};
RtpFetch::RtpFetch(const std::string& host, int port, const std::string& path, const std::string& user,
                   const std::string& password, bool withAudio, const std::string& audioPath,
                   STREAMING_TYPE streamingType, RTSP_PROTOCOL rtspProtocol, int timeoutSeconds,
                   const std::string& localAddress, const std::string& userAgent)
    : impl(std::make_unique<Impl>()) {
  lastUnit = 0;
  WriteCall("RtpFetch", host, port, path, user, password, withAudio, audioPath, streamingType, rtspProtocol,
            timeoutSeconds, localAddress, userAgent);
}
RtpFetch::~RtpFetch() { scripted::Write("~RtpFetch"); }
int RtpFetch::NextPartInfo(unsigned int& /*partNumber*/, char* header, unsigned int headerSize, int& /*headerLength*/) {
  return Call("NextPartInfo", Bytes{reinterpret_cast<unsigned char*>(header), 0}, headerSize).asInt();
}
int RtpFetch::GetVideoFormat(ESFormat& format, ES_FORMAT_DETAIL detail) {
  const Json::Value answer = Call("GetVideoFormat", detail);  // [result, type, codec, configuration]
  const std::string configuration = answer[3].asString();
  format.type = answer[1].asInt();
  format.codec = answer[2].asUInt();
  std::free(format.extradata);
  format.extradata = CopyBlock(configuration.data(), static_cast<int>(configuration.size()));
  format.extradataSize = static_cast<int>(configuration.size());
  return answer[0].asInt();
}
int RtpFetch::GetImgContentInfo(int& size, timeval& captureTime) {
  const Json::Value answer = Call("GetImgContentInfo");  // [size, seconds, microseconds]
  size = answer[0].asInt();
  captureTime.tv_sec = answer[1].asInt();
  captureTime.tv_usec = answer[2].asInt();
  return 0;
}
int RtpFetch::FetchContent(unsigned char* destination, unsigned int size) {
  const Json::Value answer = Call("FetchContent", size);
  if (answer.isArray()) answer[1].asString().copy(reinterpret_cast<char*>(destination), size);
  return Result(answer).asInt();
}

struct MediaUnit::Impl {
  scripted::Life life{"MediaUnit"};
  int number = ++lastUnit;
  std::string buffer;
  unsigned int flags = 0;
  bool hasFrame = true;
  bool endIsQuiet = false;

  static Impl& Of(MediaUnit& unit) { return *unit.impl; }
  std::string Name() const { return "#" + std::to_string(number); }
};
MediaUnit::MediaUnit(int size) : impl(std::make_unique<Impl>()) {
  impl->buffer.resize(size_t(size));
  if (!packetizerMakesUnits) WriteCall("MediaUnit " + impl->Name(), size);
}
MediaUnit::~MediaUnit() {
  if (!impl->endIsQuiet) scripted::Write("~MediaUnit " + impl->Name());
}
unsigned char* MediaUnit::GetBuffer() { return reinterpret_cast<unsigned char*>(impl->buffer.data()); }
void MediaUnit::SetPTS(std::int64_t presentationTime) { WriteCall(impl->Name() + ".SetPTS", presentationTime); }
void MediaUnit::SetDTS(std::int64_t decodingTime) { WriteCall(impl->Name() + ".SetDTS", decodingTime); }
void MediaUnit::SetTimestamp(std::int64_t arrivalTime) { WriteCall(impl->Name() + ".SetTimestamp", arrivalTime); }
unsigned int MediaUnit::GetFrameType() const { return impl->flags; }
const unsigned char* MediaUnit::GetFrame() const {
  return impl->hasFrame ? reinterpret_cast<const unsigned char*>(impl->buffer.data()) : nullptr;
}
int MediaUnit::GetFrameSize() const { return static_cast<int>(impl->buffer.size()); }
void MediaUnit::SetFrameType(unsigned int flags) { impl->flags = flags; }

Packetizer::Packetizer() = default;
Packetizer::~Packetizer() = default;

namespace {

class ScriptedPacketizer : public Packetizer {
 public:
  int Open(const ESFormat& /*format*/) override { return 0; }
  void Close() override {}
  MediaUnit* Packetize(MP4Stream* stream, MediaUnit** input) override {
    const char* place = stream != nullptr && &stream->format == streamFormat ? "Packetize" : "Packetize of no stream";
    if (input == nullptr) {
      WriteCall(place, nullptr);
    } else if (*input == nullptr) {
      WriteCall(place);
    } else {
      TakeOver(place, *input);
      *input = nullptr;
    }
    return MakeUnit(scripted::Answer("Packetize"));
  }

 private:
  static void TakeOver(const char* place, MediaUnit* unit) {
    MediaUnit::Impl& content = MediaUnit::Impl::Of(*unit);
    WriteCall(place + (" " + content.Name()), content.buffer);
    content.endIsQuiet = true;
    delete unit;
  }

  /// From [flags, frame], where a null frame is one without data but with a size; null: none is ready.
  static MediaUnit* MakeUnit(const Json::Value& answer) {
    if (answer.isNull()) return nullptr;
    packetizerMakesUnits = true;
    auto* unit = new MediaUnit(0);
    packetizerMakesUnits = false;
    MediaUnit::Impl& content = MediaUnit::Impl::Of(*unit);
    content.hasFrame = answer[1].isString();
    content.buffer = content.hasFrame ? answer[1].asString() : "no data";
    unit->SetFrameType(answer[0].asUInt());
    return unit;
  }

  scripted::Life life_{"Packetizer"};
};

}  // namespace

struct MP4Stream::Impl {
  scripted::Life life{"MP4Stream"};
};
MP4Stream::MP4Stream(MP4_STREAM_KIND kind, int camId) : impl(std::make_unique<Impl>()) {
  WriteCall("MP4Stream", kind, camId);
  streamFormat = &format;
}
MP4Stream::~MP4Stream() {
  scripted::Write("~MP4Stream");
  delete packetizer;
}
int MP4Stream::Init() {
  const Json::Value answer = Call("Init", format.type, format.codec, Bytes{format.extradata, format.extradataSize});
  if (answer[1].asBool()) packetizer = new ScriptedPacketizer;
  return answer[0].asInt();
}

int DoFFMpegGetJpeg(int videoType, const unsigned char* extradata, int extradataSize, const unsigned char* frame,
                    int frameSize, unsigned char** jpeg, int* jpegSize) {
  const bool ofStream = streamFormat != nullptr && extradata == streamFormat->extradata;
  const Json::Value answer = Call(ofStream ? "DoFFMpegGetJpeg" : "DoFFMpegGetJpeg of another format", videoType,
                                  Bytes{extradata, extradataSize}, Bytes{frame, frameSize});
  return scripted::TakePicture(answer, jpeg, jpegSize);
}

void GetJpegReso(const unsigned char* jpeg, int jpegSize, int* width, int* height) {
  const Json::Value answer = Call("GetJpegReso", Bytes{jpeg, jpegSize});
  *width = answer[0].asInt();
  *height = answer[1].asInt();
}
