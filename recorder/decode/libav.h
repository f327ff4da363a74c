#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace recorder {

/// Deleter of a handle whose library frees it through a pointer to the handle.
template <auto FreeThrough>
struct DeleterThrough {
  template <class T>
  void operator()(T* handle) const noexcept {
    FreeThrough(&handle);
  }
};

inline void FreeIoContext(AVIOContext** context) {
  av_freep(&(*context)->buffer);  // libavformat may have replaced it, so that it is freed from there
  avio_context_free(context);
}

using CodecContext = std::unique_ptr<AVCodecContext, DeleterThrough<avcodec_free_context>>;
using FormatContext = std::unique_ptr<AVFormatContext, DeleterThrough<avformat_close_input>>;
using IoContext = std::unique_ptr<AVIOContext, DeleterThrough<FreeIoContext>>;
using Frame = std::unique_ptr<AVFrame, DeleterThrough<av_frame_free>>;
using AvPacket = std::unique_ptr<AVPacket, DeleterThrough<av_packet_free>>;

/// Keeps the libraries from writing to the process's standard error what a camera sent. Any thread, any number of
/// times.
inline void SilenceLibav() { [[maybe_unused]] static const bool isSilent = (av_log_set_level(AV_LOG_QUIET), true); }

}  // namespace recorder
