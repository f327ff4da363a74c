#pragma once

#include <json/json.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "recorder/ctl/camera/list_mistake.h"

namespace recorder {

/// A model of a list, made of all rows of its maker and name.
struct ListedModel {
  std::string vendor;
  Json::Value entry;       ///< as in a model file
  std::vector<int> lines;  ///< of its rows, from 1
  /// The rows whose paths stand in `entry`: its place there ("/stream/others/0"), and the line.
  std::vector<std::pair<std::string, int>> places;
};

struct ModelList {
  std::vector<ListedModel> models;
  std::vector<ListMistake> mistakes;
};

/// A list with an example of a model with two streams, as ReadModelCsv reads it.
extern const char kModelCsvTemplate[];

/// Reads a list of models: separated values in UTF-8 (see CsvReader), between commas, semicolons or tabs, with the
/// headings maker, model, stream, path, port and codecs in any order. Capitals make no difference in names. A row is a
/// stream: main (also when the cell is blank), sub or third. A blank port is 554. Codecs stand between blanks, commas,
/// semicolons or slashes, and are not known when the cell is blank: then no row of the model names one. A second main
/// row is the path of its codecs. A path with a placeholder for the channel is one for any channel. A model with a
/// mistake in a row is left out, and all its rows are named; a mistake in the heading leaves out all. What else is
/// wrong with a model is left to whoever takes it; see OfModel().
ModelList ReadModelCsv(std::string_view text);

/// A mistake at a place of the model's entry, or "/vendor", by the row and column that it comes from.
ListMistake OfModel(const ListedModel& model, const std::string& place, const std::string& text);

/// Adds to `mistakes` those that were `found` in a model with rows in `lines`, and that its other rows are refused,
/// too.
void RefuseModel(std::vector<int> lines, const std::vector<ListMistake>& found, std::vector<ListMistake>& mistakes);

}  // namespace recorder
