#pragma once

#include <string>

#include "recorder/device/find/find.h"

namespace recorder {

/// What a camera's record says so that the recorder shows a stream which was found.
struct StoredAs {
  std::string vendor;
  std::string model;
  int port = 0;
  std::string channel;
  std::string sourcePath;
};

/// How to store `stream` of `result`, which was found at `host`: the main stream as a camera that is asked over ONVIF,
/// where that named it, or by the model file that knows it; any other by its path. Pure.
StoredAs StoreAs(const std::string& host, const FindResult& result, const ListedStream& stream);

}  // namespace recorder
