#include "recorder/ctl/password_input.h"

#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <iostream>
#include <stdexcept>

#include "recorder/utility/limits.h"
#include "recorder/utility/secrets.h"

namespace recorder {

namespace {

constexpr std::array kEndingSignals = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

/// A terminal that does not show what is typed, until this object ends. A signal that would end the program ends the
/// reading instead, so that the terminal is not left silent.
class QuietTerminal {
 public:
  QuietTerminal() {
    struct sigaction interrupt = {};
    interrupt.sa_handler = [](int) {};  // read() returns EINTR
    for (std::size_t i = 0; i < kEndingSignals.size(); ++i) {
      sigaction(kEndingSignals[i], &interrupt, &actionsBefore_[i]);
    }
    tcgetattr(STDIN_FILENO, &before_);
    termios quiet = before_;
    quiet.c_lflag = (quiet.c_lflag & ~static_cast<tcflag_t>(ECHO)) | ECHONL;
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
  }
  ~QuietTerminal() {
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
    for (std::size_t i = 0; i < kEndingSignals.size(); ++i) sigaction(kEndingSignals[i], &actionsBefore_[i], nullptr);
  }
  QuietTerminal(const QuietTerminal&) = delete;
  QuietTerminal& operator=(const QuietTerminal&) = delete;

 private:
  termios before_ = {};
  std::array<struct sigaction, kEndingSignals.size()> actionsBefore_ = {};
};

/// A line without its end, which is LF or CR LF. Not through a stream, whose buffer would keep the secret.
std::string ReadLine() {
  std::string line;
  line.reserve(kLongestSecretLine + 1);
  for (char c = 0; line.size() <= kLongestSecretLine; line += c) {
    const ssize_t count = read(STDIN_FILENO, &c, 1);
    if (count < 0) throw std::runtime_error(errno == EINTR ? "interrupted" : "cannot read standard input");
    if (count != 0 && c != '\n') continue;
    if (line.ends_with('\r')) line.pop_back();
    return line;
  }
  throw std::runtime_error("the first line of standard input is too long");
}

std::string AskLine(const std::string& prompt) {
  std::cerr << prompt << ": " << std::flush;
  return ReadLine();
}

}  // namespace

std::string ReadKnownPassword(const std::string& prompt) {
  if (isatty(STDIN_FILENO) == 0) return ReadLine();
  const QuietTerminal quiet;
  return AskLine(prompt);
}

std::string ReadPassword(const std::string& prompt) {
  if (isatty(STDIN_FILENO) == 0) return ReadLine();
  const QuietTerminal quiet;
  std::string first = AskLine(prompt);
  const WipeAtEnd wipeFirst(first);
  std::string second = AskLine(prompt + " again");
  const WipeAtEnd wipeSecond(second);
  if (first != second) throw std::runtime_error("the two entries differ");
  return std::string(first);
}

}  // namespace recorder
