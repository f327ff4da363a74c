#include "simcam/picture.h"

#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>
#include <gst/video/video.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <stdexcept>

#include "simcam/xml_text.h"

namespace simcam {
namespace {

/// A text of digits and colons, drawn as seven segments so that no font is needed: a bit a segment, from the top
/// clockwise, the middle last.
constexpr std::array<unsigned, 10> kSegments = {0x3f, 0x06, 0x5b, 0x4f, 0x66, 0x6d, 0x7d, 0x07, 0x7f, 0x6f};

/// The luma plane of a picture.
struct Canvas {
  guint8* bytes;
  int stride;
  Size size;

  void Fill(int x, int y, int width, int height, guint8 value) const {
    const int right = std::min(x + width, size.width);
    const int bottom = std::min(y + height, size.height);
    for (int row = y; row < bottom; ++row) {
      guint8* line = bytes + static_cast<ptrdiff_t>(row) * stride;
      if (x < right) std::fill(line + x, line + right, value);
    }
  }

  void DrawDigit(int x, int y, int pen, int digit) const {
    const std::array<std::array<int, 4>, 7> segments = {
        {{1, 0, 2, 1}, {3, 1, 1, 2}, {3, 4, 1, 2}, {1, 6, 2, 1}, {0, 4, 1, 2}, {0, 1, 1, 2}, {1, 3, 2, 1}}};
    for (size_t i = 0; i < segments.size(); ++i) {
      if ((kSegments[static_cast<size_t>(digit)] >> i & 1U) == 0) continue;
      const auto& [left, top, wide, high] = segments[i];
      Fill(x + left * pen, y + top * pen, wide * pen, high * pen, 235);
    }
  }

  void DrawText(const std::string& text) const {
    const int pen = std::max(1, size.height / 120);
    const int step = 6 * pen;
    Fill(0, 0, step * static_cast<int>(text.size()) + pen, 9 * pen, 16);
    int x = pen;
    for (const char c : text) {
      if (c >= '0' && c <= '9') DrawDigit(x, pen, pen, c - '0');
      if (c == ':') Fill(x + 2 * pen, 3 * pen, pen, pen, 235);
      if (c == ':' || c == '.') Fill(x + 2 * pen, 6 * pen, pen, pen, 235);
      x += step;
    }
  }
};

std::string ClockText(std::chrono::milliseconds sinceEpoch) {
  const std::time_t seconds = std::chrono::duration_cast<std::chrono::seconds>(sinceEpoch).count();
  std::tm parts{};
  localtime_r(&seconds, &parts);
  std::array<char, 16> text{};
  std::strftime(text.data(), text.size(), "%H:%M:%S.", &parts);
  const std::string milliseconds = std::to_string(1000 + sinceEpoch.count() % 1000);
  return text.data() + milliseconds.substr(1);
}

std::chrono::milliseconds Now() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch());
}

void DrawClock(GstPad* pad, GstBuffer* buffer, Clock clock) {
  const Caps caps(gst_pad_get_current_caps(pad));
  GstVideoInfo info;
  GstVideoFrame frame;
  if (!caps || gst_video_info_from_caps(&info, caps.get()) == 0) return;
  if (gst_video_frame_map(&frame, &info, buffer, GST_MAP_WRITE) == 0) return;
  const std::chrono::milliseconds streamTime(GST_BUFFER_PTS(buffer) / GST_MSECOND);
  const Canvas canvas{static_cast<guint8*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)),
                      GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0),
                      {info.width, info.height}};
  canvas.DrawText(ClockText(clock == Clock::kWall ? Now() : streamTime));
  gst_video_frame_unmap(&frame);
}

template <Clock clock>
GstPadProbeReturn OnPicture(GstPad* pad, GstPadProbeInfo* info, gpointer) {
  info->data = gst_buffer_make_writable(static_cast<GstBuffer*>(info->data));
  DrawClock(pad, static_cast<GstBuffer*>(info->data), clock);
  return GST_PAD_PROBE_OK;
}

}  // namespace

