#include "recorder/ctl/serve/lighttpd_config.h"

#include <span>
#include <string_view>
#include <utility>

#include "recorder/host/api_call.h"
#include "recorder/http/caller.h"
#include "recorder/own/own_routes.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

/// Configuration of lighttpd: it brings limits, and sends each request where it belongs. A body over its address's
/// limit is refused when its length is known. Others, which may hold passwords, wait in the server's own folder, at
/// most one a connection: HTTP/2 would have several. The type of its error files comes from their name, which always
/// ends in ".html". It does not tell its name and version, and what a page's folder holds for its developers stays
/// there. Its limits of size are numbers of KiB. When it is told to read its certificate again, it ends the requests at
/// hand first, for 15 seconds at most: new connections wait so long.
/// API_ADDRESSES are those that workers or recorder-login answer, USER_ADDRESSES those for which one must be logged in:
/// who shows neither session nor token nor password is refused at once. Sessions and tokens are checked by the workers,
/// a name and a password by recorder-login, before a worker gets the request without them. Of any other header that may
/// hold a password, such as one that was joined of two, only recorder-login gets to know.
/// An answer below /recorder/1/ may come in lines, which are passed on at once; a worker never waits for a slow reader.
/// Events that are told as they come hold a worker for long: not one of those few that answer lists.
/// A browser may keep its lists that hold nothing about anybody or any camera, if it asks anew.
/// Whoever watches the recorder asks workers that wait for no camera; they decide who may. What is for everybody wants
/// no login checked.
/// Below /trusted/ workers answer as long as TrustedRoute has its link, and for whoever sends the open half of a pair;
/// for all others the server refuses to follow a link.
constexpr char kServerConfiguration[] = R"text(
server.bind = "LISTEN_ADDRESS"
server.port = var.port
server.pid-file = var.run + "/lighttpd.pid"
server.document-root = var.run + "/www"
server.modules = ( "mod_setenv", "mod_auth", "mod_fastcgi", "mod_magnet" )
server.feature-flags = ( "server.h2proto" => "disable", "server.h2c" => "disable",
  "server.graceful-shutdown-timeout" => 15 )
server.stat-cache-engine = "disable"
server.upload-dirs = ( var.run )
server.errorfile-prefix = var.run + "/error-"
server.range-requests = "disable"
server.tag = ""
static-file.disable-pathinfo = "enable"
static-file.exclude-extensions = ( ".md", "tsconfig.json" )
mimetype.assign = ( ".html" => "application/json" )
server.max-request-size = LARGEST_BODY
server.max-read-idle = 10
server.max-connections = 256
setenv.add-response-header = ( ADDED_HEADERS )
setenv.set-response-header = ( "Cache-Control" => "no-store", HEADERS_OF_DATA )
$HTTP["url"] =~ "API_ADDRESSES" {
  fastcgi.server = ( "/" => ( CAMERA_WORKERS ) )
}
$HTTP["url"] =~ "LIST_ADDRESSES" {
  fastcgi.server = ( "/" => ( LIST_WORKERS ) )
}
$HTTP["url"] =~ "EVENT_ADDRESS" {
  $REQUEST_HEADER["Accept"] =~ "EVENT_STREAM" { fastcgi.server = ( "/" => ( CAMERA_WORKERS ) ) }
}
$REQUEST_HEADER["Authorization"] !~ "(?i)^Bearer [^,]*$" {
  setenv.set-request-header = ( "Authorization" => "" )
}
$REQUEST_HEADER["Authorization"] =~ "(?i)^Basic" {
  magnet.attract-physical-path-to = ( var.run + "/strip.lua" )
  $HTTP["url"] =~ "USER_ADDRESSES" {
    setenv.set-request-header = ()
    fastcgi.server = ( "/" => ( CHECK_OF_PASSWORD, CAMERA_WORKERS ) )
  }
  $HTTP["url"] =~ "CHECKED_LISTS" {
    setenv.set-request-header = ()
    fastcgi.server = ( "/" => ( CHECK_OF_PASSWORD, LIST_WORKERS ) )
  }
  $HTTP["url"] =~ "EVENT_ADDRESS" {
    $REQUEST_HEADER["Accept"] =~ "EVENT_STREAM" { fastcgi.server = ( "/" => ( CHECK_OF_PASSWORD, CAMERA_WORKERS ) ) }
  }
}
$HTTP["url"] =~ "LOGIN_ADDRESSES" {
  setenv.set-request-header = ()
  fastcgi.server = ( "/" => ( ( "socket" => var.run + "/login.sock", "check-local" => "disable" ) ) )
}
else $HTTP["url"] =~ "USER_ADDRESSES" {
  $REQUEST_HEADER["Authorization"] == "" {
    $HTTP["cookie"] !~ "(^|;) *(__Host-)?session=" {
      auth.require = ( "" => ( "method" => "extern", "realm" => "recorder", "require" => "valid-user" ) )
      setenv.add-response-header = ( ADDED_HEADERS "WWW-Authenticate" => "WAYS_OF_PAGES" )
      $REQUEST_HEADER["Sec-Fetch-Site"] == "" {
        setenv.add-response-header = ( ADDED_HEADERS "WWW-Authenticate" => "ALL_WAYS" )
      }
    }
  }
}
$HTTP["url"] =~ "^/recorder/1/" {
  server.stream-response-body = 1
}
$HTTP["url"] =~ "^/recorder/1/(OWN_KEPT)$" {
  setenv.set-response-header = ( "Cache-Control" => "private, no-cache", HEADERS_OF_DATA )
}
$HTTP["url"] =~ "^/([^/]+/[^/]+/[^/]+/(LARGE_METHODS)|recorder/1/runs/[^/]+/rows)$" {
  server.max-request-size = LARGEST_LIST
}
$HTTP["url"] =~ "^/trusted(/|$)" {
  server.document-root = var.run + "/route"
  fastcgi.server = ( "/" => ( ( "socket" => var.run + "/cameras.sock", "check-local" => "enable" ) ) )
}
$HTTP["url"] =~ "^/trusted/[^/]+/[^/]+/(LIST_METHODS)$" {
  fastcgi.server = ( "/" => ( ( "socket" => var.run + "/lists.sock", "check-local" => "enable" ) ) )
}
$HTTP["cookie"] !~ "(^|;) *timestamp=[0-9]+ *(;|$)" {
  $HTTP["url"] =~ "^/trusted(/|$)" { server.follow-symlink = "disable" }
}
)text";

