#pragma once

namespace recorder {

/// Makes a picture and looks for one in each way that this program has, so that the libraries prepare what they prepare
/// at first use: some read files of the system for that.
void RehearseDecoding();

}  // namespace recorder
