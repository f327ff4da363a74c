#include "simcam/mdns.h"

#include <string_view>
#include <utility>

namespace simcam {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kIdSize = 2;
constexpr std::size_t kHeaderSize = 12;
constexpr std::string_view kQuestion = "\x05_rtsp\x04_tcp\x05local\0\0\x0c\0\x01"sv;  // PTR, IN
constexpr std::string_view kRestOfHeader = "\x84\0\0\x01\0\x01\0\0\0\x01"sv;          // an answer, one more record
constexpr std::string_view kTarget = "\x06simcam\x05local\0"sv;
constexpr std::string_view kClassAndTime = "\0\x01\0\0\0\x0a"sv;  // IN, ten seconds

std::string Bytes16(std::size_t number) { return {static_cast<char>(number >> 8), static_cast<char>(number)}; }

/// A name that stands at `offset` of the message already.
std::string NameAt(std::size_t offset) { return Bytes16(0xC000 + offset); }

std::string Record(const std::string& name, std::string_view type, const std::string& data) {
  return name + std::string(type) + std::string(kClassAndTime) + Bytes16(data.size()) + data;
}

}  // namespace

Mdns::Mdns(std::string name, int port)
    : name_(std::move(name)),
      port_(port),
      answers_("224.0.0.251", 5353, [this](const std::string& question) { return Answer(question); }) {}

/// Empty for any other question.
std::string Mdns::Answer(const std::string& question) const {
  if (question.size() < kHeaderSize || question.substr(kHeaderSize) != kQuestion) return {};
  std::string answer = question.substr(0, kIdSize) + std::string(kRestOfHeader) + std::string(kQuestion);
  const std::string instance = static_cast<char>(name_.size()) + name_ + NameAt(kHeaderSize);
  answer += Record(NameAt(kHeaderSize), "\0\x0c"sv, instance);
  const std::string place = Bytes16(0) + Bytes16(0) + Bytes16(static_cast<std::size_t>(port_)) + std::string(kTarget);
  return answer + Record(NameAt(answer.size() - instance.size()), "\0\x21"sv, place);
}

}  // namespace simcam
