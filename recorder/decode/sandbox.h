#pragma once

#include <cstdint>

namespace recorder {

/// Takes from this process, for ever, what a parser does not need: new privileges, debuggers and core files; memory and
/// processor time beyond kMediaMemory and kMediaCpuSeconds, new descriptors, files and processes; by Landlock the whole
/// file system and, where the kernel can, ports, abstract sockets and signals to others; by a filter of seccomp each
/// system call but those that handle memory, time and standard input. Another one ends the process. Call once, without
/// other threads, after whatever needs more than that. Returns the SandboxParts that this system or build does not
/// have.
std::uint32_t EnterSandbox();

/// One part each; false when the system lacks it.
bool EnterLimits();
bool EnterLandlock();
bool EnterFilter();

}  // namespace recorder
