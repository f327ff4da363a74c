#pragma once

#include "bench/comparison.h"

// The rows of bench_run, a function a subject. Each starts what it needs and ends it, and throws WrongAnswer when an
// answer was not the right one.

namespace bench {

/// First pictures and picture sizes of streams of all codecs.
void AddPictureRows(rig::Report& table);
/// The first picture of a camera that is far off.
void AddFarRow(rig::Report& table);
/// A long list of cameras, some of them silent.
void AddBatchRow(rig::Report& table);
/// The module in this process, without a server. Changes the working folder.
void AddModuleRows(rig::Report& table);
/// How many callers the web server and its workers stand.
void AddCallerRows(rig::Report& table);
/// What a worker holds after much work.
void AddMemoryRow(rig::Report& table);
/// How the time grows with models, stored cameras and lists.
void AddGrowthRows(rig::Report& table);

}  // namespace bench
