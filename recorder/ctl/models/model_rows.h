#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/ctl/camera/list_mistake.h"

namespace recorder {

// The columns of a list of models, by their headings.
inline constexpr char kMakerColumn[] = "maker";
inline constexpr char kModelColumn[] = "model";
inline constexpr char kStreamColumn[] = "stream";
inline constexpr char kPathColumn[] = "path";
inline constexpr char kPortColumn[] = "port";
inline constexpr char kCodecsColumn[] = "codecs";

/// A row of such a list: a stream of a model.
struct ModelRow {
  int line = 0;
  std::string maker;
  std::string model;
  std::string stream;
  std::string path;
  int port = 0;
  std::vector<std::string> codecs;  ///< the recorder's names for them
  std::optional<ListMistake> mistake = {};
};

struct ModelRows {
  std::vector<ModelRow> rows;  ///< each with maker and model
  std::vector<ListMistake> mistakes;
};

/// Reads the rows of a list of models (see ReadModelCsv). Rows that are of no model are among the mistakes, and so is
/// what is wrong with the heading: then there are no rows.
ModelRows ReadModelRows(std::string_view text);

}  // namespace recorder
