#include "recorder/ctl/serve/served_certificate.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <chrono>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "recorder/ctl/time_text.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/handle.h"
#include "recorder/utility/log.h"
#include "recorder/utility/secrets.h"

namespace recorder {

namespace {

[[noreturn]] void Refuse(const std::filesystem::path& file) {
  const char* reason = ERR_reason_error_string(ERR_peek_last_error());
  throw std::runtime_error(file.string() + " cannot be used: " + (reason == nullptr ? "unknown" : reason));
}

/// Seconds since 1970.
std::int64_t EndOf(const X509& certificate) {
  int days = 0;
  int seconds = 0;
  ASN1_TIME_diff(&days, &seconds, nullptr, X509_get0_notAfter(&certificate));
  return SecondsNow() + std::chrono::seconds(std::chrono::days(days)).count() + seconds;
}

/// Reads `pair` as the web server does, and gives its end. What is wrong with it is told of the files that it was made
/// of.
std::int64_t TryPair(const std::filesystem::path& pair, const CertificateFiles& files) {
  const std::unique_ptr<SSL_CTX, Deleter<SSL_CTX_free>> context(SSL_CTX_new(TLS_server_method()));
  if (!context) throw std::bad_alloc();
  SSL_CTX_set_default_passwd_cb(context.get(), [](char*, int, int, void*) { return -1; });  // nobody could type one
  ERR_clear_error();
  if (SSL_CTX_use_certificate_chain_file(context.get(), pair.c_str()) != 1) Refuse(files.certificate);
  if (SSL_CTX_use_PrivateKey_file(context.get(), pair.c_str(), SSL_FILETYPE_PEM) != 1) Refuse(files.key);
  return EndOf(*SSL_CTX_get0_certificate(context.get()));
}

}  // namespace

ServedCertificate::ServedCertificate(CertificateFiles files, std::filesystem::path copy)
    : files_(std::move(files)), copy_(std::move(copy)), seen_(Look()), tried_(seen_) {
  Copy();
}

bool ServedCertificate::Update() {
  WarnOfEnd();
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

/// Once for each certificate.
void ServedCertificate::WarnOfEnd() {
  constexpr std::int64_t kBefore = std::chrono::seconds(std::chrono::days(30)).count();
  if (isWarned_ || SecondsNow() < end_ - kBefore) return;
  isWarned_ = true;
  LogFailure("The certificate in " + files_.certificate.string() + " ends on " + TimeText(end_) +
             " (UTC). A new one is taken without a restart as soon as it is there.");
}

void ServedCertificate::Copy() {
  std::string text = ReadFile(files_.certificate);
  const WipeAtEnd wipe(text);
  if (files_.key != files_.certificate) text += "\n" + ReadFile(files_.key);
  const std::filesystem::path tried = copy_.string() + ".tried";
  ReplaceFile(tried, text);
  end_ = TryPair(tried, files_);
  isWarned_ = false;
  std::filesystem::rename(tried, copy_);
}

}  // namespace recorder
