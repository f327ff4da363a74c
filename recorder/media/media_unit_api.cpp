#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <utility>

#include "platform/media.h"
#include "recorder/media/codecs.h"

namespace {

/// A unit is one frame already, as RtpFetch cuts its parts; what is added is the key-frame flag.
class UnitPacketizer : public Packetizer {
 public:
  int Open(const ESFormat& format) override {
    codec_ = format.codec;
    return recorder::CodecOfCode(codec_) == nullptr ? -1 : 0;
  }

  void Close() override {}  // nothing is held from one unit to the next

  MediaUnit* Packetize(MP4Stream* /*stream*/, MediaUnit** input) override {
    MediaUnit* unit = input == nullptr ? nullptr : std::exchange(*input, nullptr);
    if (unit == nullptr || unit->GetFrame() == nullptr) return unit;
    const std::span bytes(unit->GetFrame(), static_cast<std::size_t>(unit->GetFrameSize()));
    const bool isKey = recorder::ClassifyUnit(codec_, bytes) >= recorder::UnitKind::kRecoveryPoint;
    if (isKey) unit->SetFrameType(unit->GetFrameType() | FRAME_FLAG_KEY);
    return unit;
  }

 private:
  std::uint32_t codec_ = 0;
};

}  // namespace

ESFormat::ESFormat() = default;

ESFormat::~ESFormat() { std::free(extradata); }

ESFormat::ESFormat(const ESFormat& other) : ESFormat() { *this = other; }

ESFormat& ESFormat::operator=(const ESFormat& other) {
  if (this == &other) return *this;
  unsigned char* copy = nullptr;
  if (other.extradata != nullptr && other.extradataSize > 0) {
    copy = static_cast<unsigned char*>(std::malloc(static_cast<std::size_t>(other.extradataSize)));
    if (copy == nullptr) throw std::bad_alloc();
    std::memcpy(copy, other.extradata, static_cast<std::size_t>(other.extradataSize));
  }
  std::free(extradata);
  type = other.type;
  codec = other.codec;
  extradata = copy;
  extradataSize = copy == nullptr ? 0 : other.extradataSize;
  return *this;
}

struct MediaUnit::Impl {
  std::unique_ptr<unsigned char[]> bytes;
  int size = 0;
  unsigned int frameType = 0;
  std::int64_t presentationTime = 0;
  std::int64_t decodingTime = 0;
  std::int64_t arrivalTime = 0;
};

MediaUnit::MediaUnit(int size) : impl(std::make_unique<Impl>()) {
  impl->size = std::max(size, 0);
  // Left unset: the caller writes the whole buffer.
  impl->bytes = std::make_unique_for_overwrite<unsigned char[]>(static_cast<std::size_t>(impl->size));
}

MediaUnit::~MediaUnit() = default;

unsigned char* MediaUnit::GetBuffer() { return impl->bytes.get(); }
void MediaUnit::SetPTS(std::int64_t presentationTime) { impl->presentationTime = presentationTime; }
void MediaUnit::SetDTS(std::int64_t decodingTime) { impl->decodingTime = decodingTime; }
void MediaUnit::SetTimestamp(std::int64_t arrivalTime) { impl->arrivalTime = arrivalTime; }
unsigned int MediaUnit::GetFrameType() const { return impl->frameType; }
const unsigned char* MediaUnit::GetFrame() const { return impl->size > 0 ? impl->bytes.get() : nullptr; }
int MediaUnit::GetFrameSize() const { return impl->size; }
void MediaUnit::SetFrameType(unsigned int flags) { impl->frameType = flags; }

Packetizer::Packetizer() = default;
Packetizer::~Packetizer() = default;

struct MP4Stream::Impl {
  int kind;  // an MP4_STREAM_KIND
  int camId;
  std::unique_ptr<Packetizer> packetizer;
};

MP4Stream::MP4Stream(int kind, int camId) : impl(std::make_unique<Impl>(Impl{kind, camId, nullptr})) {}

MP4Stream::~MP4Stream() = default;

int MP4Stream::Init() {
  packetizer = nullptr;
  auto opened = std::make_unique<UnitPacketizer>();
  const bool isOpen = impl->kind == MP4_STREAM_VIDEO && opened->Open(format) == 0;
  impl->packetizer = isOpen ? std::move(opened) : nullptr;
  packetizer = impl->packetizer.get();
  return isOpen ? 0 : -1;
}