std::string TestPicture(Size size, int fps, const std::string& sourceOptions) {
  return "videotestsrc pattern=zone-plate kx2=" + std::to_string(12800 / size.width) +
         " ky2=" + std::to_string(12800 / size.width) + " kt=3 " + sourceOptions +
         " ! video/x-raw,format=I420,width=" + std::to_string(size.width) + ",height=" + std::to_string(size.height) +
         ",framerate=" + std::to_string(fps) + "/1 ! identity name=clock";
}

std::string Encoder(const StreamConfig& stream) {
  const char* deeper = stream.depth > 8 ? "videoconvert ! video/x-raw,format=I420_10LE ! " : "";
  return deeper +
         Fill(stream.codec->encoder, {{"gop", stream.gop}, {"bitrate", stream.bitrate}, {"slices", stream.slices}});
}

std::string Payloader(const Codec& codec, const std::string& payName) { return codec.payloader + (" name=" + payName); }

void ShowClock(GstElement* pipeline, Clock clock) {
  const Element element(gst_bin_get_by_name(GST_BIN(pipeline), "clock"));
  if (!element) return;
  const Pad pad(gst_element_get_static_pad(element.get(), "src"));
  gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER,
                    clock == Clock::kWall ? OnPicture<Clock::kWall> : OnPicture<Clock::kStream>, nullptr, nullptr);
}

Pipeline::Pipeline(const std::string& description) {
  GError* error = nullptr;
  element_.reset(gst_parse_launch(description.c_str(), &error));
  if (error != nullptr) {
    const std::string text = error->message;
    g_error_free(error);
    throw std::runtime_error("GStreamer: " + text);
  }
  in_.reset(gst_bin_get_by_name(GST_BIN(element_.get()), "in"));
  out_.reset(gst_bin_get_by_name(GST_BIN(element_.get()), "out"));
}

Pipeline::~Pipeline() {
  if (element_) gst_element_set_state(element_.get(), GST_STATE_NULL);
}

void Pipeline::Play() const { gst_element_set_state(element_.get(), GST_STATE_PLAYING); }

Sample Pipeline::Pull() const {
  // The sink waits for ever if the pipeline fails, so ask its bus as well.
  constexpr GstClockTime kWait = 100 * GST_MSECOND;
  auto* sink = GST_APP_SINK(out_.get());
  const Bus bus(gst_element_get_bus(element_.get()));
  while (true) {
    Sample sample(gst_app_sink_try_pull_sample(sink, kWait));
    if (sample || gst_app_sink_is_eos(sink) != 0) return sample;
    const Message failure(gst_bus_pop_filtered(bus.get(), GST_MESSAGE_ERROR));
    if (failure) throw std::runtime_error("GStreamer pipeline failed");
  }
}

void Pipeline::SetInputCaps(const GstCaps* caps) const { gst_app_src_set_caps(GST_APP_SRC(in_.get()), caps); }

void Pipeline::Push(Buffer buffer) const {
  auto* source = GST_APP_SRC(in_.get());
  if (buffer) {
    gst_app_src_push_buffer(source, buffer.release());
  } else {
    gst_app_src_end_of_stream(source);
  }
}

std::string Bytes(GstBuffer* buffer) {
  std::string bytes(gst_buffer_get_size(buffer), '\0');
  gst_buffer_extract(buffer, 0, bytes.data(), bytes.size());
  return bytes;
}

std::string TakeSnapshot(Size size) {
  const auto phase = Now().count() % 1000;
  const Pipeline pipeline(TestPicture(size, 25, "num-buffers=1 kt=0 k0=" + std::to_string(phase)) +
                          " ! jpegenc quality=75 ! appsink name=out sync=false");
  ShowClock(pipeline.Get(), Clock::kWall);
  pipeline.Play();
  const Sample sample = pipeline.Pull();
  return sample ? Bytes(gst_sample_get_buffer(sample.get())) : std::string();
}

Pipeline LiveJpeg(Size size, int fps) {
  Pipeline pipeline(TestPicture(size, fps, "is-live=true") +
                    " ! jpegenc quality=75 ! appsink name=out sync=false max-buffers=2 drop=true");
  ShowClock(pipeline.Get(), Clock::kWall);
  pipeline.Play();
  return pipeline;
}

}  // namespace simcam