/// What the page may do in a browser: run its own scripts, ask this server, show pictures that it made itself, and
/// nothing else (Content Security Policy Level 3, Trusted Types). Its files may be kept if they are asked for anew.
/// Where an error is answered instead of a file, the type is the one that belongs to the error file's name.
constexpr char kPageConfiguration[] = R"(
$HTTP["url"] !~ "API_ADDRESSES" {
  index-file.names = ( "index.html" )
  mimetype.assign = ( "/index.html" => "text/html; charset=utf-8", ".css" => "text/css; charset=utf-8",
    ".js" => "text/javascript; charset=utf-8", ".svg" => "image/svg+xml", ".csv" => "text/csv; charset=utf-8",
    ".yaml" => "application/yaml", ".json" => "application/json", ".html" => "application/json" )
  setenv.set-response-header = ( "Cache-Control" => "no-cache", "X-Content-Type-Options" => "nosniff",
    "Referrer-Policy" => "no-referrer", "Cross-Origin-Opener-Policy" => "same-origin",
    "Content-Security-Policy" => "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob:; " +
      "connect-src 'self'; form-action 'none'; base-uri 'none'; frame-ancestors 'none'; " +
      "require-trusted-types-for 'script'" )
}
)";

constexpr char kTlsHeader[] = R"("Strict-Transport-Security" => "max-age=31536000",)";

constexpr char kTlsConfiguration[] = R"(
server.modules += ( "mod_openssl" )
ssl.engine = "enable"
ssl.pemfile = var.run + "/certificate"
ssl.openssl.ssl-conf-cmd = ( "MinProtocol" => "TLSv1.2" )
)";

