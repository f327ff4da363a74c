#include "tests/sessions/camera_plan.h"

#include <algorithm>

#include "tests/sessions/answers.h"

namespace sessions {
namespace {

LoginPlan MakeLogin(Chance& chance) {
  LoginPlan login;
  login.offer = chance.OneIn(3) ? chance.Of(kOffers) : kOffers[chance.Below(2)];
  login.asksAtPlay = chance.OneIn(8);
  login.stale = chance.Mostly<std::size_t>({0, 1, 1000});
  login.changesNonce = chance.Mostly<std::string>({"", "SETUP", "PLAY"});
  login.changesAlways = chance.OneIn(3);
  login.saysStale = chance.OneIn(2);
  login.weakens = chance.OneIn(12);
  login.isNonceOfConnection = chance.OneIn(6);
  login.after401 = chance.Mostly<End>({End::kStays, End::kSaysClose, End::kCloses});
  login.closesAfter = milliseconds(chance.Of<int>({0, 0, 5, 19, 60}));
  login.closesOnce = chance.OneIn(2);
  login.isUnread = chance.OneIn(40);
  login.refusal = chance.Mostly(kRefusals);
  return login;
}

/// Usual, a status that ends the session, or trouble.
Answer MakeAnswer(Chance& chance, const std::vector<Answer>& usual) {
  if (!chance.OneIn(8)) return chance.Mostly(usual);
  return chance.Of(chance.OneIn(2) ? kTroubles : kStatuses);
}

/// Puts any bytes in the place of some.
void Damage(Chance& chance, std::string& text) {
  for (std::size_t left = 1 + chance.Below(16); left > 0 && !text.empty(); --left) {
    const auto byte = static_cast<char>(chance.Below(256));
    const std::size_t at = chance.Below(text.size());
    const std::size_t size = chance.Below(4);
    text.replace(at, size, chance.Below(4), byte);
  }
}

void MakePackets(Chance& chance, CameraPlan& plan) {
  plan.packetsWanted = 1 + chance.Below(12);
  plan.packets = chance.OneIn(6) ? chance.Below(plan.packetsWanted) : plan.packetsWanted;
  plan.packetsEarly = chance.OneIn(4) ? chance.Below(plan.packets + 1) : 0;
  plan.packetSize = chance.Mostly<std::size_t>({200, 1, 1400, 65'000});
  plan.packetGap = milliseconds(chance.Of<int>({0, 40, 1'000, 4'000}));
  plan.behindPackets = chance.Mostly<End>({End::kStays, End::kCloses, End::kResets});
  plan.isFlooding = chance.OneIn(2000);
  plan.endsIdleSession = chance.OneIn(3);
}

void MakeNetwork(Chance& chance, CameraPlan& plan) {
  plan.connects = chance.OneIn(60) ? chance.Of<Outcome>({kUnreachable, kBlocked, kTimedOut}) : kOk;
  plan.delay = milliseconds(chance.Below(100));
  plan.jitter = milliseconds(chance.Mostly<int>({0, 5, 80}));
  plan.piece = chance.Of<std::size_t>({0, 0, 1, 40, 500});
  plan.repeats = chance.OneIn(30);
  if (chance.OneIn(20)) plan.resetsAt = 1 + chance.Below(6);
  if (chance.OneIn(40)) plan.failsAt = 1 + chance.Below(6);
  if (chance.OneIn(40)) plan.stopsAt = 1 + chance.Below(6);
}

bool IsClosing(End end) { return end == End::kCloses || end == End::kResets; }

/// Between packets, what belongs to nothing is passed over.
Outcome OfPlay(const Answer& answer) {
  const bool isAnswer = std::ranges::any_of(kStatuses, [&](const Answer& row) { return row.text == answer.text; });
  const bool isPassedOver = answer.outcome != kOk && !isAnswer && !IsClosing(answer.end);
  return isPassedOver ? kTimedOut : answer.outcome;
}

}  // namespace

CameraPlan MakePlan(Chance& chance) {
  CameraPlan plan;
  plan.hasLogin = !chance.OneIn(12);
  plan.isRight = !chance.OneIn(4);
  plan.isThoughtSteady = chance.OneIn(4);
  if (chance.OneIn(8)) plan.deadline = milliseconds(chance.Below(3'000));
  if (chance.OneIn(8)) plan.answerBy = milliseconds(1 + chance.Below(2'000));
  plan.login = MakeLogin(chance);
  if (chance.OneIn(6)) plan.redirect = chance.Of(kRedirects);
  plan.isRedirectOpen = chance.OneIn(2);
  plan.optionsFirst = chance.Mostly<std::string>({"", "400", "455"});
  plan.optionsOrder = chance.Of<CameraPlan::Order>(
      {CameraPlan::Order::kBehind, CameraPlan::Order::kBefore, CameraPlan::Order::kUnread});
  plan.isOptionsOpen = !chance.OneIn(2);
  plan.isOptionsOfConnection = chance.OneIn(2);
  plan.describe = MakeAnswer(chance, kDescriptions);
  plan.setup = MakeAnswer(chance, kGrants);
  plan.play = MakeAnswer(chance, kStarts);
  if (plan.setup.outcome == kTransportRefused) {
    plan.hasPorts = !chance.OneIn(6);
    plan.udp = chance.Mostly(kUdpGrants);
  }
  plan.isDamaged = chance.OneIn(20);
  if (plan.isDamaged) Damage(chance, chance.Of<Answer*>({&plan.describe, &plan.setup, &plan.play})->text);
  plan.hasCseq = !chance.OneIn(6);
  plan.asks = chance.OneIn(6);
  MakePackets(chance, plan);
  MakeNetwork(chance, plan);
  return plan;
}

Outcome CameraPlan::OfLogin() const {
  if (login.offer.empty()) return kOk;
  if (!hasLogin) return kLoginRefused;
  if (login.offer == "i") return kNotUnderstood;
  if (login.offer.find_first_of("un") != std::string::npos) return kLoginUnsupported;
  if (login.isUnread) return kLoginRefused;
  if (!isRight) return login.refusal.outcome;
  const bool isTooStale = login.IsDigest() && login.stale > 1;
  const bool isNonceLost =
      login.IsDigest() && login.isNonceOfConnection && login.after401 != End::kStays && !login.closesOnce;
  return !isTooStale && !isNonceLost ? kOk : kLoginRefused;
}

bool CameraPlan::IsUdp() const { return hasPorts && redirect.text.find("rtsps") == std::string::npos; }

Outcome CameraPlan::Expected() const {
  const Answer& asked = login.asksAtPlay ? play : describe;
  const bool isOverLogin = !login.offer.empty() && asked.text.empty() && IsClosing(asked.end);
  Outcome ofPackets = kOk;
  const Outcome ofSilence = IsUdp() && packets == 0 ? kTransportRefused : kTimedOut;
  if (packets < packetsWanted) ofPackets = IsClosing(behindPackets) ? kNotUnderstood : ofSilence;
  for (const Outcome outcome : {connects, isRedirectOpen ? redirect.outcome : kOk, login.asksAtPlay ? kOk : OfLogin(),
                                redirect.outcome, isOverLogin && !login.asksAtPlay ? kLoginRefused : describe.outcome,
                                IsUdp() ? udp.outcome : setup.outcome, OfLogin(),
                                isFlooding    ? kNotUnderstood
                                : isOverLogin ? kLoginRefused
                                : IsUdp()     ? play.outcome
                                              : OfPlay(play),
                                ofPackets}) {
    if (outcome != kOk) return outcome;
  }
  return kOk;
}

/// OPTIONS are asked on one connection of a server alone, and a login that they meet may be refused without a word.
void CameraPlan::AllowWithOptions(std::set<Outcome>& allowed) const {
  if (OfLogin() != kOk) allowed.insert(OfLogin());
  const bool isLeft = login.after401 != End::kStays;
  if ((isOptionsOfConnection && isLeft) || IsClosing(login.refusal.end) || describe.text.empty())
    allowed.insert(kNotUnderstood);
}

/// A login that meets the end of a connection may be lost, and a nonce that ends with a session ends it.
void CameraPlan::AllowWithLogin(std::set<Outcome>& allowed) const {
  constexpr milliseconds kShortestPause{20};
  const bool isLeft = login.after401 != End::kStays;
  const bool isSeen = !isThoughtSteady && login.after401 == End::kCloses && login.closesAfter + jitter < kShortestPause;
  const bool isMet = (asks || isThoughtSteady) && login.closesAfter.count() > 0;  // by what is said meanwhile
  const bool isLate = isLeft && (isMet || login.closesAfter >= kShortestPause);
  const bool isNonceLost = isLeft && login.isNonceOfConnection && !(isSeen && login.closesOnce);
  const bool isChanged = !login.changesNonce.empty();
  const bool isLost = isLate || isNonceLost || (isLeft && login.asksAtPlay);
  if (isLost || login.weakens || (isChanged && (login.changesAlways || login.asksAtPlay)))
    allowed.insert(kLoginRefused);
  if (isChanged && isLeft) allowed.insert({kNotUnderstood, play.outcome});
  if (isChanged && isLeft && setup.text.empty()) allowed.insert(kLoginRefused);
}

std::set<Outcome> CameraPlan::Allowed() const {
  std::set<Outcome> allowed = {Expected()};
  const bool isShort = deadline < milliseconds(5'000);
  const bool isBroken = resetsAt > 0 || failsAt > 0;
  if (isShort || answerBy.count() > 0 || stopsAt > 0) allowed.insert(kTimedOut);
  if (isBroken) allowed.insert({kNotUnderstood, kLoginRefused});
  if (IsUdp() && (isShort || isBroken)) allowed.insert(kTransportRefused);
  if (!login.offer.empty()) AllowWithLogin(allowed);
  if (!optionsFirst.empty()) AllowWithOptions(allowed);
  return allowed;
}

}  // namespace sessions
