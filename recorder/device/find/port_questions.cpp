#include "recorder/device/find/port_questions.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

#include "recorder/device/asked/onvif/answers.h"
#include "recorder/device/asked/onvif/soap.h"
#include "recorder/net/http/http_session.h"
#include "recorder/net/rtsp/rtsp_client.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/log.h"
#include "recorder/utility/text.h"

namespace recorder::find {
namespace {

/// What is asked first at a port. The other protocol is asked where the first is not spoken.
enum class Habit {
  kRtsp,
  kHttp,
  kBoth,  ///< both in any case: some cameras have them at one port
};

struct UsualPort {
  int number;
  Habit habit;
};

constexpr std::array kUsualPorts = {
    UsualPort{80, Habit::kHttp},   UsualPort{88, Habit::kBoth},   UsualPort{443, Habit::kHttp},
    UsualPort{554, Habit::kRtsp},  UsualPort{1554, Habit::kRtsp}, UsualPort{2020, Habit::kHttp},
    UsualPort{7070, Habit::kRtsp}, UsualPort{8000, Habit::kHttp}, UsualPort{8080, Habit::kHttp},
    UsualPort{8554, Habit::kRtsp}, UsualPort{8800, Habit::kHttp}, UsualPort{8899, Habit::kHttp},
};

Habit HabitOf(int port) {
  const auto usual = std::ranges::find(kUsualPorts, port, &UsualPort::number);
  return usual == kUsualPorts.end() ? Habit::kBoth : usual->habit;
}

/// Ascending.
std::vector<int> PortsOf(const FindRequest& request) {
  std::set<int> ports(request.ports.begin(), request.ports.end());
  if (ports.empty()) {
    for (const UsualPort& usual : kUsualPorts) ports.insert(usual.number);
  }
  std::vector<int> first(ports.begin(), ports.end());
  first.resize(std::min(first.size(), kMostFindPorts));
  return first;
}

/// What a stranger said, for people.
std::string ShownName(std::string_view text) {
  const bool isShown = IsUtf8(text) && !HoldsControls(text) && text.size() <= kLongestFoundName;
  return isShown ? std::string(text) : "";
}

void TakeName(const ServerName& name, FoundPort& port) {
  if (port.server.empty()) port.server = ShownName(name.software);
  if (port.realm.empty()) port.realm = ShownName(name.realm);
}

/// True where nothing answers, whatever is asked.
bool IsSilent(Outcome outcome) {
  return outcome == Outcome::kUnreachable || outcome == Outcome::kBlocked || outcome == Outcome::kCertificateChanged;
}

/// A scope of one question: that a server wants a login is no answer to the next. What it asks for is kept.
class QuestionScope {
 public:
  QuestionScope(RequestBudget& budget, Clock::time_point end, const std::string& host, PortAnswer& answer)
      : scope_(std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()), RequestScope::OfPart{}),
        host_(host),
        answer_(answer) {
    scope_.CountIn(budget);
  }
  ~QuestionScope() { answer_.asksDigest = answer_.asksDigest || scope_.KnowsDigest(host_); }
  QuestionScope(const QuestionScope&) = delete;
  QuestionScope& operator=(const QuestionScope&) = delete;

 private:
  RequestScope scope_;
  const std::string& host_;
  PortAnswer& answer_;
};

/// Asks at one port. Belongs to the thread that asks.
class PortQuestions {
 public:
  PortQuestions(const std::string& host, int port, RequestBudget& budget, Clock::time_point end)
      : camera_{host, port, "", "", port == kHttpsPort}, budget_(1, &budget), end_(end) {
    answer_.port.number = port;
    answer_.port.isTls = camera_.isTls;
  }

  PortAnswer Ask() {
    AskAll();
    answer_.requests = budget_.Taken();
    return std::move(answer_);
  }

 private:
  void AskAll() {
    const Habit habit = HabitOf(camera_.port);
    const bool isRtspFirst = habit != Habit::kHttp;
    isRtspFirst ? AskRtsp() : AskHttp();
    const bool isFound = answer_.outcome == Outcome::kOk && habit != Habit::kBoth;
    if (isFound || IsSilent(answer_.outcome) || camera_.isTls) return;
    isRtspFirst ? AskHttp() : AskRtsp();
  }

