#include "recorder/ctl/certificate_command.h"

#include <cstdint>
#include <iostream>

#include "recorder/ctl/certificate_files.h"
#include "recorder/ctl/own_addresses.h"
#include "recorder/ctl/self_signed.h"
#include "recorder/ctl/state_folder.h"
#include "recorder/ctl/time_text.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/secrets.h"

namespace recorder {

namespace {

constexpr int kDays = 825;                                                 // some clients take no longer time
constexpr std::int64_t kSeconds = std::int64_t{kDays - 1} * 24 * 60 * 60;  // from now on: it began yesterday

/// By which a request may come to this machine: see CheckSameSite().
std::vector<std::string> ServedNames(const Config& config) {
  std::vector<std::string> names = config.hostNames;
  names.emplace_back("localhost");
  const std::vector<std::string> addresses = OwnAddresses();
  names.insert(names.end(), addresses.begin(), addresses.end());
  return names;
}

void Make(const std::string& configOption) {
  const std::filesystem::path stateFolder = StateFolder(configOption);
  const std::vector<std::string> names = ServedNames(LoadConfig(FindConfigFile(configOption)));
  SelfSigned made = MakeSelfSigned(names, kDays);
  const WipeAtEnd wipe(made.key);
  const CertificateFiles files = OwnCertificate(stateFolder);
  ReplaceFile(files.key, made.key);
  ReplaceFile(files.certificate, made.certificate);
  std::cout << "made " << files.certificate.string() << ", good until " << TimeText(SecondsNow() + kSeconds)
            << " UTC, for:";
  for (const std::string& name : names) std::cout << " " << name;
  std::cout << "\nSHA-256 fingerprint: " << made.fingerprint << "\n";
}

}  // namespace

void AddCertificateCommands(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand("certificate", "Manage the certificate of the recorder's own");
  command->require_subcommand(1);
  CLI::App* make = command->add_subcommand(
      "make",
      "Make a key and a certificate that signs itself, in the state folder, for the names of \"hostNames\" in the "
      "configuration and the addresses of this machine. \"serve --listen\" finds it there, and takes a new one while "
      "it "
      "runs. Browsers warn until somebody compares the fingerprint and lets them trust it");
  make->footer("Example:\n  recorderctl certificate make && recorderctl serve --listen 192.0.2.7:8443");
  make->callback([&configOption] { Make(configOption); });
}

}  // namespace recorder
