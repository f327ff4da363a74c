#include "recorder/notice/signed_post.h"

#include <sodium.h>
#include <sys/socket.h>

#include <array>
#include <exception>
#include <new>
#include <utility>

#include "recorder/net/curl_handles.h"
#include "recorder/utility/address_policy.h"
#include "recorder/utility/secrets.h"
#include "recorder/utility/translate.h"

namespace recorder {
namespace {

constexpr long kLongestMs = 10'000;

constexpr std::pair<CURLcode, Outcome> kOutcomes[] = {
    {CURLE_OK, Outcome::kOk},
    {CURLE_COULDNT_RESOLVE_HOST, Outcome::kUnreachable},
    {CURLE_COULDNT_CONNECT, Outcome::kUnreachable},
    {CURLE_OPERATION_TIMEDOUT, Outcome::kTimedOut},
    {CURLE_GOT_NOTHING, Outcome::kNotUnderstood},  // it hung up, as in the next two
    {CURLE_RECV_ERROR, Outcome::kNotUnderstood},
    {CURLE_SEND_ERROR, Outcome::kNotUnderstood},
};

std::string Signature(const std::string& secret, const std::string& body) {
  PrepareSodium();
  crypto_auth_hmacsha256_state state;
  std::array<unsigned char, crypto_auth_hmacsha256_BYTES> hmac{};
  crypto_auth_hmacsha256_init(&state, reinterpret_cast<const unsigned char*>(secret.data()), secret.size());
  crypto_auth_hmacsha256_update(&state, reinterpret_cast<const unsigned char*>(body.data()), body.size());
  crypto_auth_hmacsha256_final(&state, hmac.data());
  sodium_memzero(&state, sizeof(state));
  return "sha256=" + HexText(hmac);
}

/// One request.
class Post {
 public:
  Post(const std::string& url, const std::string& secret, const std::string& body) : curl_(curl_easy_init()) {
    if (!curl_) throw std::bad_alloc();
    Append(headers_, "Content-Type: application/json");
    Append(headers_, "X-Signature: " + Signature(secret, body));
    Set(CURLOPT_HTTPHEADER, headers_.get());
    Set(CURLOPT_URL, url.c_str());
    Set(CURLOPT_COPYPOSTFIELDS, body.c_str());
    Set(CURLOPT_PROTOCOLS_STR, "http,https");
    Set(CURLOPT_PROXY, "");
    Set(CURLOPT_USERAGENT, "recorder");
    Set(CURLOPT_NOSIGNAL, 1L);
    Set(CURLOPT_TIMEOUT_MS, kLongestMs);
    Set(CURLOPT_OPENSOCKETFUNCTION, &OnOpenSocket);
    Set(CURLOPT_OPENSOCKETDATA, this);
    Set(CURLOPT_WRITEFUNCTION, &OnBody);
  }
  Post(const Post&) = delete;
  Post& operator=(const Post&) = delete;

  PostResult Perform() {
    const CURLcode code = curl_easy_perform(curl_.get());
    PostResult result{.outcome = Translate(kOutcomes, code, Outcome::kNotThisProtocol)};
    curl_easy_getinfo(curl_.get(), CURLINFO_RESPONSE_CODE, &result.status);
    const bool isGood = result.status >= 200 && result.status < 300;
    if (result.outcome == Outcome::kOk && !isGood) result.outcome = Outcome::kNotUnderstood;
    if (isBlocked_ && !isAllowed_ && result.outcome != Outcome::kOk) result.outcome = Outcome::kBlocked;
    return result;
  }

 private:
  template <class Value>
  void Set(CURLoption option, Value value) {
    curl_easy_setopt(curl_.get(), option, value);
  }

  /// Called by libcurl, which is C: nothing may be thrown through it. For each address of the host.
  static curl_socket_t OnOpenSocket(void* self, curlsocktype, curl_sockaddr* address) try {
    const bool mayConnect = MayConnectTo(address->addr);
    auto* const post = static_cast<Post*>(self);
    (mayConnect ? post->isAllowed_ : post->isBlocked_) = true;
    return mayConnect ? socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol) : CURL_SOCKET_BAD;
  } catch (const std::exception&) {
    return CURL_SOCKET_BAD;
  }

  /// Nobody needs what it says; one that says too much is ended by the time limit.
  static std::size_t OnBody(const char*, std::size_t, std::size_t size, void*) { return size; }

  CurlList headers_;
  bool isBlocked_ = false;  // one address of the host
  bool isAllowed_ = false;  // one at least
  CurlHandle curl_;
};

}  // namespace

bool IsNoticeUrl(const std::string& text) {
  const UrlHandle url(curl_url());
  if (!url || curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK) return false;
  const auto part = [&](CURLUPart which) { return PartOf(url, which).value_or(""); };
  const std::string scheme = part(CURLUPART_SCHEME);
  const bool hasLogin = !part(CURLUPART_USER).empty() || !part(CURLUPART_PASSWORD).empty();
  return (scheme == "http" || scheme == "https") && !part(CURLUPART_HOST).empty() && !hasLogin;
}

PostResult PostSigned(const std::string& url, const std::string& secret, const std::string& body) {
  return Post(url, secret, body).Perform();
}

}  // namespace recorder
