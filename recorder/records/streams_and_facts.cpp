#include <algorithm>
#include <map>
#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "recorder/records/records.h"
#include "recorder/records/records_file.h"
#include "recorder/utility/cause_table.h"
#include "recorder/utility/watch_clock.h"

namespace recorder {
namespace {

/// What the main stream is asked by.
auto MainOf(const CameraRecord& camera) {
  return std::tie(camera.vendor, camera.model, camera.port, camera.channel, camera.sourcePath);
}

CameraStream StreamOf(SQLite::Statement& row) {
  CameraStream stream;
  int column = 0;
  for (std::string* text : {&stream.name, &stream.address, &stream.vendor, &stream.model}) {
    *text = row.getColumn(column++).getString();
  }
  stream.port = row.getColumn(column++).getInt();
  for (std::string* text : {&stream.channel, &stream.sourcePath}) *text = row.getColumn(column++).getString();
  return stream;
}

}  // namespace

void Records::Impl::StoreStreams(int id, const std::vector<CameraStream>& streams) {
  RequireNoMistake(FindMistake(streams));
  Run("DELETE FROM streams WHERE cameraId = ?", id);
  for (const CameraStream& stream : streams) {
    const CameraStream asked = stream.name == kOwnStream ? CameraStream() : stream;
    Run("INSERT INTO streams VALUES (?, ?, ?, ?, ?, ?, ?, ?)", id, stream.name, stream.address, asked.vendor,
        asked.model, asked.port, asked.channel, asked.sourcePath);
  }
}

void Records::Impl::StoreFacts(int id, const std::vector<CameraFact>& facts) {
  RequireNoMistake(FindMistake(facts));
  Run("DELETE FROM facts WHERE cameraId = ?", id);
  for (const CameraFact& fact : facts) {
    Run("INSERT INTO facts VALUES (?, ?, ?, ?, ?, ?)", id, fact.stream, fact.name, fact.value, fact.from, fact.at);
  }
}

/// Facts of further streams that are no longer asked by the same.
void Records::Impl::ForgetFactsOfOthers(int id, const std::vector<CameraStream>& streams) {
  for (const char* name : std::span(kStreamNames).subspan<1>()) {
    const auto stream = std::ranges::find(streams, name, &CameraStream::name);
    const CameraStream asked = stream == streams.end() ? CameraStream() : *stream;
    Run("DELETE FROM facts WHERE cameraId = ?1 AND stream = ?2 AND NOT EXISTS (SELECT * FROM streams WHERE cameraId = "
        "?1 AND name = ?2 AND (vendor, model, port, channel, sourcePath) = (?3, ?4, ?5, ?6, ?7))",
        id, name, asked.vendor, asked.model, asked.port, asked.channel, asked.sourcePath);
  }
}

void Records::Impl::ForgetOutdated(const CameraRecord& before, const CameraRecord& after, const CameraChange& change) {
  const int id = after.id;
  const bool isAskedElse = before.host != after.host || MainOf(before) != MainOf(after);
  const bool isElsewhere = before.host != after.host || before.port != after.port;
  const bool isOther = before.host != after.host || before.user != after.user;
  const bool mayLogInNow =
      change.password != nullptr || change.forgetsLogin || change.forgetsCertificates || change.streams;
  if (isElsewhere || change.forgetsLogin) Run("UPDATE cameras SET strongestLogin = 0 WHERE id = ?", id);
  if (isElsewhere || change.forgetsCertificates) Run("DELETE FROM certificates WHERE cameraId = ?", id);
  if (isAskedElse) Run("DELETE FROM outcomes WHERE cameraId = ?", id);
  if (mayLogInNow || isAskedElse) ForgetRefusals(after);
  if (isOther) {
    Run("DELETE FROM streams WHERE cameraId = ?", id);
    Run("DELETE FROM facts WHERE cameraId = ?", id);
  } else if (isAskedElse) {
    Run("DELETE FROM streams WHERE cameraId = ? AND name = ?", id, kOwnStream);
    Run("DELETE FROM facts WHERE cameraId = ? AND stream = ?", id, kOwnStream);
  }
  if (change.streams) ForgetFactsOfOthers(id, *change.streams);
}

void Records::Impl::BeginAnew(const CameraRecord& before, const CameraRecord& after) {
  if (before.status != CAM_CONN_STATUS_DISABLED || after.status == CAM_CONN_STATUS_DISABLED) return;
  Run("UPDATE outcomes SET since = ? WHERE cameraId = ? AND cause = ?", WatchClock::Seconds(), after.id,
      std::string(NameOf(Outcome::kOk)));
}

std::vector<CameraStream> Records::Streams(int id) const {
  return impl_->Guarded([&] {
    const auto camera = Find(id);
    if (!camera) return std::vector<CameraStream>();
    std::vector<CameraStream> streams = {
        {kOwnStream, "", camera->vendor, camera->model, camera->port, camera->channel, camera->sourcePath}};
    SQLite::Statement query{impl_->database,
                            "SELECT name, address, vendor, model, port, channel, sourcePath FROM streams WHERE "
                            "cameraId = ? ORDER BY name"};
    query.bind(1, id);
    while (query.executeStep()) {
      CameraStream stream = StreamOf(query);
      if (stream.name == kOwnStream) {
        streams.front().address = stream.address;
      } else {
        streams.push_back(std::move(stream));
      }
    }
    return streams;
  });
}

std::map<int, std::vector<std::string>> Records::StreamNames() const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database,
                            "SELECT id, streams.name FROM cameras LEFT JOIN streams ON cameraId = id AND streams.name "
                            "<> ? WHERE removedAt IS NULL ORDER BY id, streams.name"};
    query.bind(1, kOwnStream);
    std::map<int, std::vector<std::string>> names;
    while (query.executeStep()) {
      std::vector<std::string>& ofCamera = names[query.getColumn(0).getInt()];
      if (ofCamera.empty()) ofCamera.emplace_back(kOwnStream);
      if (!query.getColumn(1).isNull()) ofCamera.push_back(query.getColumn(1).getString());
    }
    return names;
  });
}

std::vector<CameraFact> Records::Facts(int id) const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database,
                            "SELECT stream, facts.name, value, source, at FROM facts JOIN cameras ON id = cameraId "
                            "WHERE id = ? AND removedAt IS NULL ORDER BY facts.rowid"};
    query.bind(1, id);
    std::vector<CameraFact> facts;
    while (query.executeStep()) {
      facts.push_back({query.getColumn(0).getString(), query.getColumn(1).getString(), query.getColumn(2).getString(),
                       query.getColumn(3).getString(), query.getColumn(4).getInt64()});
    }
    return facts;
  });
}

}  // namespace recorder
