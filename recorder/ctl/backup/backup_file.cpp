#include "recorder/ctl/backup/backup_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "recorder/utility/limits.h"

namespace recorder {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view kMagic = "cameracap backup";
constexpr unsigned char kVersion = 1;
constexpr char kKeyInside = 0;
constexpr char kByPassphrase = 1;
constexpr unsigned long long kPasses = 4;
constexpr std::size_t kMemory = 64 * kMiB;
constexpr std::size_t kLargestMessage = 64 * kKiB;  // before it is sealed
constexpr std::size_t kSealBytes = crypto_secretstream_xchacha20poly1305_ABYTES;
constexpr std::size_t kSizeBytes = 4;
constexpr unsigned char kPart = crypto_secretstream_xchacha20poly1305_TAG_MESSAGE;
constexpr unsigned char kEndOfPart = crypto_secretstream_xchacha20poly1305_TAG_PUSH;
constexpr unsigned char kEndOfFile = crypto_secretstream_xchacha20poly1305_TAG_FINAL;

const unsigned char* Unsigned(std::string_view text) { return reinterpret_cast<const unsigned char*>(text.data()); }
unsigned char* Unsigned(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

[[noreturn]] void Throw(const fs::path& path) {
  throw std::system_error(errno, std::generic_category(), path.string());
}

/// Null when a file to be read is not there.
FileStream Open(const fs::path& path, int flags, const char* mode) {
  FileDescriptor descriptor{open(path.c_str(), flags | O_CLOEXEC, 0600)};
  if (!descriptor && errno == ENOENT && (flags & O_CREAT) == 0) return nullptr;
  FileStream stream{descriptor ? fdopen(descriptor.Get(), mode) : nullptr};
  if (!stream) Throw(path);
  descriptor.Release();  // the stream has it
  return stream;
}

FileStream MakeFile(const fs::path& path) { return Open(path, O_WRONLY | O_CREAT | O_EXCL, "wb"); }

void WriteTo(std::FILE* file, const fs::path& path, std::string_view bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) Throw(path);
}

void SyncFile(std::FILE* file, const fs::path& path) {
  if (std::fflush(file) != 0 || fsync(fileno(file)) != 0) Throw(path);
}

/// Fewer than `size` bytes at the end of the file alone.
std::string ReadFrom(std::FILE* file, const fs::path& path, std::size_t size) {
  std::string bytes(size, '\0');
  bytes.resize(std::fread(bytes.data(), 1, size, file));
  if (std::ferror(file) != 0) Throw(path);
  return bytes;
}

std::string SizeText(std::size_t size) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(size >> shift & 0xFF);
  return text;
}

std::size_t SizeOf(std::string_view text) {
  std::size_t size = 0;
  for (const char c : text) size = size << 8 | static_cast<unsigned char>(c);
  return size;
}

SecretKey KeyOf(const std::string& passphrase, const std::string& salt) {
  std::string bytes(SecretKey::kSize, '\0');
  const WipeAtEnd wipe{bytes};
  if (crypto_pwhash(Unsigned(bytes), bytes.size(), passphrase.data(), passphrase.size(), Unsigned(salt), kPasses,
                    kMemory, crypto_pwhash_ALG_ARGON2ID13) != 0) {
    throw std::runtime_error("there is no memory for the passphrase: it takes 64 MiB");
  }
  return *SecretKey::FromBytes(bytes);
}

}  // namespace

BackupWriter::BackupWriter(fs::path file, const std::string& passphrase)
    : path_(std::move(file)), file_(MakeFile(path_)) {
  PrepareSodium();
  Write(kMagic);
  Write({reinterpret_cast<const char*>(&kVersion), 1});
  if (passphrase.empty()) {
    StartWithKeyInside();
  } else {
    StartBy(passphrase);
  }
}

void BackupWriter::StartWithKeyInside() {
  const SecretKey key = SecretKey::Random();
  Write(std::string(1, kKeyInside) + key.Bytes());
  Start(key);
}

void BackupWriter::StartBy(const std::string& passphrase) {
  std::string salt(crypto_pwhash_SALTBYTES, '\0');
  randombytes_buf(salt.data(), salt.size());
  Write(std::string(1, kByPassphrase) + salt);
  Start(KeyOf(passphrase, salt));
}

void BackupWriter::Start(const SecretKey& key) {
  std::string header(crypto_secretstream_xchacha20poly1305_HEADERBYTES, '\0');
  crypto_secretstream_xchacha20poly1305_init_push(&stream_, Unsigned(header), key.Data());
  Write(header);
}

void BackupWriter::Write(std::string_view bytes) { WriteTo(file_.get(), path_, bytes); }

