#include "recorder/ctl/self_signed.h"

#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <memory>
#include <stdexcept>

#include "recorder/utility/handle.h"
#include "recorder/utility/secrets.h"

namespace recorder {

namespace {

using Key = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Deleter<X509_free>>;
using Extension = std::unique_ptr<X509_EXTENSION, Deleter<X509_EXTENSION_free>>;
using GeneralName = std::unique_ptr<GENERAL_NAME, Deleter<GENERAL_NAME_free>>;
using GeneralNames = std::unique_ptr<GENERAL_NAMES, Deleter<GENERAL_NAMES_free>>;
using Memory = std::unique_ptr<BIO, Deleter<BIO_free>>;

constexpr long kSecondsOfADay = 24L * 60 * 60;

void Demand(bool isDone) {
  if (!isDone) throw std::runtime_error("OpenSSL made no certificate");
}

std::uint64_t RandomSerial() {
  std::uint64_t serial = 0;
  Demand(RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof(serial)) == 1);
  return serial;
}

/// The subject, which is the issuer too, has a number in it: two of the same name would be taken for each other.
void Name(X509& certificate, std::uint64_t serial) {
  const std::string text = "recorder " + std::to_string(serial);
  X509_NAME* name = X509_get_subject_name(&certificate);
  Demand(ASN1_INTEGER_set_uint64(X509_get_serialNumber(&certificate), serial) == 1);
  Demand(X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>(text.c_str()), -1,
                                    -1, 0) == 1);
  Demand(X509_set_issuer_name(&certificate, name) == 1);
}

void AddExtension(X509& certificate, int kind, const char* value) {
  const Extension extension(X509V3_EXT_conf_nid(nullptr, nullptr, kind, value));
  Demand(extension != nullptr && X509_add_ext(&certificate, extension.get(), -1) == 1);
}

GeneralName AlternativeName(const std::string& text) {
  GeneralName name(GENERAL_NAME_new());
  Demand(name != nullptr);
  if (ASN1_OCTET_STRING* address = a2i_IPADDRESS(text.c_str())) {
    GENERAL_NAME_set0_value(name.get(), GEN_IPADD, address);
    return name;
  }
  ASN1_IA5STRING* host = ASN1_IA5STRING_new();
  Demand(host != nullptr);
  GENERAL_NAME_set0_value(name.get(), GEN_DNS, host);
  Demand(ASN1_STRING_set(host, text.data(), static_cast<int>(text.size())) == 1);
  return name;
}

void AddNames(X509& certificate, const std::vector<std::string>& names) {
  const GeneralNames all(GENERAL_NAMES_new());
  for (const std::string& text : names) {
    Demand(sk_GENERAL_NAME_push(all.get(), AlternativeName(text).release()) > 0);
  }
  Demand(X509_add1_ext_i2d(&certificate, NID_subject_alt_name, all.get(), 0, X509V3_ADD_DEFAULT) == 1);
}

Certificate Signed(EVP_PKEY& key, const std::vector<std::string>& names, int days) {
  Certificate certificate(X509_new());
  Demand(certificate != nullptr && X509_set_version(certificate.get(), X509_VERSION_3) == 1);
  Name(*certificate, RandomSerial());
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -kSecondsOfADay);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), (days - 1) * kSecondsOfADay);
  AddNames(*certificate, names);
  AddExtension(*certificate, NID_basic_constraints, "critical,CA:FALSE");
  AddExtension(*certificate, NID_ext_key_usage, "serverAuth");
  Demand(X509_set_pubkey(certificate.get(), &key) == 1);
  Demand(X509_sign(certificate.get(), &key, EVP_sha256()) > 0);
  return certificate;
}

std::string TextOf(BIO* memory) {
  char* bytes = nullptr;
  const long size = BIO_get_mem_data(memory, &bytes);
  return {bytes, static_cast<std::size_t>(size)};
}

std::string Fingerprint(const X509& certificate) {
  std::array<unsigned char, 32> digest{};
  Demand(X509_digest(&certificate, EVP_sha256(), digest.data(), nullptr) == 1);
  std::string text = HexText(digest);
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char letter) { return std::toupper(letter); });
  for (std::size_t at = 2; at < text.size(); at += 3) text.insert(at, ":");
  return text;
}

}  // namespace

SelfSigned MakeSelfSigned(const std::vector<std::string>& names, int days) {
  const Key key(EVP_EC_gen("P-256"));
  Demand(key != nullptr);
  const Certificate certificate = Signed(*key, names, days);
  const Memory certificateText(BIO_new(BIO_s_mem()));
  const Memory keyText(BIO_new(BIO_s_secmem()));
  Demand(PEM_write_bio_X509(certificateText.get(), certificate.get()) == 1);
  Demand(PEM_write_bio_PrivateKey(keyText.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1);
  return {TextOf(certificateText.get()), TextOf(keyText.get()), Fingerprint(*certificate)};
}

}  // namespace recorder
