#pragma once

#include <json/json.h>

#include <cstddef>
#include <filesystem>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "rig/callers.h"
#include "rig/cameras.h"
#include "rig/recorder.h"

// Requests whose answers carry a mark. Every caller has a camera model and a camera of its own, whose picture has a
// size of its own; the rows of its lists have names that are used once; and a faulty camera has its error code.

namespace rig {

/// The cameras of `callers` callers, and the faulty ones of all.
Json::Value CameraConfigs(int callers);
/// Every models folder holds the schema of its files.
void CopySchema(const TempFolder& folder);
/// Makes `folder` a models folder: vendor "Rig", for each caller a model "C<number>". Returns its path.
std::filesystem::path WriteModels(const TempFolder& folder, int callers);

/// The questions of one caller. One thread.
class Questioner {
 public:
  /// Takes the whole answers of the two methods that have no parameter from `recorder`, before the load begins. Throws
  /// when the models of this run are not among them.
  Questioner(const TestRecorder& recorder, const SimCameras& cameras, int number, unsigned int seed);

  /// One of the eight methods.
  Question Any();
  /// One of the three that contact no camera.
  Question List();
  /// A test, a picture or a size of this caller's camera, or what it says of itself over ONVIF.
  Question Camera();
  /// A list of ONVIF cameras whose answers only cost memory and time, of each kind in turn.
  Question HostileBatch();
  /// What this caller's camera says over ONVIF, asked now, which writes its capability file.
  Question AskOnvif();
  /// The same as it was kept; AskOnvif() must have been answered before.
  Question AskKept();
  /// What this caller's model can do.
  Question Capability();
  /// A picture as it stands, which is no JSON.
  Question RawPicture();

 private:
  /// A camera to test, and the code that the test must give.
  struct Target {
    int port;
    std::string password;
    int code;
  };
  Target AnyTarget();
  /// The parameters of all methods that have a camera; each takes those that it knows.
  Json::Value Params(const Target& target) const { return CameraParams(target.port, target.password, model_); }
  Question Post(const std::string& method, const Json::Value& params,
                std::function<std::string(const Json::Value&)> mistake) const;
  Question Whole(const std::string& method, const std::string& answer) const;
  Question OfModel(const std::string& method) const;
  Question Onvif(int command);
  Question Test();
  Question Batch(const std::vector<Target>& targets, const std::string& model);
  Question Remote();
  Question Size();
  Question Picture();
  int Random(int below) { return std::uniform_int_distribution(0, below - 1)(random_); }

  const SimCameras& cameras_;
  const Headers login_;
  const std::string modelList_;
  const std::string storedCapabilities_;
  const int number_;
  const Target own_;
  const std::string model_;  ///< "Rig C<number>"
  const std::string size_;   ///< of the own camera's picture, as "320x240"
  std::mt19937 random_;
  long rows_ = 0;  ///< of all lists so far
  std::size_t hostileLists_ = 0;
};

std::vector<Questioner> MakeQuestioners(const TestRecorder& recorder, const SimCameras& cameras, int count,
                                        unsigned int seed);
/// For each of them a source of questions of that kind.
std::vector<Callers::Source> SourcesOf(std::span<Questioner> questioners, Question (Questioner::*ask)());

}  // namespace rig
