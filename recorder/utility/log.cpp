#include "recorder/utility/log.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string_view>

#include "platform/utility.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

/// Of a message in JSON. Each of its bytes may take six there.
constexpr std::size_t kLongestJsonText = (kLongestLogLine - 512) / 6;

void (*logReceiver)(const std::string& text) = nullptr;
LogFormat logFormat = LogFormat::kText;

std::mutex requestMutex;
std::string requestOfProcess;
thread_local std::string requestOfThread;

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

/// Those of syslog(3).
enum class Priority { kWarning = 4, kInfo = 6 };

/// True when standard error leads to the journal, as systemd tells by device and inode.
bool IsJournal() {
  const char* stream = std::getenv("JOURNAL_STREAM");  // NOLINT(concurrency-mt-unsafe): nobody sets variables
  struct stat status {};
  return stream != nullptr && fstat(STDERR_FILENO, &status) == 0 &&
         stream == std::to_string(status.st_dev) + ':' + std::to_string(status.st_ino);
}

std::string PriorityMark(Priority priority) {
  return IsJournal() ? '<' + std::to_string(static_cast<int>(priority)) + '>' : "";
}

std::string HeadOfText(const std::string& place) {
  const std::string request = RequestInLog::Current();
  return TimeNow() + ' ' + std::to_string(getpid()) + ' ' + (request.empty() ? "" : request + ' ') + place + ": ";
}

std::string HeadOfJson(const std::string& place) {
  const std::string request = RequestInLog::Current();
  return "{\"time\":\"" + TimeNow() + "\",\"pid\":" + std::to_string(getpid()) +
         (request.empty() ? "" : ",\"request\":" + ToText(request)) + ",\"place\":" + ToText(place);
}

std::string TextOf(const LogField& field) {
  const auto* number = std::get_if<std::int64_t>(&field.second);
  return number != nullptr ? std::to_string(*number) : ToText(EscapeControls(std::get<std::string>(field.second)));
}

/// In JSON, a text that is too long is cut before it is put between its quotation marks.
std::string JsonOf(const std::string& place, const std::vector<LogField>& fields) {
  std::string entry = HeadOfJson(place);
  for (const LogField& field : fields) entry += ",\"" + std::string(field.first) + "\":" + TextOf(field);
  return entry + "}\n";
}

void WriteEntry(const std::string& place, const std::string& categories, std::string_view message) {
  const std::string mark = PriorityMark(Priority::kWarning);
  std::string entry;
  if (logFormat == LogFormat::kJson) {
    entry = mark + JsonOf(place, {{"text", categories + std::string(message.substr(0, kLongestJsonText))}});
  } else {
    entry = mark + HeadOfText(place) + categories + EscapeControls(message);
    Finish(entry);
  }
  WriteOnce(entry);
}

}  // namespace

void LogFailure(const std::string& text, const char* file, int line, const char* function) {
  if (logReceiver != nullptr) return logReceiver(text);
  WriteEntry(Place(SourceName(file), line, function), "", text);
}

void LogNote(const std::string& place, const std::vector<LogField>& fields) {
  const std::string mark = PriorityMark(Priority::kInfo);
  if (logFormat == LogFormat::kJson) return WriteOnce(mark + JsonOf(place, fields));
  std::string entry = mark + HeadOfText(place);
  for (const LogField& field : fields) entry += std::string(field.first) + '=' + TextOf(field) + ' ';
  entry.pop_back();
  Finish(entry);
  WriteOnce(entry);
}

void SetLogFormat(LogFormat format) { logFormat = format; }

RequestInLog::RequestInLog(std::string id, Entries entries) : entries_(entries) { Set(std::move(id)); }

RequestInLog::~RequestInLog() { Set({}); }

void RequestInLog::Set(std::string id) const {
  if (entries_ == Entries::kOfThread) {
    requestOfThread = std::move(id);
  } else {
    const std::lock_guard lock(requestMutex);
    requestOfProcess = std::move(id);
  }
}

std::string RequestInLog::Current() {
  if (!requestOfThread.empty()) return requestOfThread;
  const std::lock_guard lock(requestMutex);
  return requestOfProcess;
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
