#include "recorder/decode/sandbox.h"

#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <utility>

#include "recorder/media/media_messages.h"
#include "recorder/utility/handle.h"

namespace recorder {
namespace {

// --- Limits ---------------------------------------------------------------------------------------------------------

/// Of descriptors there is one, standard input.
constexpr std::pair<__rlimit_resource, rlim_t> kLimits[] = {
    {RLIMIT_AS, kMediaMemory}, {RLIMIT_CPU, kMediaCpuSeconds}, {RLIMIT_CORE, 0}, {RLIMIT_FSIZE, 0}, {RLIMIT_NPROC, 0},
    {RLIMIT_NOFILE, 1},
};

// --- Landlock -------------------------------------------------------------------------------------------------------

/// struct landlock_ruleset_attr of a newer linux/landlock.h than Debian 12's. What is handled and has no rule is
/// forbidden.
struct Ruleset {
  std::uint64_t files;
  std::uint64_t network;
  std::uint64_t scopes;
};

constexpr std::uint64_t FirstBits(int count) { return (std::uint64_t{1} << count) - 1; }

struct LandlockVersion {
  long version;  ///< the first that knows this
  Ruleset handled;
  std::size_t size;  ///< of the part of Ruleset that it knows
};

/// The newest first.
constexpr LandlockVersion kLandlock[] = {
    {6, {FirstBits(16), FirstBits(2), FirstBits(2)}, 24},
    {5, {FirstBits(16), FirstBits(2), 0}, 16},
    {4, {FirstBits(15), FirstBits(2), 0}, 16},
    {3, {FirstBits(15), 0, 0}, 8},
    {2, {FirstBits(14), 0, 0}, 8},
    {1, {FirstBits(13), 0, 0}, 8},
};

/// 0 or less: none.
long VersionOfLandlock() {
  constexpr unsigned kAskVersion = 1;
  return syscall(SYS_landlock_create_ruleset, nullptr, std::size_t{0}, kAskVersion);
}

FileDescriptor MakeRuleset(long version) {
  const auto* known = std::ranges::find_if(kLandlock, [version](const auto& row) { return row.version <= version; });
  if (known == std::end(kLandlock)) return {};
  return FileDescriptor(static_cast<int>(syscall(SYS_landlock_create_ruleset, &known->handled, known->size, 0U)));
}

// --- Filter ---------------------------------------------------------------------------------------------------------

using Filter = std::unique_ptr<void, Deleter<seccomp_release>>;

/// Allowed whatever the arguments are. Names of other machines than this one are passed over.
constexpr const char* kFree[] = {
    "brk",          "clock_gettime", "clock_gettime64", "exit",         "exit_group", "futex",
    "futex_time64", "gettimeofday",  "madvise",         "mremap",       "munmap",     "poll",
    "ppoll",        "ppoll_time64",  "restart_syscall", "rt_sigreturn", "sigreturn",  "uname"};

/// Allowed with standard input as the first argument.
constexpr const char* kOnTheSocket[] = {"recv", "recvfrom", "recvmsg", "send", "sendmsg", "sendto", "close"};

/// Allowed where the third argument does not ask for memory that can be executed.
constexpr const char* kWithoutCode[] = {"mmap", "mmap2", "mprotect"};

bool Allow(const Filter& filter, const char* name, unsigned count, scmp_arg_cmp condition) {
  const int number = seccomp_syscall_resolve_name(name);
  return number == __NR_SCMP_ERROR ||
         seccomp_rule_add_array(filter.get(), SCMP_ACT_ALLOW, number, count, &condition) == 0;
}

bool AllowAll(const Filter& filter) {
  const auto allow = [&filter](unsigned count, scmp_arg_cmp condition) {
    return [&filter, count, condition](const char* name) { return Allow(filter, name, count, condition); };
  };
  return std::ranges::all_of(kFree, allow(0, {})) &&
         std::ranges::all_of(kOnTheSocket, allow(1, {0, SCMP_CMP_EQ, STDIN_FILENO, 0})) &&
         std::ranges::all_of(kWithoutCode, allow(1, {2, SCMP_CMP_MASKED_EQ, PROT_EXEC, 0}));
}

}  // namespace

bool EnterLimits() {
  return std::ranges::all_of(kLimits, [](const auto& row) {
    const rlimit limit{row.second, row.second};
    return setrlimit(row.first, &limit) == 0;
  });
}

bool EnterLandlock() {
  const FileDescriptor rules = MakeRuleset(VersionOfLandlock());
  return rules && syscall(SYS_landlock_restrict_self, rules.Get(), 0U) == 0;
}

bool EnterFilter() {
  const Filter filter(seccomp_init(SCMP_ACT_KILL_PROCESS));
  return filter && seccomp_attr_set(filter.get(), SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_KILL_PROCESS) == 0 &&
         AllowAll(filter) && seccomp_load(filter.get()) == 0;
}

std::uint32_t EnterSandbox() {
  if (HAS_SANITIZER) return kSandboxLimits | kSandboxLandlock | kSandboxFilter;  // it needs more than that
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
  close(STDERR_FILENO);  // the log goes as messages
  std::uint32_t missing = 0;
  if (!EnterLandlock()) missing |= kSandboxLandlock;
  if (!EnterLimits()) missing |= kSandboxLimits;
  if (!EnterFilter()) missing |= kSandboxFilter;
  return missing;
}

}  // namespace recorder
