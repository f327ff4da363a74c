#include "recorder/decode/serve.h"

#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "recorder/media/media_channel.h"
#include "recorder/utility/bytes.h"
#include "recorder/utility/log.h"

namespace recorder {
namespace {

/// What was logged since the last answer, as far as an answer has room for it.
std::string& Notes() {
  static std::string notes;
  return notes;
}

void KeepNote(const std::string& text) {
  if (Notes().size() + text.size() < kLargestNotes) Notes().append(text).append("\n");
}

bool Send(MediaChannel& worker, const Reply& reply, const std::string& packets) {
  const std::string notes = std::exchange(Notes(), {});
  const MediaAnswerHead head{reply.status,
                             reply.first,
                             reply.second,
                             static_cast<std::uint32_t>(notes.size()),
                             static_cast<std::uint32_t>(packets.size()),
                             static_cast<std::uint32_t>(reply.picture.size())};
  return worker.Send({BytesOf(head), AsBytes(notes), AsBytes(packets), reply.picture});
}

std::optional<Reply> AnswerInBounds(const Handler& handle, const MediaRequestHead& head,
                                    const std::vector<std::uint8_t>& bytes) {
  try {
    return handle(head, bytes);
  } catch (const std::bad_alloc&) {
    return Reply{MediaStatus::kNoMemory};
  }
}

/// What is free goes back to the system when there is no work: the next picture would have to ask for it again.
void GiveMemoryBack(const MediaChannel& worker) {
  constexpr std::chrono::seconds kPatience{1};
  if (!worker.Wait(Clock::now() + kPatience)) malloc_trim(0);
}

}  // namespace

void ServeMedia(std::uint32_t missing, Answerer& answerer, const Handler& handle) {
  SendLogTo(KeepNote);
  MediaChannel worker{FileDescriptor(STDIN_FILENO)};
  MediaRequestHead head{};
  bool isOpen = Send(worker, {MediaStatus::kDone, missing}, {});
  while (isOpen && worker.Receive(WritableBytesOf(head))) {
    std::vector<std::uint8_t> bytes(head.size);
    isOpen = worker.Receive(bytes);
    const auto reply = isOpen ? AnswerInBounds(handle, head, bytes) : std::nullopt;
    if (reply) isOpen = Send(worker, *reply, answerer.TakePackets());
    if (head.request == MediaRequest::kClose) GiveMemoryBack(worker);
  }
}

}  // namespace recorder
