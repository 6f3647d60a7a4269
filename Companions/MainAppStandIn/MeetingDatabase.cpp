#include "Companions/MainAppStandIn/MeetingDatabase.h"

#include "Platform/Foundation/Directories.h"
#include "Platform/Foundation/PrivateFiles.h"

#include <QDateTime>
#include <SQLiteCpp/SQLiteCpp.h>

#include <utility>

namespace velloren {

namespace {

constexpr int lockTimeout = 2000; // milliseconds

std::string iso8601(Date start) {
    const auto local = QDateTime::fromMSecsSinceEpoch(start.time_since_epoch().count());
    return local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODate).toStdString();
}

} // namespace

MeetingDatabase::MeetingDatabase(std::filesystem::path path) : file(std::move(path)) {
    (void)createPrivateFolder(file.parent_path()); // opening says why where it is missing
    SQLite::Database database(file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, lockTimeout);
    database.exec("PRAGMA journal_mode = WAL");
    database.exec("CREATE TABLE IF NOT EXISTS meeting(id TEXT PRIMARY KEY, title TEXT, start_time TEXT, "
                  "start_utc INTEGER NOT NULL)");
    database.exec("CREATE INDEX IF NOT EXISTS meeting_start ON meeting(start_utc)");
}

std::filesystem::path MeetingDatabase::usualPath() {
    const auto folder = directories::data();
    return folder ? *folder / "meetings.sqlite3" : std::filesystem::path();
}

void MeetingDatabase::add(const std::string& id, const std::string& title, Date start) {
    SQLite::Database database(file, SQLite::OPEN_READWRITE, lockTimeout);
    SQLite::Statement insertion(database, "INSERT OR REPLACE INTO meeting VALUES (?, ?, ?, ?)");
    insertion.bind(1, id);
    insertion.bind(2, title);
    insertion.bind(3, iso8601(start));
    insertion.bind(4,
                   std::int64_t(std::chrono::floor<std::chrono::seconds>(start).time_since_epoch().count()));
    insertion.exec();
}

void MeetingDatabase::clear() {
    SQLite::Database(file, SQLite::OPEN_READWRITE, lockTimeout).exec("DELETE FROM meeting");
}

std::string MeetingDatabase::titleOf(const std::string& id) const {
    const SQLite::Database database(file, SQLite::OPEN_READONLY, lockTimeout);
    SQLite::Statement query(database, "SELECT title FROM meeting WHERE id = ?");
    query.bind(1, id);
    return query.executeStep() ? query.getColumn(0).getString() : std::string();
}

} // namespace velloren
