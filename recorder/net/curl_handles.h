#pragma once

#include <curl/curl.h>

#include <memory>

#include "recorder/utility/handle.h"

// Owners of libcurl's handles.

namespace recorder {

using CurlHandle = std::unique_ptr<CURL, Deleter<curl_easy_cleanup>>;
using CurlList = std::unique_ptr<curl_slist, Deleter<curl_slist_free_all>>;
using CurlText = std::unique_ptr<char, Deleter<curl_free>>;
using UrlHandle = std::unique_ptr<CURLU, Deleter<curl_url_cleanup>>;

}  // namespace recorder
