#include "simcam/clip.h"

#include <gst/sdp/sdp.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "simcam/glib_handle.h"

namespace simcam {
namespace {

constexpr size_t kRtpHeaderSize = 12;  ///< as ours are
constexpr int kH264Slice = 1;
constexpr int kH264IdrSlice = 5;
constexpr int kH264Sps = 7;
constexpr int kH264Pps = 8;

/// Whole GOPs, of a second at least.
int UnitCount(const StreamConfig& stream) {
  const int gops = (stream.fps + stream.gop - 1) / stream.gop;
  return stream.codec->isAllKeys ? stream.fps : gops * stream.gop;
}

std::string ClipName(const StreamConfig& stream) {
  return stream.file + stream.codec->name + "-" + std::to_string(stream.size.width) + "x" +
         std::to_string(stream.size.height) + "-" + std::to_string(stream.fps) + "fps-gop" +
         std::to_string(stream.gop) + "-" + std::to_string(stream.bitrate) + "kbps-slices" +
         std::to_string(stream.slices) + "-depth" + std::to_string(stream.depth);
}

std::string EncodeDescription(const StreamConfig& stream) {
  return TestPicture(stream.size, stream.fps, "num-buffers=" + std::to_string(UnitCount(stream))) + " ! " +
         Encoder(stream);
}

/// A file's clip from its first key frame on.
void StartAtKeyFrame(Clip& clip, const StreamConfig& stream) {
  const auto first =
      std::find_if(clip.units.begin(), clip.units.end(), [](const Clip::Unit& unit) { return unit.key; });
  clip.units.erase(clip.units.begin(), first);
  if (clip.units.empty()) throw ConfigError(stream.file + " has no key frame");
  Size size;
  const GstStructure* facts = gst_caps_get_structure(clip.caps.get(), 0);
  gst_structure_get(facts, "width", G_TYPE_INT, &size.width, "height", G_TYPE_INT, &size.height, nullptr);
  if (size != stream.size) {
    throw ConfigError(stream.file + " is " + std::to_string(size.width) + "x" + std::to_string(size.height) +
                      ", unlike its stream");
  }
}

/// Removes its file, unless that has another name by then.
struct UnfinishedFile {
  std::string path;
  ~UnfinishedFile() { std::remove(path.c_str()); }
};

GstClockTime TimeOf(size_t index, int fps) {
  return static_cast<GstClockTime>(index) * GST_SECOND / static_cast<GstClockTime>(fps);
}

/// The NAL units of a byte stream (H.264, annex B), each with its start code.
std::vector<std::string> SplitNals(const std::string& unit) {
  constexpr std::string_view kStartCode("\0\0\1", 3);
  std::vector<std::string> nals;
  size_t begin = unit.find(kStartCode);
  while (begin != std::string::npos) {
    const size_t next = unit.find(kStartCode, begin + 3);
    nals.push_back(std::string("\0", 1) + unit.substr(begin, next == std::string::npos ? next : next - begin));
    begin = next;
  }
  return nals;
}

int NalType(const std::string& nal) { return static_cast<unsigned char>(nal[4]) & 0x1f; }

/// Repeats the parameter sets before every further slice. The standard wants them ahead of the picture; some cameras
/// know no better.
std::string RepeatParameterSets(const std::string& unit) {
  std::string sets;
  std::string result;
  int slices = 0;
  for (const std::string& nal : SplitNals(unit)) {
    const int type = NalType(nal);
    if (type == kH264Sps || type == kH264Pps) sets += nal;
    if ((type == kH264Slice || type == kH264IdrSlice) && slices++ > 0) result += sets;
    result += nal;
  }
  return result;
}

Buffer ToBuffer(const std::string& bytes) {
  Buffer buffer(gst_buffer_new_allocate(nullptr, bytes.size(), nullptr));
  gst_buffer_fill(buffer.get(), 0, bytes.data(), bytes.size());
  return buffer;
}

Buffer CopyOf(const Clip::Unit& unit, Fault fault) {
  if (fault != Fault::kParameterSetsBetweenSlices) return Buffer(gst_buffer_copy(unit.buffer.get()));
  return ToBuffer(RepeatParameterSets(Bytes(unit.buffer.get())));
}

std::string MediaSection(const GstCaps* caps) {
  GstSDPMedia* media = nullptr;
  gst_sdp_media_new(&media);
  gst_sdp_media_set_proto(media, "RTP/AVP");
  gst_sdp_media_set_media_from_caps(caps, media);
  std::string section = GlibText(gst_sdp_media_as_text(media)).get();
  gst_sdp_media_free(media);
  return section;
}

/// Packets that carry only SPS or PPS, in single NAL unit mode (RFC 6184, section 5.6).
bool IsParameterSet(const std::string& packet) {
  const int type = static_cast<unsigned char>(packet[12]) & 0x1f;
  return type == kH264Sps || type == kH264Pps;
}

/// Moves the parameter sets of every key frame into a unit of their own, which ends with a marker like any other and is
/// now where a session starts.
void SeparateParameterSets(RtpClip& clip) {
  std::vector<RtpClip::Unit> units;
  for (RtpClip::Unit& unit : clip.units) {
    const auto split = std::stable_partition(unit.packets.begin(), unit.packets.end(), IsParameterSet);
    if (split != unit.packets.begin()) {
      units.push_back({{unit.packets.begin(), split}, std::exchange(unit.key, false)});
      units.back().packets.back()[1] |= static_cast<char>(0x80);
      unit.packets.erase(unit.packets.begin(), split);
    }
    units.push_back(std::move(unit));
  }
  clip.units = std::move(units);
}

/// True for a packet with the last bytes of a NAL unit: no fragment, or the last one (RFC 6184, RFC 7798).
bool EndsNal(const std::string& packet, const Codec& codec) {
  const auto at = [&packet](size_t place) { return static_cast<unsigned char>(packet[place]); };
  const bool isH265 = std::string_view(codec.name) == "h265";
  const bool isFragment = isH265 ? (at(12) >> 1 & 0x3f) == 49 : (at(12) & 0x1f) == 28;
  const int header = isH265 ? at(14) : at(13);
  return !isFragment || (header & 0x40) != 0;
}

/// Sets the markers as the camera's fault has them. In the place of its timestamp each packet gets what that is later
/// than its unit's.
void MarkPackets(RtpClip& clip, const Codec& codec, Fault fault) {
  constexpr char kMarker = '\x80';
  for (RtpClip::Unit& unit : clip.units) {
    char later = 0;
    for (std::string& packet : unit.packets) {
      std::fill_n(packet.begin() + 4, 4, '\0');
      packet[7] = later;
      const bool endsNal = EndsNal(packet, codec);
      if (endsNal && fault == Fault::kTimestampPerSlice) ++later;
      if (endsNal && fault == Fault::kMarkerOnEveryUnit) packet[1] |= kMarker;
      if (fault == Fault::kNoMarker) packet[1] &= static_cast<char>(~kMarker);
    }
  }
}

/// Packetizes by GStreamer. The units' time stamps tell which packets belong together.
std::shared_ptr<const RtpClip> Packetize(const Clip& clip, const StreamConfig& stream, Fault fault) {
  const Pipeline pipeline("appsrc name=in format=time max-bytes=0 ! " + Payloader(*stream.codec, "pay") +
                          " ! appsink name=out sync=false");
  pipeline.SetInputCaps(clip.caps.get());
  pipeline.Play();
  for (size_t i = 0; i < clip.units.size(); ++i) {
    Buffer buffer = CopyOf(clip.units[i], fault);
    GST_BUFFER_PTS(buffer.get()) = TimeOf(i, stream.fps);
    GST_BUFFER_DTS(buffer.get()) = TimeOf(i, stream.fps);
    pipeline.Push(std::move(buffer));
  }
  pipeline.Push(nullptr);

  auto rtp = std::make_shared<RtpClip>();
  rtp->units.resize(clip.units.size());
  for (size_t i = 0; i < clip.units.size(); ++i) rtp->units[i].key = clip.units[i].key;
  while (const Sample sample = pipeline.Pull()) {
    GstBuffer* packet = gst_sample_get_buffer(sample.get());
    const auto index = (GST_BUFFER_PTS(packet) * static_cast<GstClockTime>(stream.fps) + GST_SECOND / 2) / GST_SECOND;
    rtp->units.at(index).packets.push_back(Bytes(packet));
    rtp->media = MediaSection(gst_sample_get_caps(sample.get()));
  }
  if (fault == Fault::kParameterSetsAlone) SeparateParameterSets(*rtp);
  MarkPackets(*rtp, *stream.codec, fault);
  return rtp;
}

}  // namespace

int RtpClip::BitRate(int fps) const {
  size_t bytes = 0;
  for (const Unit& unit : units) {
    for (const std::string& packet : unit.packets) bytes += packet.size() - kRtpHeaderSize;
  }
  return static_cast<int>(bytes * 8 * static_cast<size_t>(fps) / units.size() / 1000);
}

Sample ClipStore::PullUnlessStopped(const Pipeline& pipeline) const {
  if (stop_.stop_requested()) throw Stopped();
  return pipeline.Pull();
}

std::shared_ptr<Clip> ClipStore::Collect(const std::string& description) const {
  auto clip = std::make_shared<Clip>();
  const Pipeline pipeline(description + " ! appsink name=out sync=false");
  ShowClock(pipeline.Get(), Clock::kStream);
  pipeline.Play();
  while (const Sample sample = PullUnlessStopped(pipeline)) {
    GstBuffer* buffer = gst_sample_get_buffer(sample.get());
    clip->caps.reset(gst_caps_ref(gst_sample_get_caps(sample.get())));
    clip->units.push_back(
        {{gst_buffer_ref(buffer), Unref()}, GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DELTA_UNIT) == 0});
  }
  if (clip->units.empty()) throw std::runtime_error("no pictures from " + description);
  return clip;
}

