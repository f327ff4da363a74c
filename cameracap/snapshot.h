#pragma once

#include <cstdlib>
#include <string>

#include "platform/device.h"

/// A picture and the slot that a library leaves it in: malloc memory, freed with this object.
struct Picture {
  Picture() = default;
  ~Picture() { Reset(); }
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;

  /// True when there is nothing to send: no block, or none of its bytes.
  bool IsEmpty() const { return bytes == nullptr || size <= 0; }
  /// Frees the block.
  void Reset() {
    size = 0;
    std::free(bytes);
    bytes = nullptr;
  }

  unsigned char* bytes = nullptr;
  int size = 0;  ///< in bytes
};

/// Takes one JPEG picture of the camera whose device API is loaded in `api`: from its stream or through its snapshot
/// interface, as the device API says; never one after the other. `setting` is one of the model's snapshot settings or
/// "". On success returns 0 and sets `*jpeg`, malloc memory that the caller frees, and `*jpegSize`. On failure returns
/// -1 or the library's code; the slots hold what the library left. One thread, one camera at a time.
int GetSnapshot(const std::string& host, int port, const std::string& user, const std::string& password,
                DeviceAPIHandler& api, const std::string& setting, unsigned char** jpeg, int* jpegSize,
                const std::string& videoTypeName, int camId);
