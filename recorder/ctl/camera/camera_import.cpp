#include "recorder/ctl/camera/camera_import.h"

#include <iostream>
#include <memory>

#include "recorder/ctl/camera/camera_csv.h"
#include "recorder/ctl/camera/camera_input.h"
#include "recorder/ctl/camera/headings.h"
#include "recorder/ctl/camera/list_mistake.h"
#include "recorder/ctl/state_folder.h"
#include "recorder/records/camera_places.h"
#include "recorder/records/records.h"
#include "recorder/utility/files.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

struct ImportOptions {
  std::string file;
  std::vector<std::string> columns;
  bool isForced = false;
};

/// HEADING=COLUMN as a rule. The heading may hold a "="; no column does.
std::pair<std::string, std::string> ReadRule(const std::string& text) {
  const std::size_t equals = text.rfind('=');
  const std::string column = equals == std::string::npos ? "" : text.substr(equals + 1);
  if (column != "-" && MemberOf(column).value_or("").empty()) {
    throw CLI::ValidationError("--map", text + " is not HEADING=COLUMN; the columns are " + AllHeadings());
  }
  return {PlainHeading(text.substr(0, equals)), column};
}

ListRules RulesOf(const ImportOptions& options, const Config& config) {
  ListRules rules;
  for (const std::string& column : options.columns) {
    if (!rules.columns.insert(ReadRule(column)).second) {
      throw CLI::ValidationError("--map", column + " is about a heading that another --map is about");
    }
  }
  rules.models = KnownModels(config);
  rules.anyModel = options.isForced;
  return rules;
}

/// Stores what is no mistake and not stored already; the others become mistakes. Gives the number stored.
int Store(CameraList& list, Records& records, const ImportOptions& options) {
  CameraPlaces places(records.List());
  int stored = 0;
  for (const ListedCamera& listed : list.cameras) {
    const std::string place = options.isForced ? "" : places.Find(listed.camera);
    try {
      if (!place.empty()) throw RecordsError("the same camera as " + place);
      records.Add(listed.camera, listed.password);
      places.Add(listed.camera, "line " + std::to_string(listed.line));
      ++stored;
    } catch (const RecordsError& error) {
      list.mistakes.push_back({listed.line, "", error.what()});
    }
  }
  return stored;
}

void Report(const std::string& file, const CameraList& list) {
  PrintMistakes(file, list.mistakes);
  for (const std::string& column : list.notStored) {
    std::cerr << "recorderctl: " << file << ": the column " << EscapeControls(column) << " is not stored\n";
  }
}

void Import(const ImportOptions& options, const Config& config) {
  const ListRules rules = RulesOf(options, config);
  Records records(config.stateFolder);
  std::string text = ReadFile(options.file);
  const WipeAtEnd wipe(text);
  CameraList list = ReadCameraCsv(text, rules);
  const int imported = Store(list, records, options);
  Report(options.file, list);
  std::cout << "imported " << imported << " cameras\n";
  if (!list.mistakes.empty()) throw CLI::RuntimeError(1);
}

}  // namespace

void AddCameraImport(CLI::App& cameraCommand, const std::string& configOption) {
  CLI::App* command = cameraCommand.add_subcommand("import", "Store the cameras of a CSV file");
  const auto options = std::make_shared<ImportOptions>();
  command->add_option("file", options->file, "CSV file with headings")->required();
  command->add_option("--map", options->columns, "HEADING=COLUMN: what a column of another name holds; - for nothing")
      ->allow_extra_args(false);
  AddForceFlag(*command, options->isForced);
  command->footer("It takes what the page exports, and its template. The columns are " + AllHeadings() +
                  "; codec and stream are not stored.\n"
                  "Examples:\n"
                  "  recorderctl discover > cameras.csv && recorderctl camera import cameras.csv\n"
                  "  recorderctl camera import cameras.csv --map Site=name --map Serial=-");
  command->callback([options, &configOption] { Import(*options, ConfigOfState(configOption)); });
}

}  // namespace recorder