/// What the text above names.
constexpr std::pair<std::string_view, std::string_view> kPlaces[] = {
    {"CAMERA_WORKERS", R"(( "socket" => var.run + "/cameras.sock", "check-local" => "disable" ))"},
    {"LIST_WORKERS", R"(( "socket" => var.run + "/lists.sock", "check-local" => "disable" ))"},
    {"CHECK_OF_PASSWORD",
     R"(( "mode" => "authorizer", "socket" => var.run + "/login.sock", "check-local" => "disable" ))"},
    {"HEADERS_OF_DATA", R"("X-Content-Type-Options" => "nosniff", "Referrer-Policy" => "no-referrer",
  "Content-Security-Policy" => "default-src 'none'; frame-ancestors 'none'")"},
    {"USER_ADDRESSES", "^/(api|recorder/[0-9]+)(/|$)"},
    {"API_ADDRESSES", "^/((api|recorder/[0-9]+|trusted)(/|$)|(healthz|readyz|metrics)$)"},
    {"EVENT_ADDRESS", "^/recorder/1/events$"},
    {"EVENT_STREAM", "text/event-stream"},
    {"LOGIN_ADDRESSES", "^/recorder/1/(session|sessions|users|tokens)(/|$)"},
    {"CHECKED_LISTS", "^/(api/[^/]+/[^/]+/(LIST_METHODS)|recorder/1/(OWN_LISTS)|metrics)$"},
    {"LIST_ADDRESSES", "^/(api/[^/]+/[^/]+/(LIST_METHODS)|recorder/1/(OWN_LISTS)|healthz|readyz|metrics)$"},
};

constexpr char kStripScript[] = R"(
local request = lighty.r
if request.req_env["REMOTE_USER"] then request.req_header["Authorization"] = nil end
)";

void Replace(std::string& text, std::string_view place, std::string_view by) {
  for (std::size_t at = text.find(place); at != std::string::npos; at = text.find(place, at + by.size()))
    text.replace(at, place.size(), by);
}

/// For a text between quotation marks.
std::string Quoted(std::string text) {
  Replace(text, "\"", "\\\"");
  return text;
}

/// For a regular expression.
std::string Alternatives(std::span<const std::string_view> words) {
  std::string text;
  for (const std::string_view word : words) text += (text.empty() ? "" : "|") + std::string(word);
  return text;
}

/// The same for what paths of the recorder's own addresses stand for.
std::string OwnPaths(std::span<const std::string_view> paths) {
  std::string text;
  for (const std::string_view path : paths) {
    text += (text.empty() ? "" : "|") + std::string(path) + (path.ends_with('/') ? ".+" : "");
  }
  Replace(text, "*", "[^/]+");
  return text;
}

/// Proxies are believed by their address alone. The server tells programs of that if it has mod_proxy (kProxyVariable).
std::string ForwardedConfig(const std::vector<std::string>& proxies) {
  if (proxies.empty()) return "";
  std::string trusted;
  for (const std::string& proxy : proxies) trusted += (trusted.empty() ? "\"" : ", \"") + proxy + "\" => \"trust\"";
  return "server.modules += ( \"mod_proxy\", \"mod_extforward\" )\nextforward.headers = ( \"X-Forwarded-For\" )\n"
         "extforward.forwarder = ( " +
         trusted + " )\n";
}

}  // namespace

std::string StripScript() { return kStripScript; }

std::string LighttpdConfig(const WebServerOptions& options, int port) {
  std::string text = kServerConfiguration;
  if (options.hasPage) text += kPageConfiguration;
  if (options.certificate) text += kTlsConfiguration;
  if (options.address.host == "::") text += "server.v4mapped = \"enable\"\n";
  text += ForwardedConfig(options.proxies);
  for (const auto& [place, by] : kPlaces) Replace(text, place, by);
  Replace(text, "LISTEN_ADDRESS", WithBrackets(options.address.host));
  Replace(text, "LIST_METHODS", Alternatives(MethodsWithoutCamera()));
  Replace(text, "OWN_LISTS", OwnPaths(OwnListPaths()));
  Replace(text, "OWN_KEPT", OwnPaths(OwnKeptPaths()));
  Replace(text, "LARGE_METHODS", Alternatives(MethodsWithList()));
  Replace(text, "ADDED_HEADERS", options.certificate ? kTlsHeader : "");
  Replace(text, "ALL_WAYS", Quoted(kAllWays));
  Replace(text, "WAYS_OF_PAGES", Quoted(kWaysOfPages));
  Replace(text, "LARGEST_BODY", std::to_string(kLargestBody / kKiB));
  Replace(text, "LARGEST_LIST", std::to_string(kLargestListBody / kKiB));
  return "var.run = \"" + options.runFolder.string() + "\"\nvar.port = " + std::to_string(port) + text;
}

}  // namespace recorder
