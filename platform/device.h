#pragma once

#include <json/json.h>

#include <list>
#include <map>
#include <memory>
#include <string>

#include "interface/handlerutils.h"

// What the module asks of the recorder's device-support library: model files, capability documents, the device API
// object of one camera, and the check of one camera.
//
// Unless a declaration says otherwise: strings are UTF-8; an int result of 0 is success; nothing throws but
// std::bad_alloc; free functions may be called from any thread at any time, from ten at once while a batch runs; an
// object is used by one thread at a time, and separate objects share nothing that a caller could see. "Contacts the
// camera" means: may take until the deadline of the request that the calling thread works on, and no longer.

// --- Numbers whose meaning the recorder decides ---------------------------------------------------------------------

/// Codec of a video stream.
enum VIDEO_TYPE : int {
  VIDEO_TYPE_UNKNOWN = -1,  ///< a name that the recorder does not know; no camera sends it
  VIDEO_TYPE_ANY = 0,       ///< whatever the camera sends
  VIDEO_TYPE_MJPEG = 1,
  VIDEO_TYPE_MPEG4 = 2,
  VIDEO_TYPE_H264 = 3,
  VIDEO_TYPE_MXPEG = 5,
  VIDEO_TYPE_H265 = 6,
};

/// How a stream travels.
enum STREAMING_TYPE : int {
  STREAMING_TYPE_UNKNOWN = -1,  ///< a name that the recorder does not know
  STREAMING_TYPE_ANY = 0,
  STREAMING_TYPE_HTTP = 1,  ///< multipart JPEG over HTTP
  STREAMING_TYPE_RTSP = 2,
};

/// How RTP packets travel. Capability documents name a default ("defRtspProtocol") and the bits 1 << value of those
/// that can be chosen ("rtspProtocolCap").
enum RTSP_PROTOCOL : int {
  RTSP_PROTOCOL_UDP = 0,
  RTSP_PROTOCOL_TCP = 1,  ///< interleaved in the RTSP connection (RFC 2326 section 10.12)
  RTSP_PROTOCOL_MULTICAST = 2,
  RTSP_PROTOCOL_HTTP = 3,  ///< tunnelled through HTTP
  RTSP_PROTOCOL_AUTO = 4,  ///< the recorder chooses
};

/// Where an object that describes a camera is loaded from.
enum DP_LOAD_SOURCE : int {
  DP_LOAD_FROM_MODEL_FILES = 1,  ///< from the model files and kept capability files, not from a stored camera's record
};

/// Outcome of checking one camera.
enum CAMERA_VERIFY_RESULT : int {
  CAMERA_VERIFY_PASSED = 0,
  CAMERA_VERIFY_NOT_PREPARED = 1,  ///< the recorder could not even start: unknown model, no stream path
  CAMERA_VERIFY_UNREACHABLE = 4,   ///< host not found, no route, connection refused
  CAMERA_VERIFY_TIMED_OUT = 5,     ///< connected or not, no answer in the time limit
  CAMERA_VERIFY_LOGIN_REFUSED = 6,
  CAMERA_VERIFY_NO_SUCH_STREAM = 7,  ///< the stream or path does not exist there
  CAMERA_VERIFY_NO_VIDEO = 8,        ///< no video, or not in the wanted codec or stream type
  CAMERA_VERIFY_BUSY = 15,           ///< too many sessions, service unavailable
  /// What the camera said makes no sense or is another protocol; or its login method is not supported, or it does not
  /// tell the time that the login depends on; or the recorder may not contact it.
  CAMERA_VERIFY_NOT_UNDERSTOOD = 16,
};

/// How the capability file of a camera is to be obtained. Any other value acts as REMOTE_CAMCAP_AS_NEEDED.
enum __tag_REMOTE_CAMCAP_CMD : int {
  REMOTE_CAMCAP_AS_NEEDED = 0,  ///< while a camera is being added: a recent file will do
  REMOTE_CAMCAP_ASK_NOW = 1,    ///< ask the camera
  REMOTE_CAMCAP_KEPT = 2,       ///< the file kept for the camera; callers ask GetRealCapFilePath for it
};

