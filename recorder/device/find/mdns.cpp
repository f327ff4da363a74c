#include "recorder/device/find/mdns.h"

#include <arpa/nameser.h>

#include <algorithm>
#include <array>
#include <vector>

#include "recorder/device/asked/shown_text.h"
#include "recorder/utility/text.h"

namespace recorder::find {
namespace {

constexpr std::string_view kServices[] = {"_rtsp._tcp.local", "_axis-video._tcp.local"};

/// What the maker of a service's cameras is, where the service is his own, and what its TXT record calls the serial
/// number.
constexpr std::string_view kAxisService = kServices[1];
constexpr char kAxis[] = "Axis";
constexpr std::string_view kAxisSerial = "macaddress";

using Name = std::array<unsigned char, NS_MAXCDNAME + 1>;  // labels, each behind its length

void Append16(std::string& bytes, unsigned int number) {
  bytes += static_cast<char>(number >> 8);
  bytes += static_cast<char>(number);
}

/// Labels of a name, as they are.
std::vector<std::string_view> LabelsOf(const Name& name) {
  std::vector<std::string_view> labels;
  for (std::size_t at = 0; name[at] != 0; at += 1U + name[at]) {
    labels.emplace_back(reinterpret_cast<const char*>(&name[at + 1]), name[at]);
  }
  return labels;
}

bool Names(const std::vector<std::string_view>& labels, std::string_view service) {
  const auto wanted = Split(service, '.');
  return std::ranges::equal(labels, wanted, &EqualsIgnoreCase);
}

/// One answer, record by record. The system's own reader judges sizes and follows compressed names.
class Answer {
 public:
  /// An object that is no answer to `id` has no records.
  Answer(std::string_view datagram, std::uint16_t id) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(datagram.data());
    isUsable_ = ns_initparse(bytes, static_cast<int>(datagram.size()), &message_) == 0 && ns_msg_id(message_) == id &&
                ns_msg_getflag(message_, ns_f_qr) == 1;
  }

  /// Calls `take` with each record of `type`.
  template <class Take>
  void Each(ns_type type, const Take& take) {
    for (const ns_sect section : {ns_s_an, ns_s_ar}) {
      for (int i = 0; isUsable_ && i < ns_msg_count(message_, section); ++i) {
        ns_rr record;
        if (ns_parserr(&message_, section, i, &record) == 0 && ns_rr_type(record) == type) take(record);
      }
    }
  }

  /// The name in a record's data, from its byte `offset` on; nothing when it is none.
  std::optional<Name> NameIn(const ns_rr& record, std::size_t offset) const {
    Name name{};
    if (ns_rr_rdlen(record) <= offset) return std::nullopt;
    const int size = ns_name_unpack(ns_msg_base(message_), ns_msg_end(message_), ns_rr_rdata(record) + offset,
                                    name.data(), name.size());
    return size < 0 ? std::nullopt : std::optional(name);
  }

 private:
  ns_msg message_{};
  bool isUsable_ = false;
};

/// The service that a PTR record is about, if it was asked for.
const std::string_view* ServiceOf(const ns_rr& record) {
  const auto* service =
      std::ranges::find_if(kServices, [&](std::string_view one) { return EqualsIgnoreCase(one, ns_rr_name(record)); });
  return service == std::end(kServices) ? nullptr : service;
}

/// What stands behind "key=" in the texts of a TXT record (RFC 6763 section 6).
std::string TextBehind(const ns_rr& record, std::string_view key) {
  std::string_view rest(reinterpret_cast<const char*>(ns_rr_rdata(record)), ns_rr_rdlen(record));
  while (!rest.empty()) {
    const auto size = static_cast<unsigned char>(rest.front());
    std::string_view value = rest.substr(1, size);
    rest.remove_prefix(std::min<std::size_t>(rest.size(), 1U + size));
    const std::string_view name = TakeUntil(value, '=');
    if (EqualsIgnoreCase(name, key)) return Shown(value);
  }
  return "";
}

void TakeInstance(const Answer& answer, const ns_rr& record, HeardDevice& device) {
  const std::string_view* service = ServiceOf(record);
  const std::optional<Name> instance = service == nullptr ? std::nullopt : answer.NameIn(record, 0);
  if (!instance) return;
  const auto labels = LabelsOf(*instance);
  const bool isInstance = labels.size() > 1 && Names({labels.begin() + 1, labels.end()}, *service);
  if (!isInstance) return;
  if (device.name.empty()) device.name = Shown(labels.front());
  if (*service == kAxisService) device.maker = kAxis;
}

}  // namespace

std::span<const std::string_view> MdnsServices() { return kServices; }

std::string MdnsQuestion(std::uint16_t id, std::string_view service) {
  constexpr unsigned int kCounts[] = {0, 1, 0, 0, 0};  // no flags; one question, and no records
  std::string question;
  Append16(question, id);
  for (const unsigned int number : kCounts) Append16(question, number);
  for (const std::string_view label : Split(service, '.')) {
    question += static_cast<char>(label.size());
    question += label;
  }
  question += '\0';
  Append16(question, ns_t_ptr);
  Append16(question, ns_c_in);
  return question;
}

std::optional<HeardDevice> ReadMdnsAnswer(std::string_view datagram, std::uint16_t id, const std::string& sender) {
  constexpr std::size_t kPortAt = 4;  // in the data of SRV (RFC 2782)
  Answer answer(datagram, id);
  HeardDevice device{.by = HeardBy::kMdns, .address = sender};
  answer.Each(ns_t_ptr, [&](const ns_rr& record) { TakeInstance(answer, record, device); });
  if (device.name.empty()) return std::nullopt;
  answer.Each(ns_t_srv, [&](const ns_rr& record) {
    if (ns_rr_rdlen(record) > kPortAt + 1)
      device.port = static_cast<std::uint16_t>(ns_get16(ns_rr_rdata(record) + kPortAt));
  });
  answer.Each(ns_t_txt, [&](const ns_rr& record) {
    if (device.maker == kAxis && device.serial.empty()) device.serial = TextBehind(record, kAxisSerial);
  });
  return device;
}

}  // namespace recorder::find
