#include "simcam/codecs.h"

#include <algorithm>
#include <iterator>

namespace simcam {
namespace {

constexpr Codec kCodecs[] = {
    {.name = "jpeg",
     .encoder = "jpegenc quality=75",
     .parser = "jpegparse",
     .payloader = "rtpjpegpay pt=26",
     .canBeLive = true,
     .isAllKeys = true,
     .mostRtpPixels = 2040,  // RFC 2435: 8 bits of 8 pixels each; beyond that the sizes do not fit
     .media1 = Media1Words{.name = "JPEG", .settings = "", .options = ""},
     .media2 = "JPEG",
     .media2Profile = "",
     .psia = "MJPEG"},
    {.name = "mpeg4",
     .encoder = "avenc_mpeg4 bitrate={bitrate}000 gop-size={gop}",
     .parser = "mpeg4videoparse config-interval=-1",
     .payloader = "rtpmp4vpay pt=96 config-interval=-1",
     .canBeLive = false,
     .isAllKeys = false,
     .mostRtpPixels = 0,
     .media1 =
         Media1Words{
             .name = "MPEG4",
             .settings = "<tt:MPEG4><tt:GovLength>{gop}</tt:GovLength><tt:Mpeg4Profile>SP</tt:Mpeg4Profile></tt:MPEG4>",
             .options = "<tt:Mpeg4ProfilesSupported>SP</tt:Mpeg4ProfilesSupported>"},
     .media2 = "MPV4-ES",  // as it was once misspelt in the standard
     .media2Profile = "Simple",
     .psia = "MPEG4"},
    {.name = "h264",
     .encoder = "x264enc tune=zerolatency speed-preset=ultrafast threads=1 key-int-max={gop} bitrate={bitrate}"
                " option-string=scenecut=0:slices={slices} ! video/x-h264,stream-format=byte-stream,alignment=au",
     .parser = "h264parse config-interval=-1 ! video/x-h264,stream-format=byte-stream,alignment=au",
     .payloader = "rtph264pay pt=96",
     .canBeLive = true,
     .isAllKeys = false,
     .mostRtpPixels = 0,
     .media1 =
         Media1Words{
             .name = "H264",
             .settings = "<tt:H264><tt:GovLength>{gop}</tt:GovLength><tt:H264Profile>Main</tt:H264Profile></tt:H264>",
             .options = "<tt:H264ProfilesSupported>Main</tt:H264ProfilesSupported>"},
     .media2 = "H264",
     .media2Profile = "Main",
     .psia = "H.264"},
    {.name = "h265",
     .encoder = "x265enc tune=zerolatency speed-preset=ultrafast key-int-max={gop} bitrate={bitrate}"
                " option-string=scenecut=0:slices={slices}:log-level=none ! "
                "video/x-h265,stream-format=byte-stream,alignment=au",
     .parser = "h265parse config-interval=-1 ! video/x-h265,stream-format=byte-stream,alignment=au",
     .payloader = "rtph265pay pt=96 config-interval=-1",
     .canBeLive = true,
     .isAllKeys = false,
     .mostRtpPixels = 0,
     .media1 = std::nullopt,
     .media2 = "H265",
     .media2Profile = "Main",
     .psia = nullptr},
};

}  // namespace

std::span<const Codec> Codecs() { return kCodecs; }

const Codec* FindCodec(std::string_view name) {
  const auto* row =
      std::find_if(std::begin(kCodecs), std::end(kCodecs), [name](const Codec& codec) { return name == codec.name; });
  return row == std::end(kCodecs) ? nullptr : row;
}

std::string CodecHelp() {
  std::string help;
  for (const Codec& codec : kCodecs) help += std::string("  ") + codec.name;
  return help + "\n";
}

}  // namespace simcam
