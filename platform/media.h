#pragma once

#include <sys/time.h>

#include <cstdint>
#include <memory>
#include <string>

#include "platform/device.h"

// What the module asks of the recorder's media libraries: one RTP connection, a packetizer that finds key frames, and
// JPEG.
//
// Unless a declaration says otherwise: an int result of 0 is success; nothing throws but std::bad_alloc; free functions
// may be called from any thread, an object by one thread at a time; sizes are bytes; times are microseconds. "Contacts
// the camera" means: may take until the deadline of the request that the calling thread works on, and no longer.
// Virtual operations keep their order: callers reach them by place.

inline constexpr std::uint32_t kCodecH264 = 0x68323634;   ///< 'h' '2' '6' '4', first character in the highest byte
inline constexpr std::uint32_t kCodecH265 = 0x68323635;   ///< 'h' '2' '6' '5'
inline constexpr std::uint32_t kCodecMpeg4 = 0x6d703476;  ///< 'm' 'p' '4' 'v'
inline constexpr std::uint32_t kCodecJpeg = 0x6a706567;   ///< 'j' 'p' 'e' 'g'

/// Where the capture times of a stream come from.
enum ES_CLOCK : int {
  ES_CLOCK_CAMERA = 0,  ///< the camera's own clock, which may jump
  ES_CLOCK_LOCAL = 1,   ///< the time of arrival here
};

/// Format of an elementary stream.
struct ESFormat {
  int type = ES_CLOCK_CAMERA;          ///< an ES_CLOCK
  std::uint32_t codec = 0;             ///< four-character code, 0: not known yet
  unsigned char* extradata = nullptr;  ///< codec configuration, malloc memory of this record, or null
  int extradataSize = 0;

  ESFormat();
  ~ESFormat();
  ESFormat(const ESFormat& other);
  /// Copies the configuration into a fresh block: none when `other` has no block or size 0.
  ESFormat& operator=(const ESFormat& other);
};

/// What RtpFetch::GetVideoFormat fills in.
enum ES_FORMAT_DETAIL : int {
  ES_FORMAT_WITH_CONFIGURATION = 1,  ///< type, codec and codec configuration; any other value leaves the last out
};

/// One RTP connection to a camera, opened by the first NextPartInfo and closed by the destructor. A part is one access
/// unit, or a JPEG that was made of one, as the format says; of an H.264 part the first start code is left out.
class RtpFetch {
 public:
  struct Impl;
  /// `streamingType` is a STREAMING_TYPE, `rtspProtocol` an RTSP_PROTOCOL. `audioPath` is used only `withAudio`;
  /// `timeoutSeconds` 0 leaves it to the request's deadline; `localAddress` and `userAgent` may be empty.
  RtpFetch(const std::string& host, int port, const std::string& path, const std::string& user,
           const std::string& password, bool withAudio, const std::string& audioPath, int streamingType,
           int rtspProtocol, int timeoutSeconds, const std::string& localAddress, const std::string& userAgent);
  ~RtpFetch();
  RtpFetch(const RtpFetch&) = delete;
  RtpFetch& operator=(const RtpFetch&) = delete;

  /// Waits for the next part, connecting first if need be. `partNumber` counts from 0. `header` (may be null) receives
  /// up to `headerSize` bytes of a textual part header, where the stream has any, and `headerLength` their number.
  /// Contacts the camera.
  int NextPartInfo(unsigned int& partNumber, char* header, unsigned int headerSize, int& headerLength);

  /// Format of the video, known from the first part on. `detail` is an ES_FORMAT_DETAIL.
  int GetVideoFormat(ESFormat& format, int detail);

  /// Size and capture time of the current part.
  int GetImgContentInfo(int& size, timeval& captureTime);

  /// Copies the current part to `destination`, which holds `size` bytes; fails when the part is larger.
  int FetchContent(unsigned char* destination, unsigned int size);

 private:
  std::unique_ptr<Impl> impl;
};

/// One media buffer with its times.
class MediaUnit {
 public:
  struct Impl;
  explicit MediaUnit(int size);
  virtual ~MediaUnit();
  MediaUnit(const MediaUnit&) = delete;
  MediaUnit& operator=(const MediaUnit&) = delete;

  unsigned char* GetBuffer();  ///< the whole buffer, to write to
  void SetPTS(std::int64_t presentationTime);
  void SetDTS(std::int64_t decodingTime);
  void SetTimestamp(std::int64_t arrivalTime);

  unsigned int GetFrameType() const;  ///< flags of FRAME_FLAG
  const unsigned char* GetFrame() const;
  int GetFrameSize() const;

  void SetFrameType(unsigned int flags);

 private:
  std::unique_ptr<Impl> impl;
};

enum FRAME_FLAG : unsigned int {
  FRAME_FLAG_KEY = 2,  ///< can be decoded without any other frame
};

class MP4Stream;

/// Turns input units into output units of one frame each.
class Packetizer {
 public:
  virtual ~Packetizer();
  /// Prepares for units of `format`; non-zero when the codec is not supported.
  virtual int Open(const ESFormat& format) = 0;
  /// Drops what is held.
  virtual void Close() = 0;
  /// Takes over the unit at `*input`, if there is one, and clears the slot; `input` may be null. Returns the next
  /// output unit, which the caller destroys, or null when none is ready.
  virtual MediaUnit* Packetize(MP4Stream* stream, MediaUnit** input) = 0;

 protected:
  Packetizer();
  Packetizer(const Packetizer&) = delete;
  Packetizer& operator=(const Packetizer&) = delete;
};

enum MP4_STREAM_KIND : int {
  MP4_STREAM_VIDEO = 1,
};

/// One stream that is being packetized. `kind` is an MP4_STREAM_KIND.
class MP4Stream {
 public:
  struct Impl;
  MP4Stream(int kind, int camId);
  virtual ~MP4Stream();
  /// Creates `packetizer` for `format`; it stays null when that cannot be done.
  virtual int Init();
  MP4Stream(const MP4Stream&) = delete;
  MP4Stream& operator=(const MP4Stream&) = delete;

  ESFormat format;
  Packetizer* packetizer = nullptr;  ///< owned

 private:
  std::unique_ptr<Impl> impl;
};

/// Decodes one key frame to JPEG. The codec is recognised from configuration and frame; `videoType` is what the caller
/// thinks it is. On success `*jpeg` is malloc memory that the caller frees and `*jpegSize` its length; on failure both
/// are untouched.
int DoFFMpegGetJpeg(int videoType, const unsigned char* extradata, int extradataSize, const unsigned char* frame,
                    int frameSize, unsigned char** jpeg, int* jpegSize);

/// Reads the size of a JPEG in pixels. Width and height are 0 when the bytes, which may be null, are not a readable
/// JPEG.
void GetJpegReso(const unsigned char* jpeg, int jpegSize, int* width, int* height);
