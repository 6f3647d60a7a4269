#include "Services/Local/CurrentUserRecord.h"
#include "Services/Local/LocalUserManager.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>

namespace velloren {
namespace {

class LocalUserManagerTest : public testing::Test {
  protected:
    LocalUserManagerTest() { std::filesystem::create_directory(file.parent_path()); }

    std::unique_ptr<User> userIn(std::string_view contents) {
        std::ofstream(file, std::ios::trunc) << contents;
        return manager->forceReadCurrentUserFromNSUserDefaults();
    }

    TemporaryDirectory directory;
    EnvironmentVariable configuration{"XDG_CONFIG_HOME", directory.path().string()};
    std::filesystem::path file = directory / "velloren/com.velloren.velloren-mac.ini";
    std::unique_ptr<LocalUserManager> manager = LocalUserManager::ofThisUser();
};

TEST_F(LocalUserManagerTest, ReadsTheUser) {
    const auto user = userIn("[currentUser]\nid=7\nemail=ada@example.org\nloggedIn=true\n");
    ASSERT_TRUE(user);
    EXPECT_TRUE(user->isLoggedIn());
    EXPECT_EQ(user->description(), "<User id=7, email=ada@example.org, loggedIn=true>");
}

TEST_F(LocalUserManagerTest, KnowsAUserByIdOrEmailAlone) {
    const auto byId = userIn("[currentUser]\nid=7\nemail=\nloggedIn=1\n");
    ASSERT_TRUE(byId);
    EXPECT_EQ(byId->description(), "<User id=7, email=nil, loggedIn=true>");
    const auto byEmail = userIn("[currentUser]\nemail=ada@example.org\n");
    ASSERT_TRUE(byEmail);
    EXPECT_EQ(byEmail->description(), "<User id=nil, email=ada@example.org, loggedIn=false>");
}

TEST_F(LocalUserManagerTest, KnowsNobodyWithoutIdAndEmail) {
    EXPECT_FALSE(manager->forceReadCurrentUserFromNSUserDefaults());
    EXPECT_FALSE(userIn(""));
    EXPECT_FALSE(userIn("[currentUser]\nloggedIn=true\n"));
    EXPECT_FALSE(userIn("[currentUser]\nid=\nemail=\nloggedIn=true\n"));
    EXPECT_FALSE(userIn("id=7\nemail=ada@example.org\n[other]\nid=7\n"));
    EXPECT_FALSE(LocalUserManager(std::filesystem::path()).forceReadCurrentUserFromNSUserDefaults());
}

TEST_F(LocalUserManagerTest, TakesWhatIsNoBooleanAsLoggedOut) {
    for (const char* value :
         {"", "loggedIn=", "loggedIn=yes", "loggedIn=TRUE", "loggedIn=false", "loggedIn=0"}) {
        const auto user = userIn(std::string("[currentUser]\nid=7\n") + value + "\n");
        ASSERT_TRUE(user) << value;
        EXPECT_FALSE(user->isLoggedIn()) << value;
    }
}

TEST_F(LocalUserManagerTest, SeesALogoutAtOnce) {
    storeCurrentUser(file, {.id = "7", .email = "ada@example.org", .loggedIn = true});
    EXPECT_TRUE(manager->forceReadCurrentUserFromNSUserDefaults()->isLoggedIn());
    storeCurrentUser(file, {.id = "7", .email = "ada@example.org", .loggedIn = false});
    EXPECT_FALSE(manager->forceReadCurrentUserFromNSUserDefaults()->isLoggedIn());
    clearCurrentUser(file);
    EXPECT_FALSE(manager->forceReadCurrentUserFromNSUserDefaults());
}

TEST_F(LocalUserManagerTest, DescribesTheUserOnOneLine) {
    storeCurrentUser(file, {.id = "7\n\x1b[2J", .email = std::nullopt, .loggedIn = false});
    EXPECT_EQ(manager->forceReadCurrentUserFromNSUserDefaults()->description(),
              "<User id=7\\n\\x1b[2J, email=nil, loggedIn=false>");
}

TEST_F(LocalUserManagerTest, StoresARecordAsItWasGiven) {
    const CurrentUserRecord user{.id = "a,b;\"c\"", .email = "@\u00fc", .loggedIn = true};
    storeCurrentUser(file, user);
    EXPECT_EQ(readCurrentUser(file), user);
}

} // namespace
} // namespace velloren
