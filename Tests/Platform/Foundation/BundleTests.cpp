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
    using Text = std::optional<std::string>;
    const std::tuple<const char*, Text, Text, Text> bundles[] = {
        {R"({"CFBundleShortVersionString": "2.1", "CFBundleVersion": "57"})", "2.1", "57", "2.1 (57)"},
        {R"({"CFBundleShortVersionString": "", "CFBundleVersion": ""})", "", "", " ()"},
        {R"({"CFBundleShortVersionString": "2.1", "CFBundleVersion": 57})", "2.1", {}, {}},
        {R"({"CFBundleShortVersionString": null, "CFBundleVersion": "57"})", {}, "57", {}},
        {R"({"CFBundleVersion": ["57"]})", {}, {}, {}},
        {R"(["CFBundleVersion"])", {}, {}, {}},
        {"no dictionary", {}, {}, {}},
        {"", {}, {}, {}},
    };
    const auto other = bundleWith(R"({"CFBundleShortVersionString": "3", "CFBundleVersion": "9"})");
    for (const auto& [info, shortVersion, version, ofTheApp] : bundles) {
        SharedInstance<Bundle>::provide([this, info = info] { return bundleWith(info); });
        EXPECT_EQ(bundleShortVersion(Bundle::mainBundle()), shortVersion) << info;
        EXPECT_EQ(bundleVersion(Bundle::mainBundle()), version) << info;
        EXPECT_EQ(appVersion(*other), ofTheApp) << "of the program, whichever bundle is asked: " << info;
    }
    EXPECT_FALSE(Bundle::inFolder("/nonexistent")->infoDictionary());
}

} // namespace velloren
