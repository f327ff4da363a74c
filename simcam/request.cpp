#include "simcam/request.h"

#include <glib.h>

#include <charconv>
#include <sstream>

namespace simcam {
namespace {

std::string Trim(std::string text) { return g_strstrip(text.data()); }

Request ParseHead(const std::string& head) {
  Request request;
  std::istringstream lines(head);
  std::string line;
  std::getline(lines, line);
  std::istringstream words(line);
  words >> request.method >> request.target >> request.version;
  if (request.version.empty()) request.method.clear();
  while (std::getline(lines, line)) {
    const size_t colon = line.find(':');
    if (colon != std::string::npos) {
      request.headers.emplace_back(Trim(line.substr(0, colon)), Trim(line.substr(colon + 1)));
    }
  }
  return request;
}

size_t BodySize(const Request& request) {
  const std::string text = request.Header("Content-Length");
  size_t size = 0;
  std::from_chars(text.data(), text.data() + text.size(), size);
  return size;
}

}  // namespace

bool EqualNoCase(const std::string& a, const char* b) { return g_ascii_strcasecmp(a.c_str(), b) == 0; }

std::string Request::Header(const char* name) const {
  for (const auto& [key, value] : headers) {
    if (EqualNoCase(key, name)) return value;
  }
  return {};
}

std::string PathOf(const std::string& address) {
  const size_t scheme = address.find("://");
  if (address.starts_with('/') || scheme == std::string::npos) return address;
  const size_t path = address.find_first_of("/?", scheme + 3);
  return path == std::string::npos ? "/" : address.substr(path);
}

std::string Request::Path() const { return PathOf(target); }

std::optional<Request> TakeRequest(std::string& buffer) {
  const size_t end = buffer.find("\r\n\r\n");
  if (end == std::string::npos) return std::nullopt;
  Request request = ParseHead(buffer.substr(0, end));
  const size_t size = BodySize(request);
  if (buffer.size() - end - 4 < size) return std::nullopt;
  request.body = buffer.substr(end + 4, size);
  buffer.erase(0, end + 4 + size);
  return request;
}

const char* Reason(int status) {
  constexpr std::pair<int, const char*> kReasons[] = {{200, "OK"},
                                                      {302, "Found"},
                                                      {400, "Bad Request"},
                                                      {401, "Unauthorized"},
                                                      {403, "Forbidden"},
                                                      {404, "Not Found"},
                                                      {405, "Method Not Allowed"},
                                                      {453, "Not Enough Bandwidth"},
                                                      {454, "Session Not Found"},
                                                      {455, "Method Not Valid in This State"},
                                                      {461, "Unsupported Transport"},
                                                      {500, "Internal Server Error"},
                                                      {501, "Not Implemented"},
                                                      {503, "Service Unavailable"}};
  for (const auto& [code, text] : kReasons) {
    if (code == status) return text;
  }
  return "Because";
}

}  // namespace simcam
