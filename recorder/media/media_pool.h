#pragma once

#include <memory>

#include "recorder/media/media_process.h"

// Which media process does what. One works for one stream or body at a time, so that no camera's bytes meet another's
// in it. Requests with one camera use the same one again and again; a list has as many as its cameras send pictures
// side by side. Any thread.

namespace recorder {

/// One for a stream or a body alone, started if need be. Given back, it waits for the next.
std::shared_ptr<MediaProcess> BorrowMedia();

/// Starts one ahead of time, for whoever borrows first. It takes some 30 ms until it is ready; this call does not wait.
void StartMedia();

/// One for a single question, which disturbs no stream: the last that the calling thread has borrowed and still has, or
/// else another.
std::shared_ptr<MediaProcess> MediaOfThread();

/// Lets all that wait end by themselves, which takes the system some 2 ms. For a program that wants no more pictures.
void DismissMedia();

/// Ends those that wait, but for one.
void EndSpareMedia();

/// Starts one and ends it, to see that this can be done. Throws std::runtime_error when not; the log has the reason.
void RehearseMedia();

}  // namespace recorder
