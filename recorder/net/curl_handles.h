#pragma once

#include <curl/curl.h>

#include <memory>
#include <new>
#include <optional>
#include <string>

#include "recorder/utility/handle.h"

// Owners of libcurl's handles, and what is done with them in more than one place.

namespace recorder {

using CurlHandle = std::unique_ptr<CURL, Deleter<curl_easy_cleanup>>;
using CurlList = std::unique_ptr<curl_slist, Deleter<curl_slist_free_all>>;
using CurlText = std::unique_ptr<char, Deleter<curl_free>>;
using UrlHandle = std::unique_ptr<CURLU, Deleter<curl_url_cleanup>>;

inline void Append(CurlList& lines, const std::string& line) {
  curl_slist* longer = curl_slist_append(lines.get(), line.c_str());
  if (longer == nullptr) throw std::bad_alloc();
  static_cast<void>(lines.release());
  lines.reset(longer);
}

/// A part of an address; nothing when it has none such.
inline std::optional<std::string> PartOf(const UrlHandle& url, CURLUPart part) {
  char* text = nullptr;
  if (curl_url_get(url.get(), part, &text, 0) != CURLUE_OK) return std::nullopt;
  return CurlText(text).get();
}

}  // namespace recorder
