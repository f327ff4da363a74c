#include "simcam/tls_front.h"

#include <openssl/evp.h>
#include <openssl/x509.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace simcam {
namespace {

constexpr long kValidSeconds = 24L * 3600;

struct FreeTls {
  void operator()(EVP_PKEY* key) const noexcept { EVP_PKEY_free(key); }
  void operator()(X509* certificate) const noexcept { X509_free(certificate); }
  void operator()(SSL* tls) const noexcept { SSL_free(tls); }
};
using Key = std::unique_ptr<EVP_PKEY, FreeTls>;
using Certificate = std::unique_ptr<X509, FreeTls>;
using Tls = std::unique_ptr<SSL, FreeTls>;

void Check(bool done) {
  if (!done) throw std::runtime_error("TLS: no certificate could be made");
}

Certificate SignedByItself(EVP_PKEY* key) {
  Certificate certificate(X509_new());
  X509* x509 = certificate.get();
  X509_NAME* name = X509_get_subject_name(x509);
  constexpr const char* kName = "simulated camera";
  Check(X509_set_version(x509, X509_VERSION_3) == 1 && ASN1_INTEGER_set(X509_get_serialNumber(x509), 1) == 1 &&
        X509_gmtime_adj(X509_getm_notBefore(x509), 0) != nullptr &&
        X509_gmtime_adj(X509_getm_notAfter(x509), kValidSeconds) != nullptr && X509_set_pubkey(x509, key) == 1 &&
        X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, reinterpret_cast<const unsigned char*>(kName), -1, -1,
                                   0) == 1 &&
        X509_set_issuer_name(x509, name) == 1 && X509_sign(x509, key, EVP_sha256()) > 0);
  return certificate;
}

SSL_CTX* NewContext() {
  const Key key(EVP_EC_gen("P-256"));
  Check(key != nullptr);
  const Certificate certificate = SignedByItself(key.get());
  SSL_CTX* context = SSL_CTX_new(TLS_server_method());
  Check(SSL_CTX_use_certificate(context, certificate.get()) == 1 && SSL_CTX_use_PrivateKey(context, key.get()) == 1);
  return context;
}

/// Both ends of a connection within the program.
std::pair<Socket, Socket> SocketPair() {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) throw std::runtime_error("socketpair");
  return {Socket(ends[0]), Socket(ends[1])};
}

/// Passes on what the client sent; false at the end of the connection.
bool FromClient(SSL* tls, const Socket& server) {
  std::array<char, 16384> bytes{};
  do {
    const int size = SSL_read(tls, bytes.data(), bytes.size());
    if (size <= 0 || !server.Send({bytes.data(), static_cast<size_t>(size)})) return false;
  } while (SSL_pending(tls) > 0);
  return true;
}

bool ToClient(SSL* tls, const Socket& server) {
  std::string bytes;
  return server.Receive(bytes) && SSL_write(tls, bytes.data(), static_cast<int>(bytes.size())) > 0;
}

}  // namespace

TlsFront::TlsFront() : context_(NewContext()) {}

bool TlsFront::IsWanted(const Socket& socket) {
  constexpr char kHandshake = 22;  // the type of the first record (RFC 8446 section 5.1)
  char first = 0;
  return recv(socket.Descriptor(), &first, 1, MSG_PEEK) == 1 && first == kHandshake;
}

void TlsFront::Relay(const Socket& socket, const std::function<void(Socket&)>& serve) const {
  const Tls tls(SSL_new(context_.get()));
  if (SSL_set_fd(tls.get(), socket.Descriptor()) != 1 || SSL_accept(tls.get()) != 1) return;
  auto [front, back] = SocketPair();
  const std::jthread server([&serve, &plain = back] {
    serve(plain);
    plain.Shutdown();
  });
  std::array<pollfd, 2> entries = {{{socket.Descriptor(), POLLIN, 0}, {front.Descriptor(), POLLIN, 0}}};
  while (poll(entries.data(), entries.size(), -1) > 0) {
    if (entries[0].revents != 0 && !FromClient(tls.get(), front)) break;
    if (entries[1].revents != 0 && !ToClient(tls.get(), front)) break;
  }
  front.Shutdown();
}

}  // namespace simcam
