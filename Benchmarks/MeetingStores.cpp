#include "Benchmarks/MeetingStores.h"

#include "Platform/Foundation/FatalError.h"
#include "Services/Local/CurrentUserRecord.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <cstdlib>
#include <map>

namespace velloren {

namespace {

/// Meetings an hour apart, the first of them `firstHour` hours from now.
std::string adding(const std::string& count, const std::string& firstHour, const std::string& title) {
    return "INSERT INTO meeting WITH RECURSIVE each(hour) AS (SELECT " + firstHour +
           " UNION ALL SELECT hour + 1 FROM each LIMIT " + count + "), timed AS (SELECT hour, " +
           "unixepoch() + hour * 3600 + 600 AS start FROM each) SELECT 'm' || hour, " + title +
           ", strftime('%Y-%m-%dT%H:%M:%S+00:00', start, 'unixepoch'), start FROM timed;";
}

const std::string latin = adding("3", "0", "'Design review: what the notes should tell ' || hour");

const std::map<MeetingStores::Kind, std::string> contents{
    {MeetingStores::Kind::Latin, latin},
    {MeetingStores::Kind::OtherScripts, adding("1", "0", "'Design review'") +
                                            adding("1", "24", "'产品路线图讨论 🎉'") +
                                            adding("1", "48", "'اجتماع الفريق الأسبوعي'")},
    {MeetingStores::Kind::ManyUpcoming, adding("1000000", "0", "'Review ' || hour")},
    {MeetingStores::Kind::ManyPast, latin + adding("1000000", "-1000001", "'Review ' || hour")},
};

std::filesystem::path usersFile() {
    return std::filesystem::path(std::getenv("XDG_DATA_HOME")) / "velloren/meetings.sqlite3";
}

} // namespace

MeetingStores::MeetingStores() {
    std::filesystem::create_directories(usersFile().parent_path());
    for (const auto& [kind, statements] : contents) {
        SQLite::Database database(fileOf(kind), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        database.exec("PRAGMA journal_mode = WAL;"
                      "CREATE TABLE meeting(id TEXT PRIMARY KEY, title TEXT, start_time TEXT, "
                      "start_utc INTEGER NOT NULL); CREATE INDEX meeting_start ON meeting(start_utc);");
        database.exec(statements);
    }
    storeCurrentUser(currentUserFile(), {"7", "ada@velloren.example", true});
}

void MeetingStores::use(Kind kind) const {
    const auto next = usersFile().concat(".next");
    std::filesystem::create_symlink(fileOf(kind), next);
    std::filesystem::rename(next, usersFile());
}

std::filesystem::path MeetingStores::fileOf(Kind kind) const {
    return folder / (std::to_string(int(kind)) + ".sqlite3");
}

} // namespace velloren
