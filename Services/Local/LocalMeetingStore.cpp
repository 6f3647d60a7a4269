#include "Services/Local/LocalMeetingStore.h"

#include "Platform/Foundation/Directories.h"
#include "Platform/Foundation/Utf8.h"
#include "Services/Local/FileWatch.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <sqlite3.h>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

namespace velloren {

namespace {

using SteadyClock = std::chrono::steady_clock;

// The whole answer is due within 50 ms; a little is left for opening and closing.
constexpr std::chrono::milliseconds timeLimit(45);
constexpr std::chrono::milliseconds pauseWhileLocked(1);
constexpr int stepsBetweenLooksAtTheTime = 1000;
constexpr std::int64_t mostCounted = 10'000; // takes less than a millisecond
constexpr int longestValue = 1024 * 1024;
// The first reader after a crash reads the whole log in one go, without looking at the time.
constexpr std::uintmax_t largestWriteAheadLog = std::uintmax_t{16} * 1024 * 1024;

// When the query of this thread must be done. SQLite asks while it works and while it waits for a lock.
thread_local SteadyClock::time_point deadline;

int interruptWork(void*) {
    return SteadyClock::now() >= deadline ? 1 : 0;
}

int waitForLock(void*, int) {
    if (SteadyClock::now() >= deadline)
        return 0;
    std::this_thread::sleep_for(pauseWhileLocked);
    return 1;
}

int sleepUntilDeadline(sqlite3_vfs*, int microseconds) {
    const auto remaining = deadline - SteadyClock::now();
    if (remaining > SteadyClock::duration::zero())
        std::this_thread::sleep_for(
            std::min<SteadyClock::duration>(remaining, std::chrono::microseconds(microseconds)));
    return microseconds;
}

// While another process recovers the write-ahead log, SQLite retries for ten seconds without asking the busy
// handler; only its sleeps can be cut short. None where SQLite has no memory left.
const char* fileSystemWithDeadline() {
    static sqlite3_vfs fileSystem = [] {
        sqlite3_vfs copy = *sqlite3_vfs_find(nullptr);
        copy.zName = "velloren";
        copy.xSleep = &sleepUntilDeadline;
        return copy;
    }();
    static const bool isRegistered = sqlite3_vfs_register(&fileSystem, 0) == SQLITE_OK;
    return isRegistered ? fileSystem.zName : nullptr;
}

void keepDeadline(sqlite3* database) {
    sqlite3_progress_handler(database, stepsBetweenLooksAtTheTime, &interruptWork, nullptr);
    sqlite3_busy_handler(database, &waitForLock, nullptr);
}

// Opening anything but a regular file could block.
bool canBeOpened(const std::filesystem::path& file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error))
        return false;
    const auto logSize = std::filesystem::file_size(file.string() + "-wal", error);
    return error || logSize <= largestWriteAheadLog;
}

void distrust(sqlite3* database) {
    sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_limit(database, SQLITE_LIMIT_LENGTH, longestValue);
}

std::optional<std::string> textOf(const SQLite::Column& column) {
    if (!column.isText())
        return std::nullopt;
    return column.getString();
}

std::optional<std::string> repairedTextOf(const SQLite::Column& column) {
    const auto text = textOf(column);
    return text ? std::optional(repairedText(*text)) : std::nullopt;
}

/// None where the id cannot travel: nobody could be asked to open that meeting.
std::optional<Meeting> meetingIn(SQLite::Statement& row) {
    auto id = textOf(row.getColumn(0));
    if (id && !isPlainText(*id))
        return std::nullopt;
    return Meeting{std::move(id), repairedTextOf(row.getColumn(1)), repairedTextOf(row.getColumn(2))};
}

// A start that is no number would compare as later than any number.
const std::string upcoming =
    " FROM meeting WHERE start_utc >= ? AND typeof(start_utc) IN ('integer', 'real') ";

std::optional<std::size_t> countIn(const SQLite::Database& database, std::int64_t earliest) {
    try {
        SQLite::Statement query(database, "SELECT count(*) FROM (SELECT 1" + upcoming + "LIMIT ?)");
        query.bind(1, earliest);
        query.bind(2, mostCounted + 1);
        if (!query.executeStep() || query.getColumn(0).getInt64() > mostCounted)
            return std::nullopt;
        return static_cast<std::size_t>(query.getColumn(0).getInt64());
    } catch (const SQLite::Exception&) {
        return std::nullopt;
    }
}

NextMeetings meetingsIn(SQLite::Database& database, std::int64_t earliest, bool ascending, std::size_t most) {
    keepDeadline(database.getHandle());
    distrust(database.getHandle());

    const SQLite::Transaction bothOfOneMoment(database);
    const std::string direction = ascending ? "ASC" : "DESC";
    SQLite::Statement query(database, "SELECT id, title, start_time" + upcoming + "ORDER BY start_utc " +
                                          direction + ", id " + direction);
    query.bind(1, earliest);
    NextMeetings next;
    std::size_t leftOut = 0;
    while (next.first.size() < most && query.executeStep()) {
        if (auto meeting = meetingIn(query))
            next.first.push_back(*std::move(meeting));
        else
            ++leftOut;
    }
    next.count = next.first.size();
    if (next.first.size() == most) {
        next.count = countIn(database, earliest);
        if (next.count)
            *next.count -= leftOut;
    }
    return next;
}

} // namespace

LocalMeetingStore::LocalMeetingStore(std::filesystem::path file, Clock clock)
    : file(std::move(file)), clock(std::move(clock)) {}

std::unique_ptr<LocalMeetingStore> LocalMeetingStore::ofThisUser() {
    const auto folder = directories::data();
    return std::make_unique<LocalMeetingStore>(folder ? *folder / "meetings.sqlite3"
                                                      : std::filesystem::path());
}

std::optional<NextMeetings> LocalMeetingStore::upcomingMeetings(bool ascending, std::size_t most) {
    if (!canBeOpened(file))
        return std::nullopt;
    const auto earliest = std::chrono::ceil<std::chrono::seconds>(clock()).time_since_epoch().count();
    deadline = SteadyClock::now() + timeLimit;
    try {
        SQLite::Database database(file.c_str(), SQLite::OPEN_READONLY | SQLite::OPEN_NOMUTEX, 0,
                                  fileSystemWithDeadline());
        return meetingsIn(database, earliest, ascending, most);
    } catch (const SQLite::Exception&) {
        return std::nullopt;
    }
}

Subscription LocalMeetingStore::whenChanged(std::function<void()> changed) {
    // Commits go to the log. Its coming and going are no change: this process's own queries may cause them.
    return watchFile(file, file.filename().string() + "-wal", std::move(changed));
}

Date LocalMeetingStore::systemClock() {
    return std::chrono::floor<Date::duration>(std::chrono::system_clock::now());
}

} // namespace velloren