  void AskRtsp() {
    const QuestionScope scope(budget_, end_, camera_.host, answer_);
    RtspClient client(camera_, kNoCamerasPath, RequestScope::Current().Deadline());
    client.AnswerBy(HalfTime::End());
    answer_.rtsp = client.Describe();
    answer_.port.speaksRtsp = client.HasAnswered();
    TakeName(client.Server(), answer_.port);
    TakeOutcome(client.HasAnswered(), answer_.rtsp);
  }

  /// The question for the clock is ONVIF's, and a web server without ONVIF tells its name with any answer. The page
  /// that people see is where it asks for a login.
  void AskHttp() {
    if (!camera_.isTls) AskClock();
    const bool isNamed = answer_.port.speaksOnvif || !answer_.port.realm.empty();
    if (!isNamed && !IsSilent(answer_.outcome)) AskPage();
  }

  void AskClock() {
    const QuestionScope scope(budget_, end_, camera_.host, answer_);
    onvif::SoapClient client(camera_);
    const onvif::Reply reply = client.AskClock();
    answer_.onvif = reply.outcome;
    answer_.port.speaksOnvif = reply.IsSoap();
    answer_.clockOffset = client.ClockOffset();
    TakeName(client.Server(), answer_.port);
    TakeHttp(reply.outcome);
  }

  void AskPage() {
    const QuestionScope scope(budget_, end_, camera_.host, answer_);
    HttpSession session(camera_);
    const HttpAnswer answer = session.Get("/");
    TakeName(session.Server(), answer_.port);
    TakeHttp(answer.outcome);
  }

  void TakeHttp(Outcome outcome) {
    const bool isSpoken = outcome == Outcome::kOk || outcome == Outcome::kLoginRefused ||
                          outcome == Outcome::kLoginUnsupported || outcome == Outcome::kNoSuchStream ||
                          outcome == Outcome::kBusy || answer_.port.speaksOnvif;
    answer_.port.speaksHttp = answer_.port.speaksHttp || isSpoken;
    TakeOutcome(isSpoken, outcome);
  }

  void TakeOutcome(bool isSpoken, Outcome outcome) {
    if (answer_.outcome != Outcome::kOk) answer_.outcome = isSpoken ? Outcome::kOk : outcome;
  }

  const CameraAddress camera_;
  RequestBudget budget_;  // one is its own
  const Clock::time_point end_;
  PortAnswer answer_;
};

/// A port whose answer cannot be held answers nothing.
PortAnswer AnswerOf(const std::string& host, int port, RequestBudget& budget, Clock::time_point end) {
  try {
    return PortQuestions(host, port, budget, end).Ask();
  } catch (const std::exception& failure) {
    LogFailure("Port " + std::to_string(port) + " of a camera was not asked: " + failure.what());
    PortAnswer answer;
    answer.outcome = Outcome::kNotUnderstood;
    return answer;
  }
}

}  // namespace

std::vector<PortAnswer> AskPorts(const FindRequest& request, RequestBudget& budget, std::chrono::milliseconds limit) {
  const std::vector<int> ports = PortsOf(request);
  const Clock::time_point end = Clock::now() + limit;
  std::vector<PortAnswer> answers(ports.size());
  std::vector<std::jthread> threads;
  for (std::size_t i = 0; i < ports.size(); ++i) {
    const auto ask = [&, i] { answers[i] = AnswerOf(request.host, ports[i], budget, end); };
    try {
      threads.emplace_back(ask);
    } catch (const std::system_error&) {
      ask();  // no thread to be had
    }
  }
  threads.clear();  // waits for them
  return answers;
}

Outcome MostTelling(const std::vector<PortAnswer>& answers) {
  constexpr std::array kBySilence = {Outcome::kBlocked, Outcome::kTimedOut, Outcome::kUnreachable,
                                     Outcome::kNotThisProtocol, Outcome::kNotUnderstood};
  const auto howTelling = [&](const PortAnswer& answer) {
    return std::ranges::find(kBySilence, answer.outcome) - kBySilence.begin();
  };
  return std::ranges::max(answers, {}, howTelling).outcome;
}

}  // namespace recorder::find
