#include "recorder/ctl/serve/served_certificate.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "recorder/utility/handle.h"
#include "recorder/utility/log.h"
#include "recorder/utility/secrets.h"

namespace recorder {

namespace {

[[noreturn]] void Refuse(const std::filesystem::path& file) {
  const char* reason = ERR_reason_error_string(ERR_peek_last_error());
  throw std::runtime_error(file.string() + " cannot be used: " + (reason == nullptr ? "unknown" : reason));
}

/// Reads `pair` as the web server does. What is wrong with it is told of the files that it was made of.
void TryPair(const std::filesystem::path& pair, const CertificateFiles& files) {
  const std::unique_ptr<SSL_CTX, Deleter<SSL_CTX_free>> context(SSL_CTX_new(TLS_server_method()));
  if (!context) throw std::bad_alloc();
  SSL_CTX_set_default_passwd_cb(context.get(), [](char*, int, int, void*) { return -1; });  // nobody could type one
  ERR_clear_error();
  if (SSL_CTX_use_certificate_chain_file(context.get(), pair.c_str()) != 1) Refuse(files.certificate);
  if (SSL_CTX_use_PrivateKey_file(context.get(), pair.c_str(), SSL_FILETYPE_PEM) != 1) Refuse(files.key);
}

}  // namespace

ServedCertificate::ServedCertificate(CertificateFiles files, std::filesystem::path copy)
    : files_(std::move(files)), copy_(std::move(copy)), seen_(Look()), tried_(seen_) {
  Copy();
}

bool ServedCertificate::Update() {
  const Stamps stamps = Look();
  const bool isSettled = stamps == std::exchange(seen_, stamps);  // the two are written one after the other
  if (!isSettled || stamps == tried_) return false;
  tried_ = stamps;
  try {
    Copy();
  } catch (const std::exception& error) {
    LogFailure(std::string(error.what()) + "; the certificate of before stays in use.");
    return false;
  }
  return true;
}

void ServedCertificate::Copy() const {
  std::string text = ReadFile(files_.certificate);
  const WipeAtEnd wipe(text);
  if (files_.key != files_.certificate) text += "\n" + ReadFile(files_.key);
  const std::filesystem::path tried = copy_.string() + ".tried";
  ReplaceFile(tried, text);
  TryPair(tried, files_);
  std::filesystem::rename(tried, copy_);
}

}  // namespace recorder
