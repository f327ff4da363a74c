#pragma once

#include "recorder/device/find/stream_search.h"
#include "recorder/device/model/model_files.h"

namespace recorder::find {

/// Tries at the ports of `search` the paths that models know, first those of its likely makers, over HTTP as well,
/// until one is there, and puts the streams of that model into its result. The login is tried as `search` allows it.
void TryPaths(StreamSearch& search, const ModelCatalog& catalog);

}  // namespace recorder::find
