// bench_colours: the PSNR of the recorder's pictures against what the camera saw, for each way to have colours.

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "rig/cameras.h"
#include "rig/recorder.h"
#include "rig/report.h"
#include "rig/temp_folder.h"

namespace bench {

using namespace rig;

namespace {

constexpr double kLeastPsnr = 35;

/// How a camera has its colours, in words of ffmpeg.
struct Colours {
  const char* matrix;
  const char* range;
  const char* pixels;
  bool isTagged = true;
  const char* transfer = "";
};

constexpr Colours kColours[] = {
    {"smpte170m", "tv", "yuv420p", false},
    {"smpte170m", "tv", "yuv420p"},
    {"smpte170m", "pc", "yuv420p"},
    {"bt709", "tv", "yuv420p", false},
    {"bt709", "tv", "yuv420p"},
    {"bt709", "pc", "yuv420p"},
    {"smpte170m", "tv", "yuv420p10le", false},
    {"smpte170m", "tv", "yuv420p10le"},
    {"smpte170m", "pc", "yuv420p10le"},
    {"bt709", "tv", "yuv420p10le", false},
    {"bt709", "tv", "yuv420p10le"},
    {"bt709", "pc", "yuv420p10le"},
    {"bt709", "tv", "yuv422p"},
    {"bt709", "tv", "yuv422p10le"},
    {"bt2020nc", "tv", "yuv420p10le"},
    {"bt2020nc", "tv", "yuv420p10le", true, "smpte2084"},
    {"bt2020nc", "tv", "yuv420p10le", true, "arib-std-b67"},
    {"bt709", "tv", "yuv420p12le"},
};

struct Encoder {
  const char* name;
  const char* codec;  ///< the simulated camera's name of it
  const char* options;
};

constexpr Encoder kEncoders[] = {
    {"H.264", "h264", "-c:v libx264 -preset veryfast -qp 10 -bf 0 -f h264"},
    {"H.265", "h265", "-c:v libx265 -preset veryfast -x265-params qp=10:bframes=0:log-level=error -f hevc"},
};

/// A stream of a camera, and the picture that it shows.
struct Stream {
  const Encoder& encoder;
  const Colours& colours;
  std::string path;
  std::string file;
  std::string source;
};

bool Is12Bits(const Colours& colours) { return std::string(colours.pixels) == "yuv420p12le"; }

/// What says nothing of its colours is taken for BT.601 up to 719 lines, and for BT.709 above.
std::string SizeOf(const Colours& colours) {
  return std::string(colours.matrix) == "smpte170m" ? "640x480" : "1280x720";
}

std::string Ffmpeg(const std::string& line) {
  const Finished run = Run("/usr/bin/ffmpeg", Words("-nostdin -y -hide_banner " + line));
  if (run.status != 0) throw std::runtime_error("ffmpeg " + line + "\n" + run.output);
  return run.output;
}

/// Colours of all hues, without edges that the halved resolution of colours would blur.
std::string MakeSource(const TempFolder& folder, const std::string& size) {
  std::string file = (folder.Path() / (size + ".png")).string();
  Ffmpeg("-v error -f lavfi -i testsrc2=size=" + size + " -frames:v 1 -vf format=gbrp,gblur=sigma=8,format=rgb24 " +
         file);
  return file;
}

std::string Tags(const Colours& colours) {
  if (!colours.isTagged) return "";
  const std::string transfer = colours.transfer;
  return std::string(" -colorspace ") + colours.matrix + " -color_range " + colours.range +
         (transfer.empty() ? "" : " -color_trc " + transfer);
}

void MakeFile(const Stream& stream) {
  const Colours& colours = stream.colours;
  Ffmpeg("-v error -loop 1 -framerate 25 -i " + stream.source +
         " -frames:v 10 -g 5 -vf scale=out_color_matrix=" + colours.matrix + ":out_range=" + colours.range +
         ":flags=accurate_rnd+full_chroma_int+bicubic,format=" + colours.pixels + Tags(colours) + " " +
         stream.encoder.options + " " + stream.file);
}

std::vector<Stream> MakeStreams(const TempFolder& folder) {
  std::vector<Stream> streams;
  for (const Colours& colours : kColours) {
    const std::string source = MakeSource(folder, SizeOf(colours));
    for (const Encoder& encoder : kEncoders) {
      if (Is12Bits(colours) && std::string(encoder.codec) == "h264") continue;  // its encoder ends at 10
      const std::string name = "stream" + std::to_string(streams.size());
      streams.push_back(
          {encoder, colours, "/" + name, (folder.Path() / (name + "." + encoder.codec)).string(), source});
      MakeFile(streams.back());
    }
  }
  return streams;
}

Json::Value CameraWith(const std::vector<Stream>& streams) {
  Json::Value camera;
  for (const Stream& stream : streams) {
    Json::Value& config = camera["stream"].append(Json::Value());
    const std::string size = SizeOf(stream.colours);
    config["codec"] = stream.encoder.codec;
    config["path"] = stream.path;
    config["file"] = stream.file;
    config["width"] = std::stoi(size);
    config["height"] = std::stoi(size.substr(size.find('x') + 1));
  }
  return Camera("camera", camera);
}

/// Against the source, in RGB; below 0 when there is no picture.
double Psnr(const TempFolder& folder, const std::string& jpeg, const std::string& source) {
  if (jpeg.empty()) return -1;
  const std::string file = folder.Write("picture.jpg", jpeg).string();
  const std::string printed =
      Ffmpeg("-i " + file + " -i " + source +
             " -lavfi [0:v]scale=in_color_matrix=bt601:in_range=pc:flags=accurate_rnd+full_chroma_int,format=gbrp[a];"
             "[1:v]format=gbrp[b];[a][b]psnr -f null -");
  constexpr char kAverage[] = "average:";
  const std::size_t at = printed.rfind(kAverage);
  if (at == std::string::npos) throw std::runtime_error("no PSNR in " + printed);
  return std::stod(printed.substr(at + sizeof kAverage - 1));
}

std::string RangeName(const Colours& colours) { return std::string(colours.range) == "pc" ? "full" : "limited"; }

void AddRow(Report& table, const Stream& stream, double psnr) {
  const Colours& colours = stream.colours;
  const bool isGood = psnr >= kLeastPsnr;
  const std::string transfer = colours.transfer;
  table.Row({stream.encoder.name, colours.pixels, colours.matrix + (transfer.empty() ? "" : ", " + transfer),
             RangeName(colours), colours.isTagged ? "yes" : "no", psnr < 0 ? "no picture" : NumberText(psnr),
             isGood ? "met" : "MISSED"});
}

/// The exit status.
int Compare() {
  const TempFolder folder;
  const std::vector<Stream> streams = MakeStreams(folder);
  const SimCameras cameras(List({CameraWith(streams)}));
  const TestRecorder recorder;
  Report table;
  table.Row({"Codec", "Pixels", "Matrix", "Range", "Tagged", "PSNR (dB)", "At least " + NumberText(kLeastPsnr, 0)});
  table.Row({"---", "---", "---", "---", "---", "---:", "---"});
  int status = 0;
  for (const Stream& stream : streams) {
    Json::Value parameters = CameraParams(cameras.Port("camera"), kSecret, "User ");
    parameters["camSourcePath"] = stream.path;
    parameters["camVideoType"] = stream.encoder.name;
    const double psnr = Psnr(folder, PictureOf(recorder.Post("GetSnapshot", parameters)), stream.source);
    AddRow(table, stream, psnr);
    if (psnr < kLeastPsnr) status = 1;
  }
  return status;
}

}  // namespace

}  // namespace bench

int main() {
  try {
    return bench::Compare();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_colours: %s\n", error.what());
    return 2;
  }
}
