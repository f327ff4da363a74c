#include "recorder/decode/depacketizer.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "recorder/media/codecs.h"

namespace recorder {
namespace {

constexpr int kIoBufferSize = 2048;

int ReadText(void* opaque, std::uint8_t* buffer, int size) {
  auto& rest = *static_cast<std::string_view*>(opaque);
  if (rest.empty()) return AVERROR_EOF;
  const std::size_t taken = std::min(rest.size(), static_cast<std::size_t>(size));
  std::memcpy(buffer, rest.data(), taken);
  rest.remove_prefix(taken);
  return static_cast<int>(taken);
}

IoContext MakeIo(void* opaque, int (*read)(void*, std::uint8_t*, int), int (*write)(void*, std::uint8_t*, int)) {
  auto* buffer = static_cast<unsigned char*>(av_malloc(kIoBufferSize));
  IoContext context(avio_alloc_context(buffer, kIoBufferSize, write != nullptr ? 1 : 0, opaque, read, write, nullptr));
  if (buffer == nullptr || !context) throw std::bad_alloc();
  return context;
}

}  // namespace

std::unique_ptr<Depacketizer> Depacketizer::Open(const std::string& description, SendControl sendControl) {
  SilenceLibav();
  std::unique_ptr<Depacketizer> depacketizer(new Depacketizer(std::move(sendControl)));
  return depacketizer->OpenFormat(description) ? std::move(depacketizer) : nullptr;
}

bool Depacketizer::OpenFormat(const std::string& description) {
  std::string_view text = description;
  const IoContext textIo = MakeIo(&text, ReadText, nullptr);
  AVFormatContext* format = avformat_alloc_context();
  if (format == nullptr) throw std::bad_alloc();
  format->pb = textIo.get();
  // Without these two flags libavformat parses the frames again, waits for the next one, and cuts key frames apart.
  format->flags |= AVFMT_FLAG_NOPARSE | AVFMT_FLAG_NOFILLIN;
  AVDictionary* options = nullptr;
  av_dict_set(&options, "sdp_flags", "custom_io", 0);
  av_dict_set(&options, "reorder_queue_size", "0", 0);
  const int result =
      avformat_open_input(&format, "", av_find_input_format("sdp"), &options);  // on failure frees `format`
  av_dict_free(&options);
  if (result < 0) return false;
  format_.reset(format);
  // The context of packets must be one for writing: the one for reading alone would wait for a full buffer.
  packets_ = MakeIo(this, ReadPacket, WritePacket);
  format_->pb = packets_.get();
  piece_.reset(av_packet_alloc());
  if (!piece_) throw std::bad_alloc();
  return format_->nb_streams == 1;
}

std::uint32_t Depacketizer::Codec() const {
  const recorder::Codec* codec = CodecOfLibav(avcodec_get_name(format_->streams[0]->codecpar->codec_id));
  return codec == nullptr ? 0 : codec->rtp->code;
}

std::span<const std::uint8_t> Depacketizer::Configuration() const {
  const AVCodecParameters& parameters = *format_->streams[0]->codecpar;
  return {parameters.extradata, static_cast<std::size_t>(std::max(parameters.extradata_size, 0))};
}

void Depacketizer::Feed(std::span<const std::uint8_t> packet, std::vector<std::uint8_t>& stream) {
  pending_ = packet;
  while (av_read_frame(format_.get(), piece_.get()) >= 0) {
    stream.insert(stream.end(), piece_->data, piece_->data + piece_->size);
    av_packet_unref(piece_.get());
  }
}

int Depacketizer::ReadPacket(void* self, std::uint8_t* buffer, int size) {
  const auto packet = std::exchange(static_cast<Depacketizer*>(self)->pending_, {});
  if (packet.empty() || packet.size() > static_cast<std::size_t>(size)) return AVERROR(EAGAIN);
  std::memcpy(buffer, packet.data(), packet.size());
  return static_cast<int>(packet.size());
}

int Depacketizer::WritePacket(void* self, std::uint8_t* bytes, int size) try {  // FFmpeg is C: nothing may be thrown
  static_cast<Depacketizer*>(self)->sendControl_({bytes, static_cast<std::size_t>(size)});
  return size;
} catch (const std::bad_alloc&) {
  return AVERROR(ENOMEM);
}

}  // namespace recorder
