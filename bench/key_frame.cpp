#include "bench/key_frame.h"

#include <turbojpeg.h>

#include <stdexcept>
#include <vector>

#include "recorder/utility/handle.h"

namespace bench {

namespace {

using TurboJpeg = std::unique_ptr<void, recorder::Deleter<tjDestroy>>;

constexpr int kQuality = 85;  // the recorder's

void Require(bool isDone, const char* what) {
  if (!isDone) throw std::runtime_error(what);
}

}  // namespace

PictureSize DecodedSize(const std::string& jpeg) {
  const TurboJpeg decoder(tjInitDecompress());
  const auto* bytes = reinterpret_cast<const unsigned char*>(jpeg.data());
  PictureSize size;
  int sampling = 0;
  int colours = 0;
  if (tjDecompressHeader3(decoder.get(), bytes, jpeg.size(), &size.width, &size.height, &sampling, &colours) != 0) {
    return {};
  }
  std::vector<unsigned char> planes(tjBufSizeYUV2(size.width, 1, size.height, sampling));
  const bool isWhole =
      tjDecompressToYUV2(decoder.get(), bytes, jpeg.size(), planes.data(), size.width, 1, size.height, 0) == 0;
  return isWhole ? size : PictureSize{};
}

KeyFrame::KeyFrame(const std::string& address) : packet_(av_packet_alloc()) {
  recorder::SilenceLibav();
  AVDictionary* options = nullptr;
  av_dict_set(&options, "rtsp_transport", "tcp", 0);
  AVFormatContext* camera = nullptr;
  const int opened = avformat_open_input(&camera, address.c_str(), nullptr, &options);
  av_dict_free(&options);
  camera_.reset(camera);
  Require(opened == 0, "libavformat cannot open the camera");
  do {
    av_packet_unref(packet_.get());
    Require(av_read_frame(camera_.get(), packet_.get()) == 0, "libavformat cannot read the stream");
  } while ((packet_->flags & AV_PKT_FLAG_KEY) == 0);
  parameters_ = camera_->streams[packet_->stream_index]->codecpar;
}

std::string KeyFrame::ToJpeg() const {
  if (parameters_->codec_id == AV_CODEC_ID_MJPEG) {
    return {reinterpret_cast<const char*>(packet_->data), static_cast<std::size_t>(packet_->size)};
  }
  const AVCodec* codec = avcodec_find_decoder(parameters_->codec_id);
  const recorder::CodecContext decoder(avcodec_alloc_context3(codec));
  decoder->thread_count = 1;
  avcodec_parameters_to_context(decoder.get(), parameters_);
  const recorder::Frame frame(av_frame_alloc());
  Require(avcodec_open2(decoder.get(), codec, nullptr) == 0 && avcodec_send_packet(decoder.get(), packet_.get()) == 0 &&
              avcodec_send_packet(decoder.get(), nullptr) == 0 &&
              avcodec_receive_frame(decoder.get(), frame.get()) == 0,
          "libavcodec cannot decode the key frame");

  const TurboJpeg encoder(tjInitCompress());
  const unsigned char* planes[] = {frame->data[0], frame->data[1], frame->data[2]};
  unsigned long size = tjBufSize(frame->width, frame->height, TJSAMP_420);
  std::string jpeg(size, '\0');
  auto* target = reinterpret_cast<unsigned char*>(jpeg.data());
  Require(tjCompressFromYUVPlanes(encoder.get(), planes, frame->width, frame->linesize, frame->height, TJSAMP_420,
                                  &target, &size, kQuality, TJFLAG_NOREALLOC) == 0,
          "libjpeg-turbo cannot encode the key frame");
  jpeg.resize(size);
  return jpeg;
}

}  // namespace bench
