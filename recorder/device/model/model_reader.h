#pragma once

#include <memory>
#include <string>
#include <vector>

#include "recorder/device/model/model.h"

namespace recorder {

/// One mistake in a model file.
struct ModelMistake {
  std::string file;
  std::string place;  ///< JSON pointer (RFC 6901), or line and column where the text is no JSON; "" for the whole file
  std::string text;
};

/// Who a model is from.
enum class ModelOrigin {
  kBuiltIn,
  kShipped,  ///< the recorder's own folder of models
  kOwn,      ///< the user's
};

/// What one model file says.
struct VendorModels {
  std::string vendor;
  std::string file;  ///< its path
  ModelOrigin origin = ModelOrigin::kShipped;
  std::vector<Model> models;
};

/// Reads model files: JSON, checked against a JSON Schema and against what a schema cannot say.
/// Thread: several threads may read at once.
class ModelReader {
 public:
  /// Loads the schema at `schemaFile`; without a usable one, every file that is read has that as its mistake.
  explicit ModelReader(const std::string& schemaFile);
  ~ModelReader();

  /// Reads the file at `path`. When there are mistakes, they are appended to `mistakes` and the result is null.
  std::unique_ptr<VendorModels> Read(const std::string& path, std::vector<ModelMistake>& mistakes) const;

  /// The same for the text of a file that stands, or is going to stand, at `path`.
  std::unique_ptr<VendorModels> ReadText(const std::string& text, const std::string& path,
                                         std::vector<ModelMistake>& mistakes) const;

 private:
  struct Schema;
  std::unique_ptr<const Schema> schema_;
  std::string schemaMistake_;
};

}  // namespace recorder
