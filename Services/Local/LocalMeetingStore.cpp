#include "Services/Local/LocalMeetingStore.h"

#include "Platform/Foundation/Directories.h"
#include "Services/Local/Text.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <algorithm>
#include <array>
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
// handler; only its sleeps can be cut short.
const char* fileSystem() {
    static sqlite3_vfs shared = [] {
        sqlite3_vfs changed = *sqlite3_vfs_find(nullptr);
        changed.zName = "velloren-deadline";
        changed.xSleep = &sleepUntilDeadline;
        return changed;
    }();
    static const bool registered = sqlite3_vfs_register(&shared, 0) == SQLITE_OK;
    return registered ? shared.zName : nullptr;
}

void keepDeadline(sqlite3* database) {
    sqlite3_progress_handler(database, stepsBetweenLooksAtTheTime, &interruptWork, nullptr);
    sqlite3_busy_handler(database, &waitForLock, nullptr);
}

bool isMissingOrRegular(const std::filesystem::path& path) {
    std::error_code error;
    const auto type = std::filesystem::status(path, error).type();
    return type == std::filesystem::file_type::regular || type == std::filesystem::file_type::not_found;
}

// Opening anything but a regular file could block.
bool canBeOpened(const std::filesystem::path& file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error))
        return false;
    const std::string base = file.string();
    const std::array<std::string, 3> companions{base + "-wal", base + "-shm", base + "-journal"};
    if (!std::all_of(companions.begin(), companions.end(), isMissingOrRegular))
        return false;
    const auto logSize = std::filesystem::file_size(companions.front(), error);
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

std::optional<std::string> plainTextOf(const SQLite::Column& column) {
    auto text = textOf(column);
    return text && isPlainText(*text) ? text : std::nullopt;
}

Meeting meetingIn(SQLite::Statement& row) {
    Meeting meeting;
    meeting.id = plainTextOf(row.getColumn(0));
    if (const auto title = textOf(row.getColumn(1)))
        meeting.title = repairedText(*title);
    meeting.startTime = plainTextOf(row.getColumn(2));
    return meeting;
}

// A start that is no number would compare as later than any number.
std::string queryOrdered(bool ascending) {
    const std::string direction = ascending ? "ASC" : "DESC";
    return "SELECT id, title, start_time FROM meeting "
           "WHERE start_utc >= ? AND typeof(start_utc) IN ('integer', 'real') "
           "ORDER BY start_utc " +
           direction + ", id " + direction;
}

std::vector<Meeting> meetingsFrom(const std::filesystem::path& file, std::int64_t earliest, bool ascending) {
    deadline = SteadyClock::now() + timeLimit;
    const SQLite::Database database(file.c_str(), SQLite::OPEN_READONLY | SQLite::OPEN_NOMUTEX, 0,
                                    fileSystem());
    keepDeadline(database.getHandle());
    distrust(database.getHandle());

    SQLite::Statement query(database, queryOrdered(ascending));
    query.bind(1, earliest);
    std::vector<Meeting> meetings;
    while (query.executeStep())
        meetings.push_back(meetingIn(query));
    return meetings;
}

} // namespace

LocalMeetingStore::LocalMeetingStore(std::filesystem::path file, Clock clock)
    : file(std::move(file)), clock(std::move(clock)) {}

std::unique_ptr<LocalMeetingStore> LocalMeetingStore::ofThisUser() {
    const auto folder = directories::data();
    return std::make_unique<LocalMeetingStore>(folder ? *folder / "meetings.sqlite3"
                                                      : std::filesystem::path());
}

std::optional<std::vector<Meeting>> LocalMeetingStore::upcomingMeetings(bool ascending) {
    if (!canBeOpened(file))
        return std::nullopt;
    const auto earliest = std::chrono::ceil<std::chrono::seconds>(clock()).time_since_epoch().count();
    try {
        return meetingsFrom(file, earliest, ascending);
    } catch (const SQLite::Exception&) {
        return std::nullopt;
    }
}

Date LocalMeetingStore::systemClock() {
    return std::chrono::floor<Date::duration>(std::chrono::system_clock::now());
}

} // namespace velloren
