#pragma once

#include "bench/table.h"

// The rows of bench_run, a function a subject. Each starts what it needs and ends it, and throws WrongAnswer when an
// answer was not the right one.

namespace bench {

/// First pictures and picture sizes of streams of all codecs.
void AddPictureRows(Table& table);
/// A long list of cameras, some of them silent.
void AddBatchRow(Table& table);
/// The module in this process, without a server. Changes the working folder.
void AddModuleRows(Table& table);
/// How many callers the web server and its workers stand.
void AddCallerRows(Table& table);
/// What a worker holds after much work.
void AddMemoryRow(Table& table);
/// How the time grows with models, stored cameras and lists.
void AddGrowthRows(Table& table);

}  // namespace bench
