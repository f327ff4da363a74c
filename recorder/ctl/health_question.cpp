#include "recorder/ctl/health_question.h"

#include "recorder/net/curl_handles.h"

namespace recorder {

namespace {

constexpr long kLimitSeconds = 5;

std::size_t Ignore(char*, std::size_t, std::size_t size, void*) { return size; }

}  // namespace

std::string WhyNotAlive(const std::string& address) {
  const CurlHandle curl(curl_easy_init());
  if (!curl) return "no memory";
  curl_easy_setopt(curl.get(), CURLOPT_URL, (address + "healthz").c_str());
  curl_easy_setopt(curl.get(), CURLOPT_PROXY, "");
  curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, kLimitSeconds);
  curl_easy_setopt(curl.get(), CURLOPT_SSL_VERIFYPEER, 0L);
  curl_easy_setopt(curl.get(), CURLOPT_SSL_VERIFYHOST, 0L);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, &Ignore);
  const CURLcode result = curl_easy_perform(curl.get());
  if (result != CURLE_OK) return curl_easy_strerror(result);
  long status = 0;
  curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &status);
  return status == 200 ? "" : "it answers with status " + std::to_string(status);
}

}  // namespace recorder
