#include "recorder/ctl/serve/served_certificate.h"

#include <chrono>
#include <exception>
#include <string>
#include <utility>

#include "recorder/ctl/time_text.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/log.h"
#include "recorder/utility/secrets.h"

namespace recorder {

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
  end_ = TryCertificate({tried, tried}, files_);
  isWarned_ = false;
  std::filesystem::rename(tried, copy_);
}

}  // namespace recorder
