#include "recorder/webapi/ctl/camera_import.h"

#include <iostream>
#include <memory>

#include "recorder/utility/files.h"
#include "recorder/utility/records.h"
#include "recorder/utility/text.h"
#include "recorder/webapi/ctl/camera_csv.h"
#include "recorder/webapi/ctl/state_folder.h"

namespace recorder {

namespace {

void Report(const std::string& file, const ListMistake& mistake) {
  std::cerr << "recorderctl: " << file << ", line " << mistake.line;
  if (!mistake.column.empty()) std::cerr << ", column " << EscapeControls(mistake.column);
  std::cerr << ": " << mistake.text << "\n";
}

void Import(const std::string& file, Records records) {
  std::string text = ReadFile(file);
  const WipeAtEnd wipe(text);
  CameraList list = ReadCameraCsv(text);
  int imported = 0;
  for (ListedCamera& listed : list.cameras) {
    const WipeAtEnd wipePassword(listed.password);
    try {
      records.Add(listed.camera, listed.password);
      ++imported;
    } catch (const RecordsError& error) {
      list.mistakes.push_back({listed.line, "", error.what()});
    }
  }
  for (const ListMistake& mistake : list.mistakes) Report(file, mistake);
  std::cout << "imported " << imported << " cameras\n";
  if (!list.mistakes.empty()) throw CLI::RuntimeError(1);
}

}  // namespace

void AddCameraImport(CLI::App& cameraCommand, const std::string& configOption) {
  CLI::App* command = cameraCommand.add_subcommand("import", "Store the cameras of a CSV file");
  const auto file = std::make_shared<std::string>();
  command->add_option("file", *file, "CSV file, whose first line names the columns")->required();
  command->footer(
      "The columns are vendor, model, host and port, and where they are known name, user, password, channel, "
      "sourcePath.\n"
      "Example:\n"
      "  recorderctl discover > cameras.csv && recorderctl camera import cameras.csv");
  command->callback([file, &configOption] { Import(*file, Records(StateFolder(configOption))); });
}

}  // namespace recorder
