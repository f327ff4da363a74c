#pragma once

#include <sys/types.h>

#include "recorder/utility/handle.h"

namespace recorder {

struct MediaChild {
  pid_t process = -1;  ///< -1: it could not be started
  FileDescriptor end;  ///< of the socket whose other end is its standard input
};

/// Starts recorder-media, which lies beside this program unless the environment variable RECORDER_MEDIA names it. It
/// gets the socket, standard error and no other descriptor, and an empty environment: that of a CGI program holds a
/// login. A failure is logged. Any thread.
MediaChild SpawnMedia();

}  // namespace recorder
