#include "recorder/ctl/certificate_files.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <chrono>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

#include "recorder/utility/clock.h"
#include "recorder/utility/handle.h"

namespace recorder {

namespace {

[[noreturn]] void Refuse(const std::filesystem::path& file) {
  const char* reason = ERR_reason_error_string(ERR_peek_last_error());
  throw std::runtime_error(file.string() + " cannot be used: " + (reason == nullptr ? "unknown" : reason));
}

std::int64_t EndOf(const X509& certificate) {
  int days = 0;
  int seconds = 0;
  ASN1_TIME_diff(&days, &seconds, nullptr, X509_get0_notAfter(&certificate));
  return SecondsNow() + std::chrono::seconds(std::chrono::days(days)).count() + seconds;
}

}  // namespace

std::int64_t TryCertificate(const CertificateFiles& files, const CertificateFiles& named) {
  const std::unique_ptr<SSL_CTX, Deleter<SSL_CTX_free>> context(SSL_CTX_new(TLS_server_method()));
  if (!context) throw std::bad_alloc();
  SSL_CTX_set_default_passwd_cb(context.get(), [](char*, int, int, void*) { return -1; });  // nobody could type one
  ERR_clear_error();
  if (SSL_CTX_use_certificate_chain_file(context.get(), files.certificate.c_str()) != 1) Refuse(named.certificate);
  if (SSL_CTX_use_PrivateKey_file(context.get(), files.key.c_str(), SSL_FILETYPE_PEM) != 1) Refuse(named.key);
  return EndOf(*SSL_CTX_get0_certificate(context.get()));
}

}  // namespace recorder
