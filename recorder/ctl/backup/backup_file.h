#pragma once

#include <sodium.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "recorder/utility/handle.h"
#include "recorder/utility/secrets.h"

// The file of a backup: parts, each a name and bytes, sealed together.
//
//   16 bytes  "cameracap backup"
//    1 byte   version, 1
//    1 byte   how it is sealed: 0 by the key that follows, 1 by a key that is made of a passphrase and the salt that
//             follows (Argon2id, RFC 9106: 4 passes over 64 MiB)
//   32 bytes  the key; or 16 bytes: the salt
//   24 bytes  the header of the stream (libsodium's secretstream: XChaCha20 and Poly1305)
//   messages  4 bytes, the most significant first: how many follow; then the sealed message
//
// A part is a message with its name, and messages with its bytes, the last of which has the tag PUSH and may be empty.
// An empty message with the tag FINAL is the end of the file. A key that stands in the file hides nothing; it is there
// so that of both kinds each changed, missing or added byte shows.

namespace recorder {

/// What is wrong with the file of a backup, with a text for people that holds no secret.
class BackupError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

using FileStream = std::unique_ptr<std::FILE, Deleter<std::fclose>>;

/// Makes the file of a backup, in mode 0600. It is one when Finish() returns. One thread. All throw std::system_error
/// that names the file.
class BackupWriter {
 public:
  /// A new file; `passphrase`, if there is one, seals it.
  BackupWriter(std::filesystem::path file, const std::string& passphrase);

  /// Adds the bytes of a file. One that was removed meanwhile is left out.
  void AddPart(const std::string& name, const std::filesystem::path& source);
  /// Adds a part of these bytes.
  void AddText(const std::string& name, std::string_view bytes);
  /// Returns when all is on the disk.
  void Finish();

 private:
  void StartWithKeyInside();
  void StartBy(const std::string& passphrase);
  void Start(const SecretKey& key);
  void Write(std::string_view bytes);
  void WriteMessage(std::string_view message, unsigned char tag);

  std::filesystem::path path_;
  FileStream file_;
  crypto_secretstream_xchacha20poly1305_state stream_{};
};

/// Reads the file of a backup, part after part. One thread. All throw BackupError of what is wrong with it,
/// std::system_error that names the file when it cannot be read.
class BackupReader {
 public:
  explicit BackupReader(const std::filesystem::path& file);

  /// Bytes of the file, more than all parts have together; 0 of what is no file, such as a pipe.
  std::uint64_t Size() const { return is_regular_file(path_) ? file_size(path_) : 0; }

  bool WantsPassphrase() const { return isByPassphrase_; }
  /// Before the first part, where the file wants one. Whether it is right shows with the first part.
  void Unlock(const std::string& passphrase);

  /// The name of the next part; nothing behind the last, which is the end of the file.
  std::optional<std::string> NextPart();
  /// Puts the bytes of the part at hand, `most` of them, into a new file (mode 0600), which is on the disk then.
  void CopyPart(const std::filesystem::path& target, std::uint64_t most);

 private:
  struct Message {
    std::string bytes;
    unsigned char tag = 0;
  };
  std::string Read(std::size_t size);
  void Start(const SecretKey& key);
  Message ReadMessage();

  std::filesystem::path path_;
  FileStream file_;
  bool isByPassphrase_ = false;
  bool isBegun_ = false;
  std::string salt_;
  crypto_secretstream_xchacha20poly1305_state stream_{};
};

}  // namespace recorder
