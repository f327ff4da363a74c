#pragma once

#include <json/json.h>

#include <cstdint>
#include <string>
#include <vector>

#include "rig/cameras.h"

// Stored cameras that are watched: what is asked of the recorder, as its users would.

namespace long_tests {

/// A camera that costs little, at an address of its own: 127.0.100.1 and so on.
Json::Value CheapCamera(const std::string& name, int number, const Json::Value& more = Json::Value(Json::objectValue));
std::string AddressOf(int number);

/// Throws NoAnswer.
rig::Answer Ask(const rig::TestRecorder& recorder, const std::string& verb, const std::string& path,
                const Json::Value& body = {});

/// A row that names the camera and a login, for storing it and for runs.
Json::Value LoginRow(const std::string& address, int port, const std::string& user, const std::string& password);

/// Stores it and returns its id; throws when it is refused.
int Store(const rig::TestRecorder& recorder, const std::string& name, Json::Value row);

struct Event {
  std::int64_t id;
  int camera;
  std::string cause;
  std::string before;  // "" where there was no contact before
};

/// All behind that one, the oldest first. Throws NoAnswer.
std::vector<Event> EventsAfter(const rig::TestRecorder& recorder, std::int64_t id);

}  // namespace long_tests
