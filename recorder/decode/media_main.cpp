// recorder-media: parses what cameras send as video and pictures, for one worker that starts it with a socket as its
// standard input. It can reach nothing else: see sandbox.h.

#include <unistd.h>

#include "recorder/decode/answerer.h"
#include "recorder/decode/rehearsal.h"
#include "recorder/decode/sandbox.h"
#include "recorder/decode/serve.h"

int main() {
  recorder::RehearseDecoding();
  recorder::Answerer answerer;
  recorder::ServeMedia(recorder::EnterSandbox(), answerer,
                       [&answerer](const recorder::MediaRequestHead& head, std::span<const std::uint8_t> bytes) {
                         return answerer.Answer(head, bytes);
                       });
  _exit(0);  // what runs at the end of a program may need what is forbidden
}