/// Outcome of obtaining a capability file. Any other value is a failure too.
enum CAMCAP_FILE_RESULT : int {
  CAMCAP_FILE_OBTAINED = 0,
  CAMCAP_FILE_SUBSTITUTED = 1,  ///< not obtained now; the path is that of a usable older or built-in file
  CAMCAP_FILE_UNREACHABLE = 2,  ///< not reachable or timed out
  CAMCAP_FILE_NO_SERVICE = 3,   ///< no such service or channel at this address
  CAMCAP_FILE_LOGIN_REFUSED = 4,
  CAMCAP_FILE_NOT_UNDERSTOOD = 5,
};

/// How a snapshot is taken.
enum SNAPSHOT_KIND : int {
  SNAPSHOT_KIND_NONE = 0,
  SNAPSHOT_KIND_HTTP_JPEG = 1,   ///< one JPEG a request
  SNAPSHOT_KIND_HTTP_MJPEG = 2,  ///< the first part of a multipart stream
  SNAPSHOT_KIND_BY_CODEC = 3,    ///< the first key frame of the stream in the wanted codec
  SNAPSHOT_KIND_STREAM = 4,      ///< the first key frame of the RTP stream
};

// --- Names and lists ------------------------------------------------------------------------------------------------

/// VIDEO_TYPE of a name such as "H.264": VIDEO_TYPE_ANY for "", VIDEO_TYPE_UNKNOWN for one that the recorder does not
/// know. Exact, case-sensitive.
int GetVideoType(const std::string& name);

/// STREAMING_TYPE of a name such as "RTSP": STREAMING_TYPE_ANY for "", STREAMING_TYPE_UNKNOWN otherwise.
int GetStreamingType(const std::string& name);

/// Appends one entry a known camera model to the JSON array `models`. False when no model file could be read.
bool GetCamModelEnumInfo(Json::Value& models);

/// Appends one capability entry for each stored camera to the JSON array `capabilities`. False when the records could
/// not be read.
bool EnumExistedCameraCap(Json::Value& capabilities);

/// True for models that only name a protocol, such as "ONVIF": no model file tells what they can do, the camera is
/// asked.
bool IsGenericApi(const std::string& vendor, const std::string& model);

/// Where the last answer of the camera at `ip` and `port` about itself is stored, or "" when nothing is stored.
/// `variant` tells files of one camera apart; "" is the camera's own.
std::string GetRealCapFilePath(std::string vendor, std::string ip, int port, std::string variant);

// --- Capability of a model ------------------------------------------------------------------------------------------

/// Where one camera is, who we are there, and what it is: all that obtaining its capability file takes.
struct CamProfile {
  std::string ip;
  std::string user;
  std::string pass;
  std::string channel;
  std::string vendor;
  std::string model;
  int port = 0;
  int stream = 0;  ///< 0: the camera's first
  std::map<std::string, std::string> options = {};
};

namespace CamCapUtils {
/// Obtains the capability file of the camera that `profile` describes and stores its path in `capFilePath`. Result: a
/// CAMCAP_FILE_RESULT; `capFilePath` is set for CAMCAP_FILE_OBTAINED and CAMCAP_FILE_SUBSTITUTED, else untouched; ""
/// stands for the built-in values of a model that only names a protocol.
/// Contacts the camera.
int GetCamCapFile(CamProfile& profile, std::string& capFilePath, __tag_REMOTE_CAMCAP_CMD cmd);
}  // namespace CamCapUtils

/// What one camera model can do, for one channel.
class CamCapHandler {
 public:
  struct Impl;
  CamCapHandler();
  ~CamCapHandler();
  CamCapHandler(const CamCapHandler&) = delete;
  CamCapHandler& operator=(const CamCapHandler&) = delete;

  /// (DP_LOAD_SOURCE, vendor, model, channel, capFilePath): loads a model; a non-empty path names the file to load.
  Functor<int, int, std::string, std::string, std::string, std::string> LoadCapability;
  /// Channels of the loaded model. Of a camera that has to be asked first and was not, nobody knows them: then the
  /// list also holds the channel that it was loaded for, so that nobody replaces it.
  Functor<std::list<std::string>> GetChannelList;
  /// The channel to use instead of one that the model does not have. Of a camera that has to be asked first and was not
  /// it is "", which means the camera's own default channel wherever a channel is taken.
  Functor<std::string> GetDefaultChannel;
  /// (codec: 1 MJPEG, 2 MPEG4, 3 H.264, 5 MXPEG): snapshot settings offered for that codec, the preferred one first.
  Functor<std::list<std::string>, int> GetListForCodec;
  /// VIDEO_TYPE that the model sends unless told otherwise.
  Functor<int> GetDefaultVideoType;
  /// (VIDEO_TYPE): the STREAMING_TYPE over which the model sends that codec.
  Functor<int, int> GetStreamingTypeFor;

