#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/ctl/camera/list_mistake.h"
#include "recorder/device/model/known_models.h"
#include "recorder/records/records.h"

namespace recorder {

/// One camera of a list, with the line that it begins in. Its password is wiped at the end.
struct ListedCamera {
  ~ListedCamera() { Wipe(password); }

  int line = 0;
  CameraRecord camera;
  std::string password;
};

struct CameraList {
  std::vector<ListedCamera> cameras;
  std::vector<ListMistake> mistakes;
  std::vector<std::string> notStored;  ///< headings of columns that have values and no place in the records
};

/// How a list is to be read.
struct ListRules {
  /// What columns hold that go by a name of their own: heading (see PlainHeading) and a heading that is known, or "-"
  /// for a column that is passed over.
  std::map<std::string, std::string> columns;
  std::vector<ModelName> models;  ///< those that are known
  bool anyModel = false;          ///< take others, too
};

/// Reads a list of cameras as the page reads and writes it: separated values in UTF-8 (see CsvReader), between commas,
/// semicolons or tabs, with the headings of headings.h in any order; up to four lines of title may stand above them.
/// The address may be a whole one with port, login and path. Vendor and model become the recorder's own names; a row
/// with a path alone is a camera of vendor "User". A port that is left out is the usual one, a camera without a name is
/// named by its host. A line with a mistake is left out; a mistake in the heading leaves out all.
///
/// The page, where somebody looks at what it made of a file, takes more: UTF-16 and Windows-1252, lines that end with
/// CR alone, blanks before a quote that opens and quotes inside a cell, lists without headings, and a column that is
/// there twice. Here they are mistakes, as a rule of `rules` for a heading that is not there is.
CameraList ReadCameraCsv(std::string_view text, const ListRules& rules);

}  // namespace recorder
