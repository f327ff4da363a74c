#pragma once

#include <json/json.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "recorder/device/model/model_checker.h"
#include "recorder/device/model/model_files.h"
#include "recorder/utility/handle.h"

namespace recorder {

/// The user's own models, as somebody changes them: files of one folder, one a vendor, beside the shipped ones, which
/// an update leaves alone. A model that is known already is never changed.
///
/// Owner:   holds the lock on the folder: one at a time, in whatever process, changes it.
/// Thread:  one thread uses an object.
/// Failure: throws std::exception with a text for the user; until Write() the files are as they were.
class OwnModels {
 public:
  /// Makes the folder (mode 0700), waits for its lock and reads what is known. Call SetModelFolders() with the same
  /// folders before.
  explicit OwnModels(const ModelFolders& folders);

  /// Takes `model`, an entry of a model file: all that it says is then said by the user, who has it from `document`,
  /// a text for people, since `day` ("2026-01-31"). Capitals in the names make no difference: the vendor is written as
  /// it is known. With mistakes, which it returns by their place in the entry ("/vendor": the vendor), it takes
  /// nothing. A path must hold no login; see FindPathLogin(). What is said of one camera alone is not taken over.
  std::vector<PlacedMistake> Add(const std::string& vendor, Json::Value model, const std::string& document,
                                 const std::string& day);

  /// Takes a model away. False when it is none of the user's own.
  bool Remove(const std::string& vendor, const std::string& model);

  /// Writes what was changed: files of mode 0600, each whole or not at all. From the next request on the recorder
  /// knows it. Writes nothing when a file would be none that the recorder reads.
  void Write();

 private:
  struct File {
    std::filesystem::path path;
    Json::Value json;
    std::string mistake;  ///< "": none
    bool isChanged = false;
  };

  void ReadKnown(const ModelFolders& folders);
  void ReadFiles();
  std::vector<PlacedMistake> FindMistakes(const std::string& vendor, const Json::Value& model) const;
  std::string SpellingOf(const std::string& vendor) const;
  File& FileOf(const std::string& vendor);

  std::filesystem::path folder_;
  FileDescriptor lock_;
  std::map<std::string, std::string> vendors_;                        // as they are written, by small letters
  std::map<std::pair<std::string, std::string>, std::string> known_;  // files, by vendor and name in small letters
  std::map<std::string, File> files_;                                 // by vendor in small letters
};

/// What the paths of `model`, an entry that was taken, may hold of one camera or its owner, by their places: its user
/// decides, by the time that the model is handed on. Pure, any thread.
std::vector<PlacedMistake> FindDoubts(const Json::Value& model);

}  // namespace recorder
