#include "recorder/ctl/serve/lighttpd_config.h"

#include <span>
#include <string_view>

#include "recorder/host/api_call.h"
#include "recorder/utility/limits.h"

namespace recorder {

namespace {

/// Configuration of lighttpd: it brings logins and limits. A body over its address's limit is refused when its length
/// is known. Others, which may hold passwords, wait in the server's own folder, at most one a connection: HTTP/2 would
/// have several. The type of its error files comes from their name, which always ends in ".html". It does not tell its
/// name and version, and what a page's folder holds for its developers stays there.
/// Its limits of size are numbers of KiB.
/// API_ADDRESSES are those that the workers answer. Below /trusted/ they do as long as TrustedRoute has its link, and
/// for whoever sends the open half of a pair; for all others the server refuses to follow a link.
constexpr char kServerConfiguration[] = R"text(
server.bind = "127.0.0.1"
server.port = var.port
server.pid-file = var.run + "/lighttpd.pid"
server.document-root = var.run + "/www"
server.modules = ( "mod_setenv", "mod_auth", "mod_authn_file", "mod_fastcgi" )
server.feature-flags = ( "server.h2proto" => "disable", "server.h2c" => "disable" )
server.stat-cache-engine = "disable"
server.upload-dirs = ( var.run )
server.errorfile-prefix = var.run + "/error-"
server.range-requests = "disable"
server.tag = ""
static-file.exclude-extensions = ( ".md", "tsconfig.json" )
mimetype.assign = ( ".html" => "application/json" )
server.max-request-size = LARGEST_BODY
server.max-read-idle = 10
server.max-connections = 256
auth.backend = "htpasswd"
auth.backend.htpasswd.userfile = var.run + "/users"
auth.require = ( "/api/" => ( "method" => "basic", "realm" => "recorder", "require" => "valid-user" ) )
setenv.set-response-header = ( "Cache-Control" => "no-store", "X-Content-Type-Options" => "nosniff",
  "Referrer-Policy" => "no-referrer", "Content-Security-Policy" => "default-src 'none'; frame-ancestors 'none'" )
$HTTP["url"] =~ "API_ADDRESSES" {
  fastcgi.server = ( "/" => ( ( "socket" => var.run + "/cameras.sock", "check-local" => "disable" ) ) )
}
$HTTP["url"] =~ "^/[^/]+/[^/]+/[^/]+/(LIST_METHODS)$" {
  fastcgi.server = ( "/" => ( ( "socket" => var.run + "/lists.sock", "check-local" => "disable" ) ) )
}
$HTTP["url"] =~ "^/[^/]+/[^/]+/[^/]+/(LARGE_METHODS)$" {
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

constexpr char kTlsConfiguration[] = R"(
server.modules += ( "mod_openssl" )
ssl.engine = "enable"
ssl.pemfile = var.run + "/certificate"
ssl.privkey = var.run + "/key"
ssl.openssl.ssl-conf-cmd = ( "MinProtocol" => "TLSv1.2" )
setenv.add-response-header = ( "Strict-Transport-Security" => "max-age=31536000" )
)";

void Replace(std::string& text, std::string_view place, std::string_view by) {
  for (std::size_t at = text.find(place); at != std::string::npos; at = text.find(place, at + by.size()))
    text.replace(at, place.size(), by);
}

/// For a regular expression.
std::string Alternatives(std::span<const std::string_view> words) {
  std::string text;
  for (const std::string_view word : words) text += (text.empty() ? "" : "|") + std::string(word);
  return text;
}

}  // namespace

std::string LighttpdConfig(const WebServerOptions& options, int port) {
  std::string text = kServerConfiguration;
  if (options.hasPage) text += kPageConfiguration;
  if (options.hasTls) text += kTlsConfiguration;
  Replace(text, "LIST_METHODS", Alternatives(MethodsWithoutCamera()));
  Replace(text, "LARGE_METHODS", Alternatives(MethodsWithList()));
  Replace(text, "LARGEST_BODY", std::to_string(kLargestBody / kKiB));
  Replace(text, "LARGEST_LIST", std::to_string(kLargestListBody / kKiB));
  Replace(text, "API_ADDRESSES", options.hasPage ? "^/(api|trusted)(/|$)" : "^/");
  return "var.run = \"" + options.runFolder.string() + "\"\nvar.port = " + std::to_string(port) + text;
}

}  // namespace recorder
