#include <map>
#include <optional>
#include <string>
#include <vector>

#include "recorder/records/records.h"
#include "recorder/records/records_file.h"
#include "recorder/records/refused_logins.h"
#include "recorder/utility/cause_table.h"

namespace recorder {
namespace {

/// A clock that once jumped ahead must not cost more than these.
constexpr int kMostForgottenAtOnce = 100;
/// The oldest events of a camera beyond those that are kept of one. A negative limit would be no limit.
constexpr auto kForgetBeyond =
    "DELETE FROM events WHERE id IN (SELECT id FROM events WHERE cameraId = ?1 ORDER BY id LIMIT "
    "max(0, min(?2, (SELECT count(*) FROM events WHERE cameraId = ?1) - ?3)))";

/// What the contact before came to; "": there was none. Nothing where there is no such camera of that revision.
std::optional<std::string> CauseBefore(SQLite::Database& database, int id, std::optional<int> revision) {
  SQLite::Statement query{database,
                          "SELECT ifnull(cause, ''), revision FROM cameras LEFT JOIN outcomes ON cameraId = id WHERE "
                          "id = ? AND removedAt IS NULL"};
  query.bind(1, id);
  if (!query.executeStep()) return std::nullopt;
  const bool isCurrent = !revision || *revision == query.getColumn(1).getInt();
  return isCurrent ? std::optional(query.getColumn(0).getString()) : std::nullopt;
}

/// The query for the events on one side of an id, in that order. With 10,000 cameras there are millions: the words
/// make SQLite go along the ids, or those of the camera, from there on, and never through all events of a time.
std::string TextOf(const EventFilter& filter, std::int64_t from, bool isBefore) {
  const bool seeksTime = filter.since > 0 && (isBefore || from == 0);  // behind another id nothing older is passed
  std::string text = "SELECT id, cameraId, at, cause, causeBefore FROM events WHERE ";
  text += seeksTime && !isBefore ? "+id" : "id";
  text += isBefore ? " < ?1" : " > ?1";
  if (filter.cameraId) text += " AND cameraId = ?2";
  if (filter.since > 0) text += " AND +at >= ?3";
  if (seeksTime) text += " AND id >= (SELECT min(+id) FROM events INDEXED BY eventsByTime WHERE at >= ?3)";
  if (filter.cause) text += " AND cause = ?4";
  text += " AND EXISTS (SELECT 1 FROM cameras WHERE cameras.id = events.cameraId AND removedAt IS NULL)";
  return text + " ORDER BY id " + (isBefore ? "DESC" : "ASC");
}

/// The first `most` rows; those of causes that only another version of this program knows do not count.
std::vector<CameraEvent> EventsOf(SQLite::Statement& query, std::int64_t id, int most, const EventFilter& filter) {
  query.bind(1, id);
  if (filter.cameraId) query.bind(2, *filter.cameraId);
  if (filter.since > 0) query.bind(3, filter.since);
  if (filter.cause) query.bind(4, std::string(NameOf(*filter.cause)));
  std::vector<CameraEvent> events;
  while (events.size() < static_cast<std::size_t>(most) && query.executeStep()) {
    const auto cause = OutcomeNamed(query.getColumn(3).getString());
    if (!cause) continue;
    events.push_back({query.getColumn(0).getInt64(), query.getColumn(1).getInt(), query.getColumn(2).getInt64(), *cause,
                      OutcomeNamed(query.getColumn(4).getString())});
  }
  return events;
}

}  // namespace

void Records::NoteOutcome(int id, const CameraContact& contact) {
  const std::string name{NameOf(contact.cause)};
  impl_->Guarded([&] {
    const auto isNews = [&] {
      const auto before = CauseBefore(impl_->database, id, contact.revision);
      return before && *before != name;
    };
    if (!isNews()) return;  // without a lock, which others would wait for
    SQLite::Transaction transaction{impl_->database, SQLite::TransactionBehavior::IMMEDIATE};
    if (!isNews()) return;
    impl_->StoreChange(id, contact, name);
    transaction.commit();
  });
}

void Records::Impl::StoreChange(int id, const CameraContact& contact, const std::string& name) {
  Run("INSERT INTO events (cameraId, at, cause, causeBefore) VALUES (?1, ?2, ?3, ifnull((SELECT cause FROM outcomes "
      "WHERE cameraId = ?1), ''))",
      id, contact.at, name);
  Run("INSERT INTO outcomes VALUES (?1, ?2, ?3, ?4) ON CONFLICT (cameraId) DO UPDATE SET cause = ?2, since = ?3, "
      "lastSuccess = max(lastSuccess, ?4)",
      id, name, contact.at, contact.cause == Outcome::kOk ? contact.at : contact.lastSuccess);
  Run("DELETE FROM events WHERE id IN (SELECT id FROM events WHERE at < ? ORDER BY at LIMIT ?)",
      contact.at - std::chrono::seconds(kEventsKept).count(), kMostForgottenAtOnce);
  Run(kForgetBeyond, id, kMostForgottenAtOnce, kMostEvents);
}

std::map<int, CameraOutcome> Records::Outcomes() const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database,
                            "SELECT cameraId, cause, since, lastSuccess FROM outcomes JOIN cameras ON id = cameraId "
                            "WHERE removedAt IS NULL"};
    std::map<int, CameraOutcome> outcomes;
    while (query.executeStep()) {
      const auto cause = OutcomeNamed(query.getColumn(1).getString());
      if (!cause) continue;
      outcomes[query.getColumn(0).getInt()] = {*cause, query.getColumn(2).getInt64(), query.getColumn(3).getInt64()};
    }
    return outcomes;
  });
}

