#include "tests/long/watched.h"

#include <algorithm>
#include <stdexcept>

namespace long_tests {

using namespace rig;

namespace {

constexpr int kHostsOfANet = 250;

Json::Value Must(const Answer& answer, int status) {
  if (answer.status != status) throw std::runtime_error(answer.head + answer.body);
  return answer.json["data"];
}

Event EventOf(const Json::Value& json) {
  return {json["id"].asInt64(), json["camera"].asInt(), json["cause"].asString(),
          json["before"].isNull() ? "" : json["before"].asString()};
}

}  // namespace

std::string AddressOf(int number) {
  return "127.0." + std::to_string(100 + number / kHostsOfANet) + "." + std::to_string(1 + number % kHostsOfANet);
}

Json::Value CheapCamera(const std::string& name, int number, const Json::Value& more) {
  Json::Value camera = Camera(name, more);
  camera["address"] = AddressOf(number);
  camera["server"] = "scripted";
  Json::Value& stream = camera["stream"];
  stream["source"] = "clip";
  stream["width"] = 160;
  stream["height"] = 120;
  stream["fps"] = 5;
  return camera;
}

Answer Ask(const TestRecorder& recorder, const std::string& verb, const std::string& path, const Json::Value& body) {
  Headers headers = recorder.Login();
  if (verb == "PATCH") headers["If-Match"] = "*";
  return recorder.Send(verb, "/recorder/1/" + path, headers, body.isNull() ? "" : ToText(body));
}

Json::Value LoginRow(const std::string& address, int port, const std::string& user, const std::string& password) {
  Json::Value row;
  row["vendor"] = "Simcam";
  row["model"] = "RTSP-H264";
  row["host"] = address;
  row["port"] = port;
  row["user"] = user;
  row["password"] = password;
  return row;
}

int Store(const TestRecorder& recorder, const std::string& name, Json::Value row) {
  row["name"] = name;
  row["channel"] = "1";
  row["force"] = true;  // some are stored twice
  return Must(Ask(recorder, "POST", "cameras", row), 201)["id"].asInt();
}

std::vector<Event> EventsAfter(const TestRecorder& recorder, std::int64_t id) {
  std::vector<Event> events;
  bool isEnough = false;
  for (std::string page; !isEnough;) {
    const Json::Value data = Must(Ask(recorder, "GET", "events?limit=1000" + page), 200);
    for (const Json::Value& event : data["events"]) {
      if (event["id"].asInt64() > id) events.push_back(EventOf(event));
    }
    isEnough = data["next"].isNull() || data["next"].asInt64() <= id;
    page = "&after=" + data["next"].asString();
  }
  std::reverse(events.begin(), events.end());
  return events;
}

}  // namespace long_tests