void BackupWriter::WriteMessage(std::string_view message, unsigned char tag) {
  std::string sealed(message.size() + kSealBytes, '\0');
  crypto_secretstream_xchacha20poly1305_push(&stream_, Unsigned(sealed), nullptr, Unsigned(message), message.size(),
                                             nullptr, 0, tag);
  Write(SizeText(sealed.size()));
  Write(sealed);
}

void BackupWriter::AddPart(const std::string& name, const fs::path& source) {
  const FileStream input = Open(source, O_RDONLY, "rb");
  if (!input) return;
  std::setvbuf(input.get(), nullptr, _IONBF, 0);  // which would keep what may be a key
  WriteMessage(name, kPart);
  for (bool isLast = false; !isLast;) {
    std::string bytes = ReadFrom(input.get(), source, kLargestMessage);
    const WipeAtEnd wipe{bytes};
    isLast = bytes.size() < kLargestMessage;
    WriteMessage(bytes, isLast ? kEndOfPart : kPart);
  }
}

void BackupWriter::AddText(const std::string& name, std::string_view bytes) {
  WriteMessage(name, kPart);
  for (; bytes.size() >= kLargestMessage; bytes.remove_prefix(kLargestMessage)) {
    WriteMessage(bytes.substr(0, kLargestMessage), kPart);
  }
  WriteMessage(bytes, kEndOfPart);
}

void BackupWriter::Finish() {
  WriteMessage("", kEndOfFile);
  SyncFile(file_.get(), path_);
}

BackupReader::BackupReader(const fs::path& file) : path_(file), file_(Open(file, O_RDONLY, "rb")) {
  PrepareSodium();
  if (!file_) Throw(file);
  if (ReadFrom(file_.get(), path_, kMagic.size()) != kMagic) throw BackupError(file.string() + ": is no backup");
  const std::string kind = Read(2);
  if (static_cast<unsigned char>(kind[0]) != kVersion || static_cast<unsigned char>(kind[1]) > kByPassphrase) {
    throw BackupError(file.string() + ": was made by a newer version of this program; use that one");
  }
  isByPassphrase_ = kind[1] == kByPassphrase;
  if (isByPassphrase_) {
    salt_ = Read(crypto_pwhash_SALTBYTES);
  } else {
    std::string key = Read(SecretKey::kSize);
    const WipeAtEnd wipe{key};
    Start(*SecretKey::FromBytes(key));
  }
}

void BackupReader::Unlock(const std::string& passphrase) { Start(KeyOf(passphrase, salt_)); }

void BackupReader::Start(const SecretKey& key) {
  const std::string header = Read(crypto_secretstream_xchacha20poly1305_HEADERBYTES);
  crypto_secretstream_xchacha20poly1305_init_pull(&stream_, Unsigned(header), key.Data());
}

std::string BackupReader::Read(std::size_t size) {
  std::string bytes = ReadFrom(file_.get(), path_, size);
  if (bytes.size() < size) throw BackupError(path_.string() + ": was cut off");
  return bytes;
}

BackupReader::Message BackupReader::ReadMessage() {
  const std::string damaged = path_.string() + ": is damaged";
  const std::size_t size = SizeOf(Read(kSizeBytes));
  if (size < kSealBytes || size > kLargestMessage + kSealBytes) throw BackupError(damaged);
  const std::string sealed = Read(size);
  Message message{std::string(size - kSealBytes, '\0')};
  if (crypto_secretstream_xchacha20poly1305_pull(&stream_, Unsigned(message.bytes), nullptr, &message.tag,
                                                 Unsigned(sealed), sealed.size(), nullptr, 0) != 0) {
    throw BackupError(isBegun_ || !isByPassphrase_ ? damaged : path_.string() + ": the passphrase is another one");
  }
  isBegun_ = true;
  return message;
}

std::optional<std::string> BackupReader::NextPart() {
  Message message = ReadMessage();
  if (message.tag != kEndOfFile) return std::move(message.bytes);
  if (std::fgetc(file_.get()) != EOF) throw BackupError(path_.string() + ": is damaged: something follows its end");
  return std::nullopt;
}

void BackupReader::CopyPart(const fs::path& target, std::uint64_t most) {
  const FileStream file = MakeFile(target);
  std::setvbuf(file.get(), nullptr, _IONBF, 0);  // which would keep what may be a key
  for (Message message; message.tag != kEndOfPart;) {
    message = ReadMessage();
    const WipeAtEnd wipe{message.bytes};
    if (message.tag == kEndOfFile) throw BackupError(path_.string() + ": is damaged: a part has no end");
    if (message.bytes.size() > most) throw BackupError(path_.string() + ": holds a part that is too large");
    most -= message.bytes.size();
    WriteTo(file.get(), target, message.bytes);
  }
  SyncFile(file.get(), target);
}

}  // namespace recorder
