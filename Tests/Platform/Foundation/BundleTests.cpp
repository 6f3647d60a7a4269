#include "Platform/Foundation/BundleVersions.h"
#include "Platform/Foundation/SharedInstance.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <fstream>

namespace velloren {

namespace {

class BundleTest : public ::testing::Test {
  protected:
    ~BundleTest() override { SharedInstance<Bundle>::reset(); }

    std::unique_ptr<Bundle> bundleWith(const std::string& info) {
        std::ofstream(folder / "Info.json") << info;
        return Bundle::inFolder(folder.path());
    }

    void setMainBundle(const std::string& info) {
        SharedInstance<Bundle>::provide([this, info] { return bundleWith(info); });
    }

    std::optional<std::string> versionOfMainBundle(const std::string& info) {
        setMainBundle(info);
        return appVersion(Bundle::mainBundle());
    }

    TemporaryDirectory folder;
};

} // namespace

TEST_F(BundleTest, TellsItsVersionsWhereTheyAreTexts) {
    const auto bundle = bundleWith(R"({"CFBundleShortVersionString": "2.1", "CFBundleVersion": "57"})");
    EXPECT_EQ(bundleShortVersion(*bundle), "2.1");
    EXPECT_EQ(bundleVersion(*bundle), "57");
    for (const char* info : {R"({"CFBundleVersion": 57, "CFBundleShortVersionString": 2.1})",
                             R"({"CFBundleVersion": ["57"], "CFBundleShortVersionString": null})", "{}",
                             R"(["CFBundleVersion"])", "no dictionary", ""}) {
        const auto lacking = bundleWith(info);
        EXPECT_EQ(bundleShortVersion(*lacking), std::nullopt) << info;
        EXPECT_EQ(bundleVersion(*lacking), std::nullopt) << info;
    }
    EXPECT_FALSE(Bundle::inFolder("/nonexistent")->infoDictionary());
}

TEST_F(BundleTest, GivesTheProgramsOwnVersionWhicheverBundleIsAsked) {
    setMainBundle(R"({"CFBundleShortVersionString": "2.1", "CFBundleVersion": "57"})");
    EXPECT_EQ(appVersion(Bundle::mainBundle()), "2.1 (57)");
    EXPECT_EQ(appVersion(*bundleWith(R"({"CFBundleShortVersionString": "3", "CFBundleVersion": "9"})")),
              "2.1 (57)");
    EXPECT_EQ(versionOfMainBundle(R"({"CFBundleShortVersionString": "", "CFBundleVersion": ""})"), " ()");
    EXPECT_EQ(versionOfMainBundle(R"({"CFBundleShortVersionString": "2.1", "CFBundleVersion": 57})"),
              std::nullopt);
    EXPECT_EQ(versionOfMainBundle(R"({"CFBundleShortVersionString": "2.1"})"), std::nullopt);
    EXPECT_EQ(versionOfMainBundle(R"({"CFBundleVersion": "57"})"), std::nullopt);
}

} // namespace velloren