std::optional<CameraOutcome> Records::OutcomeOf(int id) const {
  return impl_->Guarded([&]() -> std::optional<CameraOutcome> {
    SQLite::Statement query{impl_->database,
                            "SELECT cause, since, lastSuccess FROM outcomes JOIN cameras ON id = cameraId WHERE "
                            "removedAt IS NULL AND id = ?"};
    query.bind(1, id);
    const auto cause = query.executeStep() ? OutcomeNamed(query.getColumn(0).getString()) : std::nullopt;
    if (!cause) return std::nullopt;
    return CameraOutcome{*cause, query.getColumn(1).getInt64(), query.getColumn(2).getInt64()};
  });
}

std::vector<RefusedCamera> Records::Impl::RefusedCameras() const {
  SQLite::Statement query{database,
                          "SELECT id, host, port, user, since FROM outcomes JOIN cameras ON id = cameraId WHERE "
                          "removedAt IS NULL AND cause IN (?, ?)"};
  SQLite::bind(query, std::string(NameOf(Outcome::kLoginRefused)), std::string(NameOf(Outcome::kClockUnknown)));
  std::vector<RefusedCamera> refused;
  while (query.executeStep()) {
    CameraRecord camera;
    camera.host = query.getColumn(1).getString();
    camera.port = query.getColumn(2).getInt();
    camera.user = query.getColumn(3).getString();
    refused.push_back({query.getColumn(0).getInt(), LoginOf(camera), query.getColumn(4).getInt64()});
  }
  return refused;
}

std::vector<RefusedCamera> Records::RefusedCameras() const {
  return impl_->Guarded([&] { return impl_->RefusedCameras(); });
}

void Records::Impl::ForgetRefusals(const CameraRecord& camera) {
  const std::string login = LoginOf(camera);
  for (const RefusedCamera& other : RefusedCameras()) {
    const bool isOfLogin = other.id == camera.id || other.login == login;
    if (isOfLogin) Run("UPDATE outcomes SET cause = '' WHERE cameraId = ?", other.id);  // that it worked stays known
  }
}

std::vector<CameraEvent> Records::EventsBefore(std::int64_t id, int most, const EventFilter& filter) const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, TextOf(filter, id, true)};
    return EventsOf(query, id, most, filter);
  });
}

std::vector<CameraEvent> Records::EventsAfter(std::int64_t id, int most, const EventFilter& filter) const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, TextOf(filter, id, false)};
    return EventsOf(query, id, most, filter);
  });
}

/// The index makes SQLite go through that time or that camera alone, and not through the events of 90 days.
std::map<int, int> Records::Flips(std::int64_t since, std::optional<int> cameraId) const {
  return impl_->Guarded([&] {
    const std::string index = cameraId ? "eventsOfCamera WHERE cameraId = ?2 AND" : "eventsByTime WHERE";
    SQLite::Statement query{impl_->database, "SELECT cameraId, count(*) FROM events INDEXED BY " + index +
                                                 " at >= ?1 AND causeBefore <> '' GROUP BY cameraId"};
    query.bind(1, since);
    if (cameraId) query.bind(2, *cameraId);
    std::map<int, int> flips;
    while (query.executeStep()) flips[query.getColumn(0).getInt()] = query.getColumn(1).getInt();
    return flips;
  });
}

std::vector<CameraCount> Records::CountCameras() const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database,
                            "SELECT status, coalesce(cause, ''), count(*) FROM cameras LEFT JOIN outcomes ON id = "
                            "cameraId WHERE removedAt IS NULL GROUP BY 1, 2"};
    std::vector<CameraCount> counts;
    while (query.executeStep()) {
      counts.push_back({static_cast<CAM_CONN_STATUS>(query.getColumn(0).getInt()),
                        OutcomeNamed(query.getColumn(1).getString()), query.getColumn(2).getInt()});
    }
    return counts;
  });
}

}  // namespace recorder
