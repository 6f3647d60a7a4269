#include "Platform/Foundation/SharedInstance.h"
#include "Services/Local/LocalMeetingStore.h"
#include "Tests/Support/ManualRunLoop.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>

#include <fstream>
#include <functional>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace velloren {
namespace {

using testing::ElementsAre;
using testing::Optional;

class LocalMeetingStoreTest : public testing::Test {
  protected:
    SQLite::Database writer(const std::string& statements) const {
        SQLite::Database database(file.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        database.exec("PRAGMA journal_mode=WAL; CREATE TABLE IF NOT EXISTS meeting"
                      "(id TEXT PRIMARY KEY, title TEXT, start_time TEXT, start_utc INTEGER NOT NULL)");
        database.exec(statements);
        return database;
    }

    [[nodiscard]] std::optional<NextMeetings> upcoming(bool ascending = true, std::size_t most = 10) {
        return store.upcomingMeetings(ascending, most);
    }

    static std::vector<std::string> idsOf(const NextMeetings& next) {
        std::vector<std::string> result;
        for (const Meeting& meeting : next.first)
            result.push_back(meeting.id.value_or("none"));
        return result;
    }

    [[nodiscard]] std::optional<std::vector<std::string>> ids(bool ascending = true) {
        const auto next = upcoming(ascending);
        return next ? std::optional(idsOf(*next)) : std::nullopt;
    }

    TemporaryDirectory directory;
    std::filesystem::path file = directory / "meetings? 100%.sqlite3";
    Date now{std::chrono::seconds(1000)};
    LocalMeetingStore store{file, [this] { return now; }};
};

TEST_F(LocalMeetingStoreTest, ListsByStartThenIdWhatHasNotStarted) {
    writer(
        "INSERT INTO meeting VALUES('late','','',3000),('b','','',2000),('a','','',2000),('now','','',1000),"
        "('past','','',999),('text','','','soon'),('blob','','',x'ffff')");
    EXPECT_THAT(ids(true), Optional(ElementsAre("now", "a", "b", "late")));
    EXPECT_THAT(ids(false), Optional(ElementsAre("late", "b", "a", "now")));
    now += std::chrono::milliseconds(1);
    EXPECT_THAT(ids(), Optional(ElementsAre("a", "b", "late")));
}

TEST_F(LocalMeetingStoreTest, GivesTheFirstOfAnyNumberAndCountsThemWhereTheyAreNotTooMany) {
    writer("CREATE INDEX start ON meeting(start_utc); INSERT INTO meeting WITH RECURSIVE n(i) AS "
           "(SELECT 0 UNION ALL SELECT i + 1 FROM n LIMIT 100000) SELECT 'm' || i, '', '', i FROM n");
    using Row = std::tuple<int, std::vector<std::string>, std::optional<std::size_t>>;
    for (const Row& row :
         {Row{0, {"m0", "m1", "m2"}, std::nullopt}, Row{90'000, {"m90000", "m90001", "m90002"}, 10'000},
          Row{99'998, {"m99998", "m99999"}, 2}}) {
        const int second = std::get<int>(row);
        now = Date(std::chrono::seconds(second));
        const auto isRead = [&] {
            const auto next = upcoming(true, 3);
            return next && Row(second, idsOf(*next), next->count) == row;
        };
        int attempts = 0; // a busy machine may let the time for an answer pass
        while (!isRead() && attempts < 100)
            ++attempts;
        EXPECT_LT(attempts, 100) << second;
    }
}

TEST_F(LocalMeetingStoreTest, ReadsTextsAsTheyAreStoredAndNothingElse) {
    writer("INSERT INTO meeting VALUES('m1','K\u00f6ln <b>','2026-03-07T14:05:00+01:00',2000),"
           "(NULL,NULL,NULL,3000),(x'00ff',x'41',x'42',4000),"
           "('\uFFFE','','',2500),(CAST(x'61ff' AS TEXT),'','',2500),"
           "('m2',CAST(x'61ff7a' AS TEXT),'\uFDD0',5000)");
    ASSERT_TRUE(upcoming());
    EXPECT_THAT(
        upcoming()->first,
        ElementsAre(Meeting{.id = "m1", .title = "K\u00f6ln <b>", .startTime = "2026-03-07T14:05:00+01:00"},
                    Meeting{}, Meeting{}, Meeting{.id = "m2", .title = "a\uFFFDz", .startTime = "\uFFFD"}));
    EXPECT_EQ(upcoming(true, 4)->count, 4U);
}

TEST_F(LocalMeetingStoreTest, CannotReadAMissingStoreAndDoesNotMakeIt) {
    EXPECT_EQ(upcoming(), std::nullopt);
    EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

TEST_F(LocalMeetingStoreTest, CannotReadWhatIsNoStoreOrIsLockedDamagedOrUnreasonable) {
    std::shared_ptr<void> holder;
    const std::vector<std::pair<const char*, std::function<void()>>> troubles{
        {"FIFO", [&] { std::filesystem::remove(file), ::mkfifo(file.c_str(), S_IRWXU); }},
        {"folder", [&] { std::filesystem::remove(file), std::filesystem::create_directory(file); }},
        {"empty", [&] { std::filesystem::resize_file(file, 0); }},
        {"garbage", [&] { std::ofstream(file) << std::string(10'000, 'x'); }},
        {"other columns", [&] { writer("ALTER TABLE meeting RENAME title TO name"); }},
        {"no rights",
         [&] {
             std::filesystem::permissions(file, std::filesystem::perms::none);
             if (constexpr uid_t nobody = 65534; ::geteuid() == 0 && ::seteuid(nobody) == 0)
                 holder.reset(&file, [](void*) { EXPECT_EQ(::seteuid(0), 0); });
         }},
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
        {"locked by its writer",
         [&] {
             const auto writing = std::make_shared<SQLite::Database>(file.string(), SQLite::OPEN_READWRITE);
             writing->exec("PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE; DELETE FROM meeting");
             holder = writing;
         }},
        {"recovered by a process that ends before who waits longer than a click may for the log's index",
         [&] {
             const std::vector<std::string> recover{
                 "python3", "-c",
                 "import fcntl, time; index = open('" + file.string() + "-shm', 'w'); " +
                     "fcntl.lockf(index, fcntl.LOCK_EX, 8, 120); print('locked', flush=True); time.sleep(3)"};
             const auto process =
                 std::make_shared<Process>(recover, Process::Environment(), directory / "output");
             while (process->isRunning() && process->output().empty())
                 std::this_thread::yield();
             holder = process;
         }},
    };
    for (const auto& [name, make] : troubles) {
        writer("INSERT INTO meeting VALUES('m','','',2000)");
        ASSERT_THAT(ids(), Optional(ElementsAre("m"))) << name;
        make();
        EXPECT_EQ(upcoming(), std::nullopt) << name;
        holder.reset();
        for (const char* suffix : {"", "-journal", "-wal", "-shm"})
            std::filesystem::remove(file.string() + suffix);
    }
}

TEST_F(LocalMeetingStoreTest, ReadsWhileTheMainAppWritesAndWhatItLeavesInItsLogWhenItIsKilled) {
    auto mainApp = writer("INSERT INTO meeting VALUES('m','','',2000)");
    mainApp.exec("BEGIN IMMEDIATE; DELETE FROM meeting");
    EXPECT_THAT(ids(), Optional(ElementsAre("m")));
    mainApp.exec("COMMIT; INSERT INTO meeting VALUES('n','','',2000)");
    EXPECT_THAT(ids(), Optional(ElementsAre("n")));

    const std::filesystem::path left = directory / "left.sqlite3";
    for (const char* suffix : {"", "-wal"})
        std::filesystem::copy_file(file.string() + suffix, left.string() + suffix);
    EXPECT_EQ(LocalMeetingStore(left, [this] { return now; }).upcomingMeetings(true, 10), upcoming());
}

TEST_F(LocalMeetingStoreTest, TellsOfEachChangeWhereverItComesFromButNotOfItsOwnQueries) {
    ManualRunLoop& loop = ManualRunLoop::install();
    const auto folder = directory / "later";
    file = folder / "velloren/meetings.sqlite3";
    LocalMeetingStore followed(file, [this] { return now; });
    int changes = 0;
    Subscription subscription = followed.whenChanged([&] { ++changes; });
    std::optional<SQLite::Database> main;
    const std::vector<std::pair<const char*, std::function<void()>>> steps{
        {"its folder", [&] { std::filesystem::create_directories(file.parent_path()); }},
        {"the store", [&] { main.emplace(writer("INSERT INTO meeting VALUES('1','','',2000)")); }},
        {"a commit to the log", [&] { main->exec("INSERT INTO meeting VALUES('2','','',2000)"); }},
        {"a log emptied", [&] { main->exec("PRAGMA wal_checkpoint(TRUNCATE)"), main.reset(); }},
        {"another store",
         [&] {
             std::filesystem::copy_file(file, folder / "copy"),
                 std::filesystem::rename(folder / "copy", file);
         }},
        {"another folder",
         [&] {
             std::filesystem::rename(folder, directory / "away");
             std::filesystem::create_directories(file.parent_path());
             std::filesystem::rename(directory / "away/velloren/meetings.sqlite3", file);
         }},
        {"no store", [&] { std::filesystem::remove(file); }},
    };
    for (const auto& [step, change] : steps) {
        const int before = changes;
        change();
        loop.advance(RunLoop::Seconds(1));
        EXPECT_TRUE(loop.waitUntil([&] { return changes > before; })) << step;
        const int after = changes;
        loop.advance(RunLoop::Seconds(1));
        (void)followed.upcomingMeetings(true, 3);
        std::ofstream(file.parent_path() / "unrelated") << step;
        loop.readWatched();
        EXPECT_EQ(changes, after) << step;
    }
    subscription = {};
    SharedInstance<RunLoop>::reset();
}

} // namespace
} // namespace velloren
