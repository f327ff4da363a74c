#pragma once

#include <json/json.h>

#include <filesystem>

#include "rig/questions.h"

// The model files that come with the recorder, for simulated cameras to be found by.

/// The files' ports, such as 554, are no test's to listen on. Without a port, that of the user counts.
inline void LeaveOutPorts(Json::Value& json) {
  if (json.isObject()) json.removeMember("port");
  if (json.isObject() || json.isArray()) {
    for (Json::Value& member : json) LeaveOutPorts(member);
  }
}

/// Copies all of them to `folder` without their ports, all else untouched.
inline void CopyShippedModels(const rig::TempFolder& folder) {
  rig::CopySchema(folder);
  for (const auto& entry : std::filesystem::directory_iterator(SOURCE_FOLDER "/models")) {
    Json::Value file = rig::ParseJson(rig::ReadText(entry.path()));
    if (!file.isMember("vendor")) continue;  // the schema
    LeaveOutPorts(file);
    folder.Write(entry.path().filename(), rig::ToText(file));
  }
}
