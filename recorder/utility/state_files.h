#pragma once

#include <string_view>

// All that the recorder has in its state folder, by name. A new one belongs into kStateFiles, since what is not there
// stays where it is when a backup is restored; and, if it is to be restored, into the parts of a backup.

namespace recorder {

inline constexpr char kRecordsFile[] = "recorder.db";          ///< cameras, and what others may; a database of SQLite
inline constexpr char kRunsFile[] = "runs.db";                 ///< runs of tests, with their passwords; the same
inline constexpr char kKeyFile[] = "secret.key";               ///< for all that is sealed in both
inline constexpr char kUsersFile[] = "users";                  ///< with hashes of their passwords
inline constexpr char kGrantsFile[] = "access";                ///< sessions, tokens and links
inline constexpr char kCertificateFile[] = "certificate.pem";  ///< the recorder's own, and its key
inline constexpr char kCertificateKeyFile[] = "certificate-key.pem";
inline constexpr char kModelsFolder[] = "models";              ///< of the user's own
inline constexpr char kCapabilitiesFolder[] = "capabilities";  ///< what cameras said of themselves
inline constexpr char kAttemptsFile[] = "watch.attempts";      ///< which checks of cameras were begun
inline constexpr char kAddressFile[] = "address";              ///< where the service that runs is asked
inline constexpr char kServiceLock[] = "service.lock";         ///< held by whoever runs the service or restores
inline constexpr char kWatchLock[] = "watch.lock";             ///< held by whoever checks cameras
inline constexpr char kEventsLock[] = "events.lock";           ///< of workers that tell events
inline constexpr char kLoginsLock[] = "logins.lock";           ///< of who logs in to a camera for a picture
inline constexpr char kContactsLock[] = "contacts.lock";       ///< of who contacts a stored camera
inline constexpr char kCamerasLock[] = "cameras.lock";         ///< of who asks a camera what it can do

/// What a restore exchanges: all but the lock that it holds itself.
inline constexpr std::string_view kStateFiles[] = {
    kRecordsFile,  kRunsFile,           kKeyFile,      kUsersFile,   kGrantsFile, kCertificateFile, kCertificateKeyFile,
    kModelsFolder, kCapabilitiesFolder, kAttemptsFile, kAddressFile, kWatchLock,  kEventsLock,      kLoginsLock,
    kContactsLock, kCamerasLock,
};

}  // namespace recorder
