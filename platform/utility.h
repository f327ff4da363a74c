#pragma once

#include <json/json.h>

#include <cstdint>
#include <memory>
#include <string>

// What the module asks of the recorder's utility and camera-record libraries.
//
// Unless a declaration says otherwise: strings are UTF-8; an int result of 0 is success; nothing throws but
// std::bad_alloc; any thread may call at any time, and a call may block on a local disk but never on a camera.

enum LOG_TYPE {
  LOG_TYPE_FAILURE = 0,  ///< something a user or administrator asked for did not work
};

/// Writes one log line. `category1` and `category2` (both may be null) narrow the subject; `file`, `line` and
/// `function` name the place. The formatted text ends in a newline. Never fails; never logs a secret of its own accord.
[[gnu::format(printf, 7, 8)]] void VTPrintf(LOG_TYPE type, const char* category1, const char* category2,
                                            const char* file, int line, const char* function, const char* format, ...);

/// Current time in microseconds since 1970-01-01 00:00 UTC.
std::int64_t GetCurTimestamp();

/// True when other recorders are managed through this one (it is the CMS host of its group).
bool IsCmsHost();

/// True while the recorder serves requests.
bool IsVTRunning();

/// True when `cookie` and `timestamp` form a valid pair of a trusted client.
bool IsAuthPairMatch(const std::string& cookie, const std::string& timestamp);

/// Checks pairs of the recording servers of this recorder's own group.
class SlaveKdAuthentication {
 public:
  SlaveKdAuthentication();
  ~SlaveKdAuthentication();
  SlaveKdAuthentication(const SlaveKdAuthentication&) = delete;
  SlaveKdAuthentication& operator=(const SlaveKdAuthentication&) = delete;

  /// True when `cookie` and `timestamp` form a valid pair of the group.
  bool IsAuthByPairMatch(const std::string& cookie, const std::string& timestamp);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl;
};

/// Id of the recording server that owns camera `camId`; kLocalOwnerKdId for a camera of this recorder.
int GetCamOwnerKdId(int camId);
inline constexpr int kLocalOwnerKdId = 0;

enum CAM_CONN_STATUS {
  CAM_CONN_STATUS_UNKNOWN = 0,   ///< no such record, or never contacted
  CAM_CONN_STATUS_NORMAL = 1,    ///< in service
  CAM_CONN_STATUS_DISABLED = 6,  ///< switched off in its record: the camera is not to be contacted
};

/// Connection status of stored camera `camId`, a value of CAM_CONN_STATUS. Records that cannot be read are logged, and
/// the camera counts as switched off.
int GetCamConnStatus(int camId);

/// What a client sends instead of a stored password.
extern const char gszFakePass[];

/// A text that stands for the stored password of camera `camId` in the request that the calling thread works on, and is
/// worth nothing anywhere else. It is used like a password, but logs in to the camera of that record alone: once
/// GetCamCapFile or DeviceAPIHandler::LoadByParam was given it with vendor, model, address, port, user and source path
/// (LoadByParam) as the record has them. With any other, for a camera that is switched off, and where there is no such
/// record, all camera work with it is a login refused, and nothing is sent; the log says why. Nor does it log in more
/// weakly than the camera was seen to take: a refused login, too.
/// Camera id 0 means "a camera not named": of the stored cameras of that vendor, model and channel the one that fits
/// what those functions are given, if exactly one does. A stored channel "" is any, `channel` "" is the model's default
/// one, or any where that is not known yet.
std::string GetCamRealPass(int camId, std::string vendor, std::string model, std::string channel);

/// Reads a whole file of at most 32 MiB. `required`: a missing file is an error and logged as such. On success
/// `*buffer` is malloc memory that the caller frees and `*size` its length in bytes; on failure both are untouched.
int ReadContentFromFileToBuf(const char* path, bool required, unsigned char** buffer, int* size);

/// Base64 (RFC 4648 section 4, padded, no line breaks) of `length` bytes.
std::string HttpBase64EncodeUnsigned(const unsigned char* bytes, int length);
