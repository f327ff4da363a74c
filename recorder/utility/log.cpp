#include "recorder/utility/log.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <string_view>

#include "platform/utility.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

void (*logReceiver)(const std::string& text) = nullptr;

std::string TimeNow() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm utc{};
  gmtime_r(&now.tv_sec, &utc);
  std::array<char, 64> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &utc);
  std::snprintf(text.data() + length, text.size() - length, ".%03ldZ", now.tv_nsec / 1'000'000);
  return text.data();
}

/// Cuts `line` to what one write holds, between two characters of UTF-8, and ends it.
void Finish(std::string& line) {
  constexpr std::string_view kCut = "...";
  if (line.size() >= kLongestLogLine) {
    std::size_t end = kLongestLogLine - kCut.size() - 1;
    while (end > 0 && (static_cast<unsigned char>(line[end]) & 0xc0U) == 0x80U) --end;
    line.resize(end);
    line += kCut;
  }
  line += '\n';
}

void WriteOnce(const std::string& line) {
  while (write(STDERR_FILENO, line.data(), line.size()) < 0 && errno == EINTR) {
  }
}

/// The path from the recorder's own folder on, without its extension: "recorder/records/records".
std::string SourceName(std::string_view file) {
  const std::size_t start = file.rfind("recorder/");
  if (start != std::string_view::npos) file.remove_prefix(start);
  return std::string(file.substr(0, file.rfind('.')));
}

/// Where an entry comes from: "recorder/records/records:12 Open".
std::string Place(const std::string& file, int line, const char* function) {
  return file + ':' + std::to_string(line) + ' ' + function;
}

void WriteEntry(const std::string& place, const std::string& categories, std::string_view message) {
  std::string entry =
      TimeNow() + ' ' + std::to_string(getpid()) + ' ' + place + ": " + categories + EscapeControls(message);
  Finish(entry);
  WriteOnce(entry);
}

}  // namespace

void LogFailure(const std::string& text, const char* file, int line, const char* function) {
  if (logReceiver != nullptr) return logReceiver(text);
  WriteEntry(Place(SourceName(file), line, function), "", text);
}

void SendLogTo(void (*receiver)(const std::string& text)) { logReceiver = receiver; }

}  // namespace recorder

void VTPrintf(LOG_TYPE /*type*/, const char* category1, const char* category2, const char* file, int line,
              const char* function, const char* format, ...) {
  const int savedErrno = errno;
  std::array<char, recorder::kLongestLogLine> text{};
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  std::string_view message = text.data();
  if (message.ends_with('\n')) message.remove_suffix(1);

  std::string categories;
  for (const char* category : {category1, category2}) {
    if (category != nullptr) categories += '[' + recorder::EscapeControls(category) + "] ";
  }
  recorder::WriteEntry(recorder::Place(file, line, function), categories, message);
  errno = savedErrno;
}
