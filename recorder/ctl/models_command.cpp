#include "recorder/ctl/models_command.h"

#include <iostream>
#include <memory>
#include <string>

#include "recorder/device/model/model_files.h"
#include "recorder/host/host.h"
#include "recorder/utility/config.h"

namespace recorder {

namespace {

void CheckModels(const std::string& folder) {
  const ModelCatalog catalog = ReadModels(folder);
  for (const ModelMistake& mistake : catalog.mistakes) {
    std::cerr << mistake.file << (mistake.place.empty() ? "" : ": " + mistake.place) << ": " << mistake.text << "\n";
  }
  std::size_t models = 0;
  for (const VendorModels& vendor : catalog.vendors) models += vendor.models.size();
  std::cout << catalog.vendors.size() << " vendors, " << models << " models, " << catalog.mistakes.size()
            << " mistakes\n";
  if (!catalog.mistakes.empty()) throw CLI::RuntimeError(1);
}

}  // namespace

void AddModelsCommand(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand("check-models", "Name every mistake in the model files");
  const auto folder = std::make_shared<std::string>();
  command->add_option("folder", *folder, "folder of model files (default: that of the configuration)");
  command->footer("Example:\n  recorderctl check-models models");
  command->callback([folder, &configOption] {
    CheckModels(folder->empty() ? LoadConfig(FindConfigFile(configOption)).modelsFolder.string() : *folder);
  });
}

}  // namespace recorder
