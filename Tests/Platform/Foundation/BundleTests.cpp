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
    const std::pair<const char*, std::optional<std::string>> versions[] = {
        {R"({"CFBundleShortVersionString": "2.1", "CFBundleVersion": "57"})", "2.1 (57)"},
        {R"({"CFBundleShortVersionString": "", "CFBundleVersion": ""})", " ()"},
        {R"({"CFBundleShortVersionString": "2.1", "CFBundleVersion": 57})", std::nullopt},
        {R"({"CFBundleShortVersionString": "2.1"})", std::nullopt},
        {R"({"CFBundleVersion": "57"})", std::nullopt},
    };
    const auto other = bundleWith(R"({"CFBundleShortVersionString": "3", "CFBundleVersion": "9"})");
    for (const auto& [info, version] : versions) {
        SharedInstance<Bundle>::provide([this, info = info] { return bundleWith(info); });
        EXPECT_EQ(appVersion(*other), version) << info;
    }
}

} // namespace velloren
