#include "simcam/stock_rtsp.h"

#include <gst/app/gstappsrc.h>
#include <gst/rtsp-server/rtsp-server.h>

#include <mutex>
#include <vector>

#include "simcam/glib_handle.h"

namespace simcam {
namespace {

/// What the login hook below needs; owned by StockRtsp.
struct LoginHook {
  const CameraConfig& camera;
  Login& login;
  CameraLog& log;
};

struct CameraAuth {
  GstRTSPAuth parent;
  LoginHook* hook;
};

struct CameraAuthClass {
  GstRTSPAuthClass parent;
};

std::string HeaderOf(const GstRTSPMessage* message, GstRTSPHeaderField field) {
  gchar* value = nullptr;
  gst_rtsp_message_get_header(message, field, &value, 0);
  return value == nullptr ? "" : value;
}

void Refuse(GstRTSPContext* context, const Verdict& verdict) {
  const auto status = static_cast<GstRTSPStatusCode>(verdict.status);
  gst_rtsp_message_init_response(context->response, status, gst_rtsp_status_as_text(status), context->request);
  for (const std::string& challenge : verdict.challenges) {
    gst_rtsp_message_add_header(context->response, GST_RTSP_HDR_WWW_AUTHENTICATE, challenge.c_str());
  }
  gst_rtsp_client_send_message(context->client, context->session, context->response);
}

/// Called for each request first with the check "auth.check.url", then with finer ones, which need nothing more here.
gboolean CheckLogin(GstRTSPAuth* auth, GstRTSPContext* context, const gchar* check) {
  if (g_strcmp0(check, GST_RTSP_AUTH_CHECK_TRANSPORT_CLIENT_SETTINGS) == 0) return FALSE;
  if (g_strcmp0(check, GST_RTSP_AUTH_CHECK_URL) != 0) return TRUE;
  const LoginHook& hook = *reinterpret_cast<CameraAuth*>(auth)->hook;  // NOLINT: GObject's inheritance
  const std::string method = gst_rtsp_method_as_text(context->method);
  const std::string target = context->request->type_data.request.uri;
  const std::string authorization = HeaderOf(context->request, GST_RTSP_HDR_AUTHORIZATION);
  hook.log.CountRequest("RTSP", method, PathOf(target), !authorization.empty());
  if (context->method == GST_RTSP_OPTIONS && authorization.empty()) return TRUE;
  const Verdict verdict = hook.login.Check(method, target, authorization);
  if (verdict.status == 200) return TRUE;
  Refuse(context, verdict);
  return FALSE;
}

GType CameraAuthType() {
  static const GType type = g_type_register_static_simple(
      GST_TYPE_RTSP_AUTH, "SimcamAuth", sizeof(CameraAuthClass),
      [](gpointer cls, gpointer) { GST_RTSP_AUTH_CLASS(cls)->check = CheckLogin; }, sizeof(CameraAuth), nullptr,
      static_cast<GTypeFlags>(0));
  return type;
}

/// Shares a medium between clients until it is taken down. GStreamer's own factory goes on handing it out meanwhile,
/// and the server then answers 503.
struct SharingFactory {
  GstRTSPMediaFactory parent;
  gint generation;  ///< of the media that are shared now; atomic
};

struct SharingFactoryClass {
  GstRTSPMediaFactoryClass parent;
};

GType SharingFactoryType() {
  static const GType type = g_type_register_static_simple(
      GST_TYPE_RTSP_MEDIA_FACTORY, "SimcamSharingFactory", sizeof(SharingFactoryClass),
      [](gpointer cls, gpointer) {
        GST_RTSP_MEDIA_FACTORY_CLASS(cls)->gen_key = [](GstRTSPMediaFactory* factory, const GstRTSPUrl*) {
          return g_strdup_printf("%d", g_atomic_int_get(&reinterpret_cast<SharingFactory*>(factory)->generation));
        };
      },
      sizeof(SharingFactory), nullptr, static_cast<GTypeFlags>(0));
  return type;
}

void OnTargetState(GstRTSPMedia*, gint state, gpointer factory) {
  if (state == GST_STATE_NULL) g_atomic_int_inc(&static_cast<SharingFactory*>(factory)->generation);
}

/// One medium's walk through a clip that never ends.
struct ClipPlayer {
  std::shared_ptr<const Clip> clip;
  int fps;
  guint64 next = 0;
};

void PushNextUnit(GstAppSrc* source, guint, gpointer data) {
  auto& player = *static_cast<ClipPlayer*>(data);
  GstBuffer* buffer = gst_buffer_copy(player.clip->units[player.next % player.clip->units.size()].buffer.get());
  const auto fps = static_cast<guint64>(player.fps);
  GST_BUFFER_PTS(buffer) = player.next * GST_SECOND / fps;
  GST_BUFFER_DTS(buffer) = GST_BUFFER_PTS(buffer);
  GST_BUFFER_DURATION(buffer) = GST_SECOND / fps;
  ++player.next;
  gst_app_src_push_buffer(source, buffer);
}

/// One address of the camera; what its media need when they are made.
struct Mount {
  StreamConfig stream;
  std::shared_ptr<const Clip> clip;  ///< null: live
};

void OnMedia(GstRTSPMediaFactory* factory, GstRTSPMedia* media, gpointer data) {
  g_signal_connect_object(media, "target-state", G_CALLBACK(OnTargetState), factory, static_cast<GConnectFlags>(0));
  const auto& mount = *static_cast<const Mount*>(data);
  const Element pipeline(gst_rtsp_media_get_element(media));
  ShowClock(pipeline.get(), Clock::kWall);
  const Element source(gst_bin_get_by_name(GST_BIN(pipeline.get()), "clip"));
  if (!source) return;
  g_object_set(source.get(), "format", GST_FORMAT_TIME, "caps", mount.clip->caps.get(), nullptr);
  auto* player = new ClipPlayer{mount.clip, mount.stream.fps};
  GstAppSrcCallbacks callbacks{};
  callbacks.need_data = PushNextUnit;
  gst_app_src_set_callbacks(GST_APP_SRC(source.get()), &callbacks, player,
                            [](gpointer old) { delete static_cast<ClipPlayer*>(old); });
}

std::string Launch(const StreamConfig& stream) {
  const std::string videoName = stream.audio == Audio::kFirst ? "pay1" : "pay0";
  const std::string audio =
      "audiotestsrc is-live=true wave=ticks ! audio/x-raw,rate=8000,channels=1 ! alawenc ! "
      "rtppcmapay pt=8 name=pay0 ";
  const std::string source =
      stream.live ? TestPicture(stream.size, stream.fps, "is-live=true") + " ! " + Encoder(stream) : "appsrc name=clip";
  const std::string video = source + " ! " + Payloader(*stream.codec, videoName) + " ";
  if (stream.audio == Audio::kOnly) return "( " + audio + ")";
  return "( " + video + (stream.audio == Audio::kFirst ? audio : "") + ")";
}

void OnClient(GstRTSPServer*, GstRTSPClient* client, gpointer log) {
  g_signal_connect(client, "new-session", G_CALLBACK(+[](GstRTSPClient*, GstRTSPSession*, gpointer data) {
                     static_cast<CameraLog*>(data)->CountSession();
                   }),
                   log);
}

using LocalPorts = std::unique_ptr<GstRTSPAddressPool, UnrefGlib>;

/// Where media send from over UDP: without it GStreamer's server takes ports of all addresses.
LocalPorts MakeLocalPorts() {
  constexpr char kHere[] = "127.0.0.1";
  constexpr guint16 kFirst = 20000;
  constexpr guint16 kLast = 29999;
  LocalPorts ports(gst_rtsp_address_pool_new());
  gst_rtsp_address_pool_add_range(ports.get(), kHere, kHere, kFirst, kLast, 0);
  return ports;
}

using GlibSocket = std::unique_ptr<GSocket, UnrefGlib>;

}  // namespace

struct StockRtsp::Impl {
  LoginHook hook;
  std::vector<std::unique_ptr<Mount>> mounts;
  std::unique_ptr<GstRTSPServer, UnrefGlib> server{gst_rtsp_server_new()};
  std::mutex mutex{};
  std::vector<GlibSocket> sockets{};  ///< taken over; under the mutex
};

StockRtsp::StockRtsp(const CameraConfig& camera, Login& login, CameraLog& log, ClipStore& clips)
    : impl_(new Impl{{camera, login, log}, {}}) {
  GstRTSPServer* server = impl_->server.get();
  auto* auth = static_cast<GstRTSPAuth*>(g_object_new(CameraAuthType(), nullptr));
  reinterpret_cast<CameraAuth*>(auth)->hook = &impl_->hook;  // NOLINT: GObject's inheritance
  gst_rtsp_server_set_auth(server, auth);
  g_object_unref(auth);

  const LocalPorts ports = MakeLocalPorts();
  GstRTSPMountPoints* points = gst_rtsp_server_get_mount_points(server);
  for (const StreamConfig& stream : camera.RtspStreams()) {
    impl_->mounts.push_back(std::make_unique<Mount>(Mount{stream, stream.live ? nullptr : clips.Get(stream)}));
    auto* factory = static_cast<GstRTSPMediaFactory*>(g_object_new(SharingFactoryType(), nullptr));
    gst_rtsp_media_factory_set_launch(factory, Launch(stream).c_str());
    gst_rtsp_media_factory_set_shared(factory, TRUE);
    gst_rtsp_media_factory_set_address_pool(factory, ports.get());
    if (stream.isUdpAlone) gst_rtsp_media_factory_set_protocols(factory, GST_RTSP_LOWER_TRANS_UDP);
    g_signal_connect(factory, "media-configure", G_CALLBACK(OnMedia), impl_->mounts.back().get());
    gst_rtsp_mount_points_add_factory(points, stream.path.c_str(), factory);
  }
  g_object_unref(points);
  g_signal_connect(server, "client-connected", G_CALLBACK(OnClient), &log);
}

StockRtsp::~StockRtsp() {
  gst_rtsp_server_client_filter(
      impl_->server.get(),
      [](GstRTSPServer*, GstRTSPClient* client, gpointer) {
        gst_rtsp_client_close(client);
        return GST_RTSP_FILTER_REMOVE;
      },
      nullptr);
}

void StockRtsp::Adopt(Socket connection, const std::string& received) {
  GError* error = nullptr;
  GSocket* socket = g_socket_new_from_fd(connection.Release(), &error);
  if (socket == nullptr) {
    g_error_free(error);
    return;
  }
  {
    const std::scoped_lock lock(impl_->mutex);
    impl_->sockets.emplace_back(G_SOCKET(g_object_ref(socket)));
  }
  gst_rtsp_server_transfer_connection(impl_->server.get(), socket, "127.0.0.1", 0, received.c_str());
}

int StockRtsp::CountOpen() {
  const std::scoped_lock lock(impl_->mutex);
  std::erase_if(impl_->sockets, [](const GlibSocket& socket) { return !IsEstablished(g_socket_get_fd(socket.get())); });
  return static_cast<int>(impl_->sockets.size());
}

}  // namespace simcam
