#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

#include "recorder/utility/handle.h"

// Locks of bytes of a file, which belong to the open file, not to the process, and end with it (fcntl(2), "open file
// description locks").

namespace recorder {

/// Opens a file for locks. It is made when it lacks, stays empty and need never be removed. Holds nothing, with errno,
/// when it cannot be opened. Any thread.
FileDescriptor OpenLocks(const std::filesystem::path& path);

/// The byte of a file of locks that belongs to `text`, in all processes of this recorder. Others may have the same one.
/// Any thread.
off_t LockByteOf(const std::string& text);

/// Locks `length` bytes from `start`, 0 for all of them: F_RDLCK for any number at a time, F_WRLCK for one alone.
/// False, with errno, when others have locks that exclude this one. Any thread.
bool TryLock(const FileDescriptor& file, short type, off_t start = 0, off_t length = 0);

/// True after a TryLock that failed, when somebody else has the lock. The same thread.
bool IsHeldByAnother();

/// True when somebody has a lock of the file, whose own locks this does not see. Any thread.
bool IsLocked(const FileDescriptor& file);

}  // namespace recorder
