#include "Platform/Foundation/SharedInstance.h"
#include "Services/Local/CurrentUserRecord.h"
#include "Services/Local/LocalUserManager.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/ManualRunLoop.h"
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

    std::optional<User> userIn(std::string_view contents) {
        std::ofstream(file, std::ios::trunc) << contents;
        return manager->forceReadCurrentUserFromNSUserDefaults();
    }

    TemporaryDirectory directory;
    EnvironmentVariable configuration{"XDG_CONFIG_HOME", directory.path().string()};
    std::filesystem::path file = directory / "velloren/com.velloren.velloren-mac.ini";
    std::unique_ptr<LocalUserManager> manager = LocalUserManager::ofThisUser();
};

TEST_F(LocalUserManagerTest, KnowsTheUserByIdOrEmail) {
    EXPECT_FALSE(manager->forceReadCurrentUserFromNSUserDefaults());
    for (const auto& [contents, description] :
         {std::pair("id=7\nemail=ada@example.org\nloggedIn=true",
                    "<User id=7, email=ada@example.org, loggedIn=true>"),
          std::pair("id=7\nemail=\nloggedIn=1", "<User id=7, email=nil, loggedIn=true>"),
          std::pair("email=ada@example.org", "<User id=nil, email=ada@example.org, loggedIn=false>"),
          std::pair("id=7\\n\\x1b[2J", "<User id=7\\x0a\\x1b[2J, email=nil, loggedIn=false>"),
          std::pair("id=\nemail=\nloggedIn=true", ""), std::pair("[other]\nid=7", "")}) {
        const auto user = userIn(std::string("[currentUser]\n") + contents + "\n");
        EXPECT_EQ(user ? user->description() : "", description);
        EXPECT_EQ(user && user->isLoggedIn(), std::string_view(description).ends_with("=true>"));
    }
    EXPECT_FALSE(userIn("id=7\nemail=ada@example.org\n"));
}

TEST_F(LocalUserManagerTest, SeesAtOnceWhatIsStored) {
    ManualRunLoop& loop = ManualRunLoop::install();
    int changes = 0;
    Subscription subscription = manager->whenChanged([&] { ++changes; });
    const CurrentUserRecord user{.id = "a,b;\"c\"", .email = "@\u00fc", .loggedIn = true};
    storeCurrentUser(file, user);
    EXPECT_TRUE(loop.waitUntil([&] { return changes > 0; }));
    EXPECT_EQ(readCurrentUser(file), user);
    EXPECT_TRUE(manager->forceReadCurrentUserFromNSUserDefaults()->isLoggedIn());
    storeCurrentUser(file, {.id = user.id, .email = user.email, .loggedIn = false});
    EXPECT_FALSE(manager->forceReadCurrentUserFromNSUserDefaults()->isLoggedIn());
    storeCurrentUser(file, {});
    EXPECT_FALSE(manager->forceReadCurrentUserFromNSUserDefaults());
    subscription = {};
    SharedInstance<RunLoop>::reset();
}

} // namespace
} // namespace velloren
