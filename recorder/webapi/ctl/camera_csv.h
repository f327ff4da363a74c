#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "recorder/utility/records.h"

namespace recorder {

/// One camera of a list, with the line that it begins in.
struct ListedCamera {
  int line = 0;
  CameraRecord camera;
  std::string password;
};

/// A mistake in a list of cameras.
struct ListMistake {
  int line = 0;        ///< from 1
  std::string column;  ///< as the heading names it; "" when the mistake is of the whole line
  std::string text;    ///< holds no value of the list
};

struct CameraList {
  std::vector<ListedCamera> cameras;
  std::vector<ListMistake> mistakes;
};

/// Reads a list of cameras: comma-separated values (RFC 4180) in UTF-8, whose first line names the columns in any
/// order: vendor, model, host and port, and what else is wanted of name, user, password, channel and sourcePath. The
/// guards that the page and `recorderctl discover` put before formulas (csv_cell.h) are taken off, in every column. A
/// camera without a name is named by its host. A line with a mistake is left out; a mistake in the heading leaves out
/// all.
CameraList ReadCameraCsv(std::string_view text);

}  // namespace recorder
