#include "recorder/net/tls_socket.h"

#include <openssl/err.h>
#include <openssl/x509.h>

#include <array>
#include <new>
#include <tuple>

#include "recorder/utility/log.h"
#include "recorder/utility/secrets.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

using TlsContext = std::unique_ptr<SSL_CTX, Deleter<SSL_CTX_free>>;

TlsContext NewContext() {
  TlsContext context(SSL_CTX_new(TLS_client_method()));
  if (!context || SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION) != 1) throw std::bad_alloc();
  return context;
}

/// OpenSSL's own, for all connections: made once, and never changed.
SSL_CTX& Context() {
  static const TlsContext context = NewContext();
  return *context;
}

/// Cameras sign their own certificates: authorities are not asked. That the camera has the key is proven all the same.
TlsHandle NewTls(const std::string& host) {
  TlsHandle owner(SSL_new(&Context()));
  SSL* tls = owner.get();
  if (tls == nullptr) throw std::bad_alloc();
  SSL_set0_rbio(tls, BIO_new(BIO_s_mem()));
  SSL_set0_wbio(tls, BIO_new(BIO_s_mem()));
  if (SSL_get_rbio(tls) == nullptr || SSL_get_wbio(tls) == nullptr) throw std::bad_alloc();
  SSL_set_connect_state(tls);
  SSL_set_verify(tls, SSL_VERIFY_NONE, nullptr);
  SSL_set_options(tls, SSL_OP_NO_RENEGOTIATION);
  if (!IsNumericAddress(host)) SSL_set_tlsext_host_name(tls, host.c_str());
  return owner;
}

/// What went wrong in OpenSSL, for the log.
std::string Reason() {
  const char* reason = ERR_reason_error_string(ERR_peek_error());
  return reason == nullptr ? "the connection was closed" : reason;
}

}  // namespace

std::string CertificateOf(const SSL& tls) {
  const X509* certificate = SSL_get0_peer_certificate(&tls);
  std::array<unsigned char, 32> digest{};
  const bool isThere = certificate != nullptr && X509_digest(certificate, EVP_sha256(), digest.data(), nullptr) == 1;
  return isThere ? HexText(digest) : "";
}

Outcome TlsSocket::Connect(const std::string& host, int port, Clock::time_point deadline) {
  tls_.reset();
  return socket_.Connect(host, port, deadline);
}

Outcome TlsSocket::BeginTls(const std::string& host, Clock::time_point deadline) {
  tls_ = NewTls(host);
  const Outcome outcome = Shake(deadline);
  if (outcome == Outcome::kNotThisProtocol) LogFailure("No TLS with " + host + ": " + Reason() + ".");
  return outcome;
}

std::string TlsSocket::Certificate() const { return tls_ ? CertificateOf(*tls_) : ""; }

Outcome TlsSocket::Shake(Clock::time_point deadline) {
  for (;;) {
    ERR_clear_error();
    const int result = SSL_do_handshake(tls_.get());
    const bool wantsMore = WantsMore(result);
    if (const Outcome sent = SendPending(deadline); result == 1 || sent == Outcome::kTimedOut) return sent;
    if (!wantsMore) return Outcome::kNotThisProtocol;
    if (const Outcome fed = Feed(deadline); fed != Outcome::kOk) return fed;
  }
}

Outcome TlsSocket::Write(std::span<const std::uint8_t> bytes, Clock::time_point deadline) {
  if (!tls_) return socket_.Write(bytes, deadline);
  if (bytes.empty()) return Outcome::kOk;
  ERR_clear_error();
  std::size_t written = 0;  // all of it: memory takes any
  const bool isWritten = SSL_write_ex(tls_.get(), bytes.data(), bytes.size(), &written) == 1;
  return isWritten ? SendPending(deadline) : Outcome::kNotUnderstood;
}

Outcome TlsSocket::Read(std::span<std::uint8_t> space, Clock::time_point deadline, std::size_t& received) {
  if (!tls_) {
    const Outcome outcome = socket_.Read(space, deadline, received);
    count_ += received;
    return outcome;
  }
  for (const bool isFed : {false, true}) {
    ERR_clear_error();
    received = 0;
    const int result = SSL_read_ex(tls_.get(), space.data(), space.size(), &received);
    const bool wantsMore = WantsMore(result);
    // An alert about the end would count as something that the camera has not read.
    if (!wantsMore) return Outcome::kOk;
    std::ignore = SendPending(deadline);  // an answer of TLS itself; a broken connection shows in what is read
    if (isFed) break;
    if (const Outcome fed = Feed(deadline); fed != Outcome::kOk) return fed;
  }
  return Outcome::kTimedOut;
}

/// `result`: of OpenSSL's last call.
bool TlsSocket::WantsMore(int result) const {
  return result <= 0 && SSL_get_error(tls_.get(), result) == SSL_ERROR_WANT_READ;
}

/// Sends what TLS has written.
Outcome TlsSocket::SendPending(Clock::time_point deadline) {
  BIO* out = SSL_get_wbio(tls_.get());
  char* bytes = nullptr;
  const long size = BIO_get_mem_data(out, &bytes);
  if (size <= 0) return Outcome::kOk;
  const std::span pending(reinterpret_cast<const std::uint8_t*>(bytes), static_cast<std::size_t>(size));
  const Outcome outcome = socket_.Write(pending, deadline);
  BIO_reset(out);
  return outcome;
}

/// Waits for bytes and hands them to TLS, or that there will be no more.
Outcome TlsSocket::Feed(Clock::time_point deadline) {
  constexpr std::size_t kRecord = 16384 + 256 + 5;  // the largest (RFC 8446 section 5.2)
  std::array<std::uint8_t, kRecord> bytes{};
  std::size_t size = 0;
  if (const Outcome outcome = socket_.Read(bytes, deadline, size); outcome != Outcome::kOk) return outcome;
  count_ += size;
  BIO* in = SSL_get_rbio(tls_.get());
  if (size == 0) BIO_set_mem_eof_return(in, 0);
  return BIO_write(in, bytes.data(), static_cast<int>(size)) == static_cast<int>(size) ? Outcome::kOk
                                                                                       : Outcome::kNotUnderstood;
}

}  // namespace recorder