/// The file appears under its name only when it is whole.
void ClipStore::EncodeToFile(const StreamConfig& stream, const std::string& path) const {
  const UnfinishedFile unfinished{path + "." + std::to_string(getpid())};
  {
    const Pipeline pipeline(EncodeDescription(stream) + " ! gdppay ! tee name=t ! queue ! filesink location=" +
                            unfinished.path + " t. ! queue ! appsink name=out sync=false");
    ShowClock(pipeline.Get(), Clock::kStream);
    pipeline.Play();
    while (PullUnlessStopped(pipeline)) {
    }
  }
  std::filesystem::rename(unfinished.path, path);
}

std::shared_ptr<const Clip> ClipStore::Get(const StreamConfig& stream) {
  const std::string name = ClipName(stream);
  std::shared_ptr<const Clip>& clip = clips_[name];
  if (clip) return clip;
  if (!stream.file.empty()) {
    const auto whole = Collect("filesrc location=\"" + stream.file + "\" ! " + stream.codec->parser);
    StartAtKeyFrame(*whole, stream);
    clip = whole;
    return clip;
  }
  if (folder_.empty()) {
    clip = Collect(EncodeDescription(stream));
    return clip;
  }
  std::filesystem::create_directories(folder_);
  const std::string path = folder_ + "/" + name + ".gdp";
  if (!std::filesystem::exists(path)) EncodeToFile(stream, path);
  clip = Collect("filesrc location=" + path + " ! gdpdepay");
  return clip;
}

std::shared_ptr<const RtpClip> ClipStore::GetRtp(const StreamConfig& stream, Fault fault) {
  constexpr Fault kSpecial[] = {Fault::kParameterSetsBetweenSlices, Fault::kParameterSetsAlone,
                                Fault::kMarkerOnEveryUnit, Fault::kTimestampPerSlice, Fault::kNoMarker};
  const bool special = std::ranges::find(kSpecial, fault) != std::end(kSpecial);
  const std::string name = ClipName(stream) + (special ? std::to_string(static_cast<int>(fault)) : "");
  std::shared_ptr<const RtpClip>& clip = rtpClips_[name];
  if (!clip) clip = Packetize(*Get(stream), stream, fault);
  return clip;
}

}  // namespace simcam
