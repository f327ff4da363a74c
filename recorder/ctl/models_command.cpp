#include "recorder/ctl/models_command.h"

#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "recorder/ctl/models/models_export.h"
#include "recorder/ctl/models/models_import.h"
#include "recorder/ctl/models/models_own.h"
#include "recorder/ctl/state_folder.h"
#include "recorder/device/model/model_facts.h"
#include "recorder/device/model/model_files.h"
#include "recorder/host/host.h"
#include "recorder/utility/config.h"

namespace recorder {

namespace {

/// Such as "facts: 12 document, 3 without a source"; "" where nothing is said.
std::string FactLine(const ModelCatalog& catalog) {
  FactCounts counts;
  for (const ModelCatalog::Place place : catalog.byName) CountFacts(catalog.At(place), counts);
  std::string line;
  const auto add = [&](std::string_view by, std::string_view words) {
    if (counts[by] == 0) return;
    line += (line.empty() ? "facts: " : ", ") + std::to_string(counts[by]) + " " + std::string(words);
  };
  for (const SaidBy by : kAllWhoSay) add(NameOf(by), NameOf(by));
  add("", "without a source");
  return line.empty() ? line : line + "\n";
}

std::size_t CountVendors(const ModelCatalog& catalog) {
  std::set<std::string_view> names;
  for (const VendorModels& vendor : catalog.vendors) names.insert(vendor.vendor);
  return names.size();
}

void CheckModels(const ModelFolders& folders) {
  const ModelCatalog catalog = ReadModels(folders);
  for (const ModelMistake& mistake : catalog.mistakes) {
    std::cerr << mistake.file << (mistake.place.empty() ? "" : ": " + mistake.place) << ": " << mistake.text << "\n";
  }
  std::cout << CountVendors(catalog) << " vendors, " << catalog.byName.size() << " models, " << catalog.mistakes.size()
            << " mistakes\n"
            << FactLine(catalog);
  if (!catalog.mistakes.empty()) throw CLI::RuntimeError(1);
}

void AddCheck(CLI::App& app, const std::string& configOption) {
  CLI::App* command =
      app.add_subcommand("check-models", "Name every mistake in the model files, and count who says what");
  const auto folder = std::make_shared<std::string>();
  command->add_option("folder", *folder, "folder of model files (default: those of the configuration)");
  command->footer("Example:\n  recorderctl check-models models");
  command->callback([folder, &configOption] {
    CheckModels(folder->empty() ? ModelFoldersOf(ConfigOfState(configOption)) : ModelFolders{*folder});
  });
}

}  // namespace

void AddModelsCommand(CLI::App& app, const std::string& configOption) {
  AddCheck(app, configOption);
  CLI::App* command = app.add_subcommand("models", "Bring models of your own, and hand on what a camera said");
  command->require_subcommand(1);
  AddModelsImport(*command, configOption);
  AddModelsExport(*command, configOption);
  AddOwnModels(*command, configOption);
}

}  // namespace recorder
