#include "platform/media.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include "tests/double/script.h"

using namespace scripted;
using std::string;

namespace {

// A grab is single-threaded.
int lastUnit = 0;  // number of the unit made last

void SetConfiguration(ESFormat& format, const string& bytes) {
  std::free(format.extradata);
  format.extradata = bytes.empty() ? nullptr : reinterpret_cast<unsigned char*>(strndup(bytes.c_str(), bytes.size()));
  format.extradataSize = static_cast<int>(bytes.size());
}

}  // namespace

ESFormat::ESFormat() = default;
ESFormat::~ESFormat() { std::free(extradata); }
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the configuration is copied before it is freed
ESFormat& ESFormat::operator=(const ESFormat& other) {
  type = other.type;
  codec = other.codec;
  SetConfiguration(*this, Bytes(other.extradata, other.extradataSize).asString());
  return *this;
}

struct RtpFetch::Impl {};
RtpFetch::RtpFetch(const string& host, int port, const string& path, const string& user, const string& pass, bool audio,
                   const string& audioPath, int type, int protocol, int timeout, const string& local,
                   const string& name)
    : impl(std::make_unique<Impl>()) {
  lastUnit = 0;
  WriteCall("RtpFetch", host, port, path, user, pass, audio, audioPath, type, protocol, timeout, local, name);
}
RtpFetch::~RtpFetch() { Write("~RtpFetch"); }
int RtpFetch::NextPartInfo(unsigned int& /*partNumber*/, char* header, unsigned int headerSize, int& /*headerLength*/) {
  return Call<int>("NextPartInfo", header != nullptr, headerSize);
}
int RtpFetch::GetVideoFormat(ESFormat& format, int detail) {
  const Json::Value answer = Call("GetVideoFormat", detail);  // [result, type, codec, configuration]
  format.type = answer[1].asInt();
  format.codec = answer[2].asUInt();
  SetConfiguration(format, answer[3].asString());
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
  if (!answer.isArray()) return answer.asInt();
  answer[1].asString().copy(reinterpret_cast<char*>(destination), size);
  return answer[0].asInt();
}

/// A frame of "<null>" is one without data but with a size.
struct MediaUnit::Impl {
  string name = "#" + std::to_string(++lastUnit);
  string buffer;
  unsigned int flags = 0;
};
MediaUnit::MediaUnit(int size) : impl(std::make_unique<Impl>()) {
  impl->buffer.resize(size_t(size));
  WriteCall("MediaUnit " + impl->name, size);
}
MediaUnit::~MediaUnit() { Write("~MediaUnit " + impl->name); }
unsigned char* MediaUnit::GetBuffer() { return reinterpret_cast<unsigned char*>(impl->buffer.data()); }
void MediaUnit::SetPTS(std::int64_t time) { WriteCall(impl->name + ".SetPTS", time); }
void MediaUnit::SetDTS(std::int64_t time) { WriteCall(impl->name + ".SetDTS", time); }
void MediaUnit::SetTimestamp(std::int64_t time) { WriteCall(impl->name + ".SetTimestamp", time); }
unsigned int MediaUnit::GetFrameType() const { return impl->flags; }
const unsigned char* MediaUnit::GetFrame() const {
  return impl->buffer == "<null>" ? nullptr : reinterpret_cast<const unsigned char*>(impl->buffer.data());
}
int MediaUnit::GetFrameSize() const { return static_cast<int>(impl->buffer.size()); }
void MediaUnit::SetFrameType(unsigned int flags) { impl->flags = flags; }

Packetizer::Packetizer() = default;
Packetizer::~Packetizer() = default;

struct ScriptedPacketizer : Packetizer {
  int Open(const ESFormat& /*format*/) override { return 0; }
  void Close() override {}
  MediaUnit* Packetize(MP4Stream* /*stream*/, MediaUnit** input) override {
    MediaUnit* const unit = input != nullptr ? std::exchange(*input, nullptr) : nullptr;
    WriteCall("Packetize", unit != nullptr    ? Bytes(unit->GetBuffer(), unit->GetFrameSize())
                           : input != nullptr ? ""
                                              : "no slot");
    delete unit;
    if (unit != nullptr) output = Answer("Packetize");
    if (output.empty()) return nullptr;

    Json::Value answer;  // [flags, frame]
    output.removeIndex(0, &answer);
    const string frame = answer[1].asString();
    auto* made = new MediaUnit(static_cast<int>(frame.size()));
    frame.copy(reinterpret_cast<char*>(made->GetBuffer()), frame.size());
    made->SetFrameType(answer[0].asUInt());
    return made;
  }

  Json::Value output;  // what is left of the last unit's
};

struct MP4Stream::Impl {};
MP4Stream::MP4Stream(int kind, int camId) : impl(std::make_unique<Impl>()) { WriteCall("MP4Stream", kind, camId); }
MP4Stream::~MP4Stream() {
  Write("~MP4Stream");
  delete packetizer;
}
int MP4Stream::Init() {
  const Json::Value answer = Call("Init", format.type, format.codec, Bytes(format.extradata, format.extradataSize));
  if (answer[1].asBool()) packetizer = new ScriptedPacketizer;
  return answer[0].asInt();
}

int DoFFMpegGetJpeg(int type, const unsigned char* extradata, int extradataSize, const unsigned char* frame, int size,
                    unsigned char** jpeg, int* jpegSize) {
  const Json::Value configuration = Bytes(extradata, extradataSize);
  return TakePicture(Call("DoFFMpegGetJpeg", type, configuration, Bytes(frame, size)), jpeg, jpegSize);
}
void GetJpegReso(const unsigned char* jpeg, int jpegSize, int* width, int* height) {
  const Json::Value answer = Call("GetJpegReso", Bytes(jpeg, jpegSize));
  *width = answer[0].asInt();
  *height = answer[1].asInt();
}
