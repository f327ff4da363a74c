#include "recorder/ctl/models/models_own.h"

#include <iostream>
#include <memory>
#include <stdexcept>

#include "recorder/ctl/state_folder.h"
#include "recorder/device/model/model_files.h"
#include "recorder/device/model/own_models.h"
#include "recorder/host/host.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

struct ModelOptions {
  std::string vendor;
  std::string model;
};

void List(const Config& config) {
  std::cout << "vendor\tmodel\tfile\n";
  for (const VendorModels& vendor : ReadModels(ModelFoldersOf(config)).vendors) {
    if (vendor.origin != ModelOrigin::kOwn) continue;
    for (const Model& model : vendor.models) {
      std::cout << model.vendor << '\t' << EscapeControls(model.name) << '\t' << vendor.file << '\n';
    }
  }
}

void Remove(const ModelOptions& options, const Config& config) {
  OwnModels own(ModelFoldersOf(config));
  if (!own.Remove(options.vendor, options.model)) {
    throw std::runtime_error(options.vendor + " " + options.model + " is no model of your own");
  }
  own.Write();
}

}  // namespace

void AddOwnModels(CLI::App& modelsCommand, const std::string& configOption) {
  CLI::App* list = modelsCommand.add_subcommand("list", "List your own models, one a line, with tabs between columns");
  list->footer("Example:\n  recorderctl models list");
  list->callback([&configOption] { List(ConfigOfState(configOption)); });

  CLI::App* remove = modelsCommand.add_subcommand("remove", "Remove a model of your own");
  const auto options = std::make_shared<ModelOptions>();
  remove->add_option("vendor", options->vendor, "vendor")->required();
  remove->add_option("model", options->model, "model")->required();
  remove->footer("Example:\n  recorderctl models remove Acme X100");
  remove->callback([options, &configOption] { Remove(*options, StartPlatform(FindConfigFile(configOption))); });
}

}  // namespace recorder
