#include "Services/Local/LocalSyncManager.h"
#include "Services/Local/UploadingLock.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velloren {
namespace {

/// Another process that holds the uploading lock until it is killed.
class Uploader {
  public:
    explicit Uploader(const std::filesystem::path& file) {
        int pipe[2] = {-1, -1};
        EXPECT_EQ(::pipe(pipe), 0);
        process = ::fork();
        if (process == 0) {
            const auto lock = UploadingLock::acquire(file);
            const char held = lock ? 'y' : 'n';
            if (::write(pipe[1], &held, 1) == 1)
                ::pause();
            ::_exit(1);
        }
        char held = 'n';
        EXPECT_EQ(::read(pipe[0], &held, 1), 1);
        EXPECT_EQ(held, 'y');
        ::close(pipe[0]);
        ::close(pipe[1]);
    }

    Uploader(const Uploader&) = delete;
    Uploader& operator=(const Uploader&) = delete;

    ~Uploader() { crash(); }

    void crash() {
        if (process <= 0)
            return;
        ::kill(process, SIGKILL);
        ::waitpid(process, nullptr, 0);
        process = -1;
    }

  private:
    pid_t process = -1;
};

class LocalSyncManagerTest : public testing::Test {
  protected:
    TemporaryDirectory directory;
    EnvironmentVariable runtime{"XDG_RUNTIME_DIR", directory.path().string()};
    std::filesystem::path file = directory / "velloren/uploading.lock";
    std::unique_ptr<LocalSyncManager> manager = LocalSyncManager::ofThisUser();
};

TEST_F(LocalSyncManagerTest, IsNotSyncingWithoutTheFile) {
    EXPECT_FALSE(manager->isSyncing());
    EXPECT_FALSE(std::filesystem::exists(file));
    runtime.set(std::nullopt);
    EXPECT_FALSE(LocalSyncManager::ofThisUser()->isSyncing());
    EXPECT_FALSE(UploadingLock::acquire());
}

TEST_F(LocalSyncManagerTest, IsSyncingWhileAnotherProcessHoldsTheLock) {
    Uploader uploader(file);
    EXPECT_TRUE(manager->isSyncing());
    EXPECT_FALSE(UploadingLock::acquire());
    uploader.crash();
    EXPECT_FALSE(manager->isSyncing());
}

TEST_F(LocalSyncManagerTest, FollowsALockOfItsOwnProcess) {
    auto lock = UploadingLock::acquire();
    ASSERT_TRUE(lock);
    EXPECT_TRUE(manager->isSyncing());
    EXPECT_TRUE(manager->isSyncing());
    lock.reset();
    EXPECT_FALSE(manager->isSyncing());
    EXPECT_TRUE(UploadingLock::acquire());
}

TEST_F(LocalSyncManagerTest, DoesNotTakeAReadLockForUploading) {
    ASSERT_TRUE(UploadingLock::acquire());
    const int reader = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);

    struct flock lock {};

    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    ASSERT_EQ(::fcntl(reader, F_OFD_SETLK, &lock), 0);
    EXPECT_FALSE(manager->isSyncing());
    ::close(reader);
}

TEST_F(LocalSyncManagerTest, IsNotSyncingWhereTheFileIsSomethingElse) {
    std::filesystem::create_directory(file.parent_path());
    ASSERT_EQ(::mkfifo(file.c_str(), S_IRWXU), 0);
    EXPECT_FALSE(manager->isSyncing());
    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    EXPECT_FALSE(manager->isSyncing());
    EXPECT_FALSE(UploadingLock::acquire());
}

TEST_F(LocalSyncManagerTest, KeepsTheFolderPrivate) {
    ASSERT_TRUE(UploadingLock::acquire());
    EXPECT_EQ(std::filesystem::status(file.parent_path()).permissions(), std::filesystem::perms::owner_all);
}

} // namespace
} // namespace velloren
