#include "recorder/ctl/models/models_import.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <vector>

#include "recorder/ctl/models/model_csv.h"
#include "recorder/device/model/model_files.h"
#include "recorder/device/model/own_models.h"
#include "recorder/host/host.h"
#include "recorder/utility/day_text.h"
#include "recorder/utility/files.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

struct ModelsFile {
  std::string file;
  bool isTemplate = false;
};

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view WithoutMark(std::string_view text) {
  return text.substr(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
}

bool IsJson(std::string_view text) {
  const std::string_view begin = Trimmed(WithoutMark(text)).substr(0, 1);
  return begin == "{" || begin == "[";
}

/// Takes the models of one file, and counts.
class ModelsImport {
 public:
  ModelsImport(std::string file, const ModelFolders& folders)
      : file_(std::move(file)), document_(std::filesystem::path(file_).filename().string()), own_(folders) {
    if (!IsUtf8(document_)) document_ = "a file";
  }

  void Run() {
    const std::string text = ReadFile(file_);
    IsJson(text) ? TakeFile(text) : TakeList(text);
    own_.Write();
    for (const std::string& name : taken_) std::cout << EscapeControls(name) << '\n';
    std::cout << "imported " << taken_.size() << " models\n";
    if (isAnyRefused_) throw CLI::RuntimeError(1);
  }

 private:
  std::vector<PlacedMistake> Add(const std::string& vendor, const Json::Value& model) {
    std::vector<PlacedMistake> mistakes = own_.Add(vendor, model, document_, today_);
    if (mistakes.empty()) taken_.push_back(vendor + " " + model["name"].asString());
    isAnyRefused_ = isAnyRefused_ || !mistakes.empty();
    return mistakes;
  }

  void TakeList(const std::string& text) {
    ModelList list = ReadModelCsv(text);
    isAnyRefused_ = !list.mistakes.empty();
    for (const ListedModel& model : list.models) TakeListed(model, list.mistakes);
    PrintMistakes(file_, list.mistakes);
  }

  void TakeListed(const ListedModel& model, std::vector<ListMistake>& mistakes) {
    const std::vector<PlacedMistake> found = Add(model.vendor, model.entry);
    std::vector<ListMistake> inRows;
    inRows.reserve(found.size());
    for (const PlacedMistake& mistake : found) inRows.push_back(OfModel(model, mistake.place, mistake.text));
    if (!found.empty()) return RefuseModel(model.lines, inRows, mistakes);
    for (const PlacedMistake& doubt : FindDoubts(model.entry)) {
      mistakes.push_back(OfModel(model, doubt.place, doubt.text));
    }
  }

  void TakeFile(const std::string& text) {
    std::string report;
    const std::optional<Json::Value> json = ParseStrictJson(WithoutMark(text), report);
    if (!json) throw std::runtime_error(file_ + " is no JSON: " + report);
    const Json::Value file = json->isObject() ? *json : Json::Value();
    const Json::Value& vendor = file["vendor"];
    const Json::Value& models = file["models"];
    if (!vendor.isString() || !models.isArray())
      throw std::runtime_error(file_ + " has no \"vendor\" or no \"models\"");
    for (Json::ArrayIndex i = 0; i < models.size(); ++i) {
      const std::vector<PlacedMistake> mistakes = Add(vendor.asString(), models[i]);
      for (const PlacedMistake& mistake : mistakes.empty() ? FindDoubts(models[i]) : mistakes) Report(i, mistake);
    }
  }

  void Report(Json::ArrayIndex model, const PlacedMistake& mistake) const {
    const bool isOfFile = mistake.place == "/vendor";
    std::cerr << "recorderctl: " << file_ << ", " << (isOfFile ? "" : "/models/" + std::to_string(model))
              << EscapeControls(mistake.place) << ": " << EscapeControls(mistake.text) << '\n';
  }

  std::string file_;
  std::string document_;
  const std::string today_ = DayText(std::time(nullptr));
  OwnModels own_;
  std::vector<std::string> taken_;
  bool isAnyRefused_ = false;
};

void ImportModels(const ModelsFile& options, const std::string& configOption) {
  if (options.isTemplate) {
    std::cout << kModelCsvTemplate;
    return;
  }
  if (options.file.empty()) throw CLI::RequiredError("file");
  const Config config = StartPlatform(FindConfigFile(configOption));
  ModelsImport(options.file, ModelFoldersOf(config)).Run();
}

}  // namespace

void AddModelsImport(CLI::App& modelsCommand, const std::string& configOption) {
  CLI::App* command = modelsCommand.add_subcommand("import", "Take models of a file as your own");
  const auto options = std::make_shared<ModelsFile>();
  command->add_option("file", options->file, "model file, or CSV file with a heading");
  command->add_flag("--template", options->isTemplate, "print a CSV file with an example");
  command->footer(
      "A recorder that runs knows them from the next request on. A model that is known already is refused, and\n"
      "so is a path with a login; one that may hold something else of your camera is named, and taken.\n"
      "Examples:\n"
      "  recorderctl models import --template > models.csv\n"
      "  recorderctl models import models.csv");
  command->callback([options, &configOption] { ImportModels(*options, configOption); });
}

}  // namespace recorder
