#include "Platform/Foundation/SharedInstance.h"
#include "Services/Local/LocalMeetingStore.h"
#include "Tests/Services/LockHolder.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace velloren {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

constexpr const char* schema =
    "CREATE TABLE meeting(id TEXT PRIMARY KEY, title TEXT, start_time TEXT, start_utc INTEGER NOT NULL);"
    "CREATE INDEX meeting_start ON meeting(start_utc);";

class LocalMeetingStoreTest : public testing::Test {
  protected:
    SQLite::Database writer(std::string_view statements) const {
        SQLite::Database database(file.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        database.exec("PRAGMA journal_mode=WAL");
        database.exec(std::string(statements));
        return database;
    }

    void fill(std::string_view statements) const { writer(std::string(schema) + std::string(statements)); }

    // What is written stays in the write-ahead log, as when the main app is killed.
    void writeAndCrash(std::string_view statements) const {
        const pid_t mainApp = ::fork();
        if (mainApp == 0) {
            const SQLite::Database database = writer(std::string(schema) + std::string(statements));
            ::_exit(database.getHandle() ? 0 : 1);
        }
        ASSERT_EQ(::waitpid(mainApp, nullptr, 0), mainApp);
    }

    [[nodiscard]] std::optional<std::vector<std::string>> ids(bool ascending = true) {
        const auto meetings = store.upcomingMeetings(ascending);
        if (!meetings)
            return std::nullopt;
        std::vector<std::string> result;
        for (const Meeting& meeting : *meetings)
            result.push_back(meeting.id.value_or("none"));
        return result;
    }

    TemporaryDirectory directory;
    std::filesystem::path file = directory / "meetings.sqlite3";
    Date now{std::chrono::seconds(1000)};
    LocalMeetingStore store{file, [this] { return now; }};
};

TEST_F(LocalMeetingStoreTest, OrdersUpcomingMeetingsByStartThenId) {
    fill("INSERT INTO meeting VALUES('late','','',3000),('b','','',2000),('a','','',2000),('c','','',2000),"
         "('soon','','',1500)");
    EXPECT_THAT(ids(true), Optional(ElementsAre("soon", "a", "b", "c", "late")));
    EXPECT_THAT(ids(false), Optional(ElementsAre("late", "c", "b", "a", "soon")));
}

TEST_F(LocalMeetingStoreTest, LeavesOutWhatHasStarted) {
    fill("INSERT INTO meeting VALUES('past','','',999),('now','','',1000),('next','','',1001)");
    EXPECT_THAT(ids(), Optional(ElementsAre("now", "next")));
    now += std::chrono::milliseconds(1);
    EXPECT_THAT(ids(), Optional(ElementsAre("next")));
}

TEST_F(LocalMeetingStoreTest, ReadsTextsAsTheyAreStoredAndNothingElse) {
    fill("");
    EXPECT_THAT(store.upcomingMeetings(true), Optional(IsEmpty()));
    SQLite::Database(file.string(), SQLite::OPEN_READWRITE)
        .exec("INSERT INTO meeting VALUES('m1','K\u00f6ln <b>','2026-03-07T14:05:00+01:00',2000),"
              "(NULL,NULL,NULL,3000),(x'00ff',x'41',x'42',4000),"
              "(CAST(x'61ff' AS TEXT),CAST(x'61ff7a' AS TEXT),CAST(x'ff' AS TEXT),5000)");
    EXPECT_THAT(store.upcomingMeetings(true),
                Optional(ElementsAre(
                    Meeting{.id = "m1", .title = "K\u00f6ln <b>", .startTime = "2026-03-07T14:05:00+01:00"},
                    Meeting{}, Meeting{}, Meeting{.id = {}, .title = "a\uFFFDz", .startTime = {}})));
}

TEST_F(LocalMeetingStoreTest, SkipsAStartThatIsNoNumber) {
    fill("INSERT INTO meeting VALUES('text','','','soon'),('blob','','',x'ffff'),('good','','',2000)");
    EXPECT_THAT(ids(), Optional(ElementsAre("good")));
}

TEST_F(LocalMeetingStoreTest, CannotReadAMissingStoreAndDoesNotMakeIt) {
    EXPECT_EQ(store.upcomingMeetings(true), std::nullopt);
    EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
    EXPECT_EQ(LocalMeetingStore(std::filesystem::path()).upcomingMeetings(true), std::nullopt);
}

TEST_F(LocalMeetingStoreTest, CannotReadWhatIsNoStoreOrADamagedOrUnreasonableOne) {
    const auto putFifoAt = [this](const char* suffix) {
        std::filesystem::remove(file.string() + suffix);
        ASSERT_EQ(::mkfifo((file.string() + suffix).c_str(), S_IRWXU), 0);
    };

    struct Trouble {
        const char* name;
        std::function<void()> make;
    };

    const std::vector<Trouble> troubles{
        {"FIFO", [&] { putFifoAt(""); }},
        {"FIFO as journal", [&] { putFifoAt("-journal"); }},
        {"FIFO as log", [&] { putFifoAt("-wal"); }},
        {"FIFO as index of the log", [&] { putFifoAt("-shm"); }},
        {"folder", [&] { std::filesystem::remove(file), std::filesystem::create_directory(file); }},
        {"empty", [&] { std::filesystem::resize_file(file, 0); }},
        {"garbage", [&] { std::ofstream(file) << std::string(10'000, 'x'); }},
        {"other columns", [&] { writer("ALTER TABLE meeting RENAME title TO name"); }},
        {"damaged pages",
         [&] {
             std::fstream contents(file, std::ios::in | std::ios::out | std::ios::binary);
             contents.seekp(4096) << std::string(std::filesystem::file_size(file) - 4096, '\xA5');
         }},
        {"log that takes too long to read",
         [&] {
             std::ofstream(file.string() + "-wal") << "";
             std::filesystem::resize_file(file.string() + "-wal", std::uintmax_t{1} << 30);
         }},
        {"enormous field", [&] { writer("UPDATE meeting SET title = hex(zeroblob(20000000))"); }},
        {"no end",
         [&] {
             writer("DROP TABLE meeting; CREATE VIEW meeting AS WITH RECURSIVE n(i) AS "
                    "(SELECT 2000 UNION ALL SELECT i+1 FROM n) SELECT 'm'||i AS id, '' AS title, "
                    "'' AS start_time, i AS start_utc FROM n");
         }},
    };
    for (const Trouble& trouble : troubles) {
        fill("INSERT INTO meeting VALUES('m','','',2000)");
        ASSERT_THAT(ids(), Optional(ElementsAre("m"))) << trouble.name;
        trouble.make();
        EXPECT_EQ(store.upcomingMeetings(true), std::nullopt) << trouble.name;
        for (const char* suffix : {"", "-journal", "-wal", "-shm"})
            std::filesystem::remove(file.string() + suffix);
    }
}

TEST_F(LocalMeetingStoreTest, CannotReadAStoreThatIsLockedExclusively) {
    fill("INSERT INTO meeting VALUES('m','','',2000)");
    {
        SQLite::Database holder(file.string(), SQLite::OPEN_READWRITE);
        holder.exec("PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE; DELETE FROM meeting");
        EXPECT_EQ(store.upcomingMeetings(true), std::nullopt);
    }
    EXPECT_THAT(ids(), Optional(ElementsAre("m")));
}

TEST_F(LocalMeetingStoreTest, ReadsWhileTheMainAppWrites) {
    auto mainApp = writer(std::string(schema) + "INSERT INTO meeting VALUES('m','','',2000)");
    mainApp.exec("BEGIN IMMEDIATE; DELETE FROM meeting");
    EXPECT_THAT(ids(), Optional(ElementsAre("m")));
    mainApp.exec("COMMIT");
    EXPECT_THAT(ids(), Optional(IsEmpty()));
}

TEST_F(LocalMeetingStoreTest, ReadsWhatACrashedWriterLeftInItsLog) {
    writeAndCrash("INSERT INTO meeting VALUES('m','','',2000)");
    ASSERT_TRUE(std::filesystem::exists(file.string() + "-wal"));
    std::filesystem::remove(file.string() + "-shm");
    EXPECT_THAT(ids(), Optional(ElementsAre("m")));
}

TEST_F(LocalMeetingStoreTest, CannotReadAStoreWhoseRecoveryByAnotherProcessDoesNotEnd) {
    writeAndCrash("");
    {
        const LockHolder recovering([this]() -> std::shared_ptr<void> {
            const int index = ::open((file.string() + "-shm").c_str(), O_RDWR | O_CLOEXEC);

            struct flock locks {};

            locks.l_type = F_WRLCK;
            locks.l_start = 120; // the first of SQLite's bytes to lock
            locks.l_len = 8;
            return ::fcntl(index, F_SETLK, &locks) == 0 ? std::make_shared<int>(index) : nullptr;
        });
        EXPECT_EQ(store.upcomingMeetings(true), std::nullopt);
    }
    EXPECT_THAT(ids(), Optional(IsEmpty()));
}

TEST_F(LocalMeetingStoreTest, IsWhatTheFetcherAsks) {
    const EnvironmentVariable data("XDG_DATA_HOME", directory.path().string());
    std::filesystem::create_directory(directory / "velloren");
    file = directory / "velloren/meetings.sqlite3";
    fill("INSERT INTO meeting VALUES('far','','',99999999999),('past','','',1000)");
    SharedInstance<MeetingStore>::provide(&LocalMeetingStore::ofThisUser);
    const auto meetings = MeetingFetcher().fetchNextMeetingsSortedByDate(true);
    SharedInstance<MeetingStore>::reset();
    ASSERT_TRUE(meetings);
    ASSERT_EQ(meetings->size(), 1U);
    EXPECT_EQ(meetings->front().id, "far");
}

} // namespace
} // namespace velloren
