#include "Services/Local/LocalSyncManager.h"
#include "Services/Local/UploadingLock.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

namespace velloren {
namespace {

class LocalSyncManagerTest : public testing::Test {
  protected:
    TemporaryDirectory directory;
    EnvironmentVariable runtime{"XDG_RUNTIME_DIR", directory.path().string()};
    std::filesystem::path file = directory / "velloren/uploading.lock";
    LocalSyncManager manager;
};

TEST_F(LocalSyncManagerTest, IsSyncingAsLongAsSomebodyHoldsTheLock) {
    EXPECT_FALSE(manager.isSyncing());
    EXPECT_FALSE(std::filesystem::exists(file));
    auto lock = UploadingLock::acquire();
    ASSERT_TRUE(lock);
    EXPECT_EQ(std::filesystem::status(file.parent_path()).permissions(), std::filesystem::perms::owner_all);
    EXPECT_TRUE(manager.isSyncing());
    EXPECT_TRUE(manager.isSyncing()) << "asking does not release it";
    EXPECT_FALSE(UploadingLock::acquire());
    lock.reset();
    EXPECT_FALSE(manager.isSyncing());
    EXPECT_TRUE(UploadingLock::acquire());
    const int reader = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);

    struct flock shared {};

    shared.l_type = F_RDLCK;
    ASSERT_EQ(::fcntl(reader, F_OFD_SETLK, &shared), 0);
    EXPECT_FALSE(manager.isSyncing()) << "somebody reads the file";
    ::close(reader);
}

TEST_F(LocalSyncManagerTest, IsNotSyncingWhereTheFileIsSomethingElseOrHasNoPlace) {
    std::filesystem::create_directory(file.parent_path());
    std::filesystem::create_directory(file);
    EXPECT_FALSE(manager.isSyncing());
    EXPECT_FALSE(UploadingLock::acquire());
    runtime.set(std::nullopt);
    EXPECT_FALSE(manager.isSyncing());
    EXPECT_FALSE(UploadingLock::acquire());
}

} // namespace
} // namespace velloren