 private:
  friend int GetCamCap(std::string vendor, std::string model, CamCapHandler& handler, Json::Value& capability);
  std::unique_ptr<Impl> impl;
};

/// Fills `capability` with the capability object of the model that `handler` has loaded. Non-zero when none is loaded;
/// `capability` is untouched then.
int GetCamCap(std::string vendor, std::string model, CamCapHandler& handler, Json::Value& capability);

// --- One camera -----------------------------------------------------------------------------------------------------

/// Base of the handlers that a caller default-constructs and then loads.
class VTHandlerBase {
 public:
  /// True when the last load succeeded; false before the first one.
  bool IsValid() const;

 protected:
  VTHandlerBase();
  ~VTHandlerBase();
  VTHandlerBase(const VTHandlerBase&) = delete;
  VTHandlerBase& operator=(const VTHandlerBase&) = delete;
  void SetValid(bool valid);

 private:
  bool isValid = false;
};

/// The device API object of one camera.
class DeviceAPIHandler : public VTHandlerBase {
 public:
  struct Impl;
  DeviceAPIHandler();
  ~DeviceAPIHandler();

  /// Loads the device API for one camera; IsValid() tells whether it could. May contact a camera whose model says that
  /// it must be asked first; a camera that does not answer leaves the object valid, so that the check that follows
  /// names the cause.
  void LoadByParam(DP_LOAD_SOURCE source, const std::string& address, int port, const std::string& user,
                   const std::string& password, const std::string& vendor, const std::string& model,
                   const std::string& channel, const std::string& sourcePath);

  /// True for cameras whose stream only the user can name, by its path.
  Functor<bool> NeedsSourcePath;
  /// True: the camera is checked by the stream that GetStreamPath names.
  Functor<bool> HasStreamPath;
  /// (path, port): fills in the stream's path and port.
  Functor<int, std::string&, int&> GetStreamPath;
  /// The device API's own connection check; RetDevApiToRetCV translates its result. Contacts the camera.
  Functor<int> VerifyConnection;
  /// (VIDEO_TYPE, 0): the codec that following calls are about. The second argument numbers the stream, from 0.
  Functor<int, int, int> SelectVideoType;
  /// (path, port, SNAPSHOT_KIND): fills in how a snapshot is taken; `port` comes in with the request's own. May contact
  /// the camera, where the user names no codec.
  Functor<int, std::string&, int&, int&> GetSnapshotPath;

 private:
  friend int SnapshotGetFromAPI(const std::string& host, int port, const std::string& user, const std::string& password,
                                DeviceAPIHandler& api, const std::string& setting, unsigned char** jpeg, int* jpegSize,
                                int videoType);
  std::unique_ptr<Impl> impl;
};

/// CAMERA_VERIFY_RESULT of a result of DeviceAPIHandler::VerifyConnection.
int RetDevApiToRetCV(int code);

/// Checks one camera by its stream.
class CameraVerify {
 public:
  struct Impl;
  CameraVerify(const std::string& address, int port, const std::string& user, const std::string& password,
               const std::string& sourcePath, int videoType, int streamingType, RTSP_PROTOCOL rtspProtocol);
  ~CameraVerify();
  CameraVerify(const CameraVerify&) = delete;
  CameraVerify& operator=(const CameraVerify&) = delete;

  /// Runs the check and returns a CAMERA_VERIFY_RESULT. Contacts the camera; a wrong password is one login attempt.
  int Verify();

 private:
  std::unique_ptr<Impl> impl;
};

/// Takes a picture through the camera's own snapshot interface. `setting` is an entry of GetListForCodec or "". On
/// success `*jpeg` is malloc memory that the caller frees and `*jpegSize` its length in bytes; on failure both are
/// untouched. Contacts the camera.
int SnapshotGetFromAPI(const std::string& host, int port, const std::string& user, const std::string& password,
                       DeviceAPIHandler& api, const std::string& setting, unsigned char** jpeg, int* jpegSize,
                       int videoType);
