#pragma once

#include <gst/gst.h>

#include <memory>
#include <string>

#include "simcam/config.h"

namespace simcam {

struct Unref {
  void operator()(GstElement* object) const noexcept { gst_object_unref(object); }
  void operator()(GstPad* object) const noexcept { gst_object_unref(object); }
  void operator()(GstBus* object) const noexcept { gst_object_unref(object); }
  void operator()(GstMessage* message) const noexcept { gst_message_unref(message); }
  void operator()(GstSample* sample) const noexcept { gst_sample_unref(sample); }
  void operator()(GstBuffer* buffer) const noexcept { gst_buffer_unref(buffer); }
  void operator()(GstCaps* caps) const noexcept { gst_caps_unref(caps); }
};
using Element = std::unique_ptr<GstElement, Unref>;
using Pad = std::unique_ptr<GstPad, Unref>;
using Bus = std::unique_ptr<GstBus, Unref>;
using Message = std::unique_ptr<GstMessage, Unref>;
using Sample = std::unique_ptr<GstSample, Unref>;
using Buffer = std::unique_ptr<GstBuffer, Unref>;
using Caps = std::unique_ptr<GstCaps, Unref>;

/// A launch description of the test picture: moving rings, with a place for a clock (ShowClock).
std::string TestPicture(Size size, int fps, const std::string& sourceOptions);

/// Launch descriptions of a stream's encoder, and of a codec's payloader (named `payName`).
std::string Encoder(const StreamConfig& stream);
std::string Payloader(const Codec& codec, const std::string& payName);

enum class Clock { kWall, kStream };

/// Draws HH:MM:SS.mmm into the pictures of a pipeline with a TestPicture: the time of day, or for what is encoded
/// beforehand the time in the stream.
void ShowClock(GstElement* pipeline, Clock clock);

/// A running pipeline with an appsink named "out". Throws std::runtime_error if the description is wrong.
class Pipeline {
 public:
  explicit Pipeline(const std::string& description);
  Pipeline(Pipeline&&) = default;
  ~Pipeline();

  [[nodiscard]] GstElement* Get() const { return element_.get(); }
  void Play() const;
  /// The next sample; empty at the end of the stream. Throws std::runtime_error when the pipeline failed.
  [[nodiscard]] Sample Pull() const;
  /// What Push will push: for a pipeline with an appsrc named "in".
  void SetInputCaps(const GstCaps* caps) const;
  /// Pushes into the appsrc; no buffer ends the stream.
  void Push(Buffer buffer) const;

 private:
  Element element_;
  Element in_;
  Element out_;
};

/// A copy of a buffer's bytes.
std::string Bytes(GstBuffer* buffer);

/// A JPEG of this moment.
std::string TakeSnapshot(Size size);

/// A pipeline that gives a JPEG for each moment, `fps` a second.
Pipeline LiveJpeg(Size size, int fps);

}  // namespace simcam
