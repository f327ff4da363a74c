#include "recorder/http/use_notes.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <system_error>

namespace recorder {

namespace {

constexpr std::size_t kLongestId = 64;

std::optional<sockaddr_un> AddressOf(const std::string& file) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (file.size() >= sizeof(address.sun_path)) return std::nullopt;
  std::memcpy(address.sun_path, file.c_str(), file.size() + 1);
  return address;
}

FileDescriptor DatagramSocket() { return FileDescriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)); }

}  // namespace

UseNotes::UseNotes(const std::filesystem::path& socketFile) : socket_(DatagramSocket()) {
  unlink(socketFile.c_str());
  const auto address = AddressOf(socketFile);
  if (!address || bind(socket_.Get(), reinterpret_cast<const sockaddr*>(&*address), sizeof(*address)) != 0) {
    throw std::system_error(address ? errno : ENAMETOOLONG, std::generic_category(), socketFile.string());
  }
}

std::string UseNotes::Next() const {
  std::array<char, kLongestId> text{};
  const ssize_t size = recv(socket_.Get(), text.data(), text.size(), 0);
  return {text.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

void SendUseNote(const std::string& id) {
  const char* file = std::getenv(kUseSocketVariable);
  const auto address = AddressOf(file == nullptr ? "" : file);
  if (file == nullptr || !address) return;
  const FileDescriptor socket = DatagramSocket();
  sendto(socket.Get(), id.data(), id.size(), MSG_DONTWAIT, reinterpret_cast<const sockaddr*>(&*address),
         sizeof(*address));
}

}  // namespace recorder
