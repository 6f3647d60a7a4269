#include "Platform/Foundation/Bundle.h"
#include "Tests/Support/AgentTest.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "VellorenMenu/Commands.h"

#include <QTranslator>
#include <gmock/gmock.h>

#include <fstream>

namespace velloren {

namespace {

using ::testing::ElementsAre;

class SupportCommandTest : public AgentTest {
  protected:
    ~SupportCommandTest() override { SharedInstance<Bundle>::reset(); }

    void setInformation(const std::string& json) {
        std::ofstream(folder / "Info.json") << json;
        SharedInstance<Bundle>::provide([this] { return Bundle::inFolder(folder.path()); });
    }

    /// What the command asks the desktop to open.
    std::vector<std::string> opened() {
        workspace.openedURLs.clear();
        std::vector<CommandState> states;
        SupportCommand command{[&](CommandState state) { states.push_back(state); }};
        command.execute();
        EXPECT_THAT(states, ElementsAre(CommandState::executing, CommandState::finished));
        EXPECT_EQ(command.state, CommandState::finished);
        return workspace.openedURLs;
    }

    const std::string mail = "mailto:support@velloren.example?subject=Velloren%20";
    TemporaryDirectory folder;
};

} // namespace

TEST_F(SupportCommandTest, OpensAMailWhoseSubjectNamesTheProductAndItsVersion) {
    const std::string line = "Support%20subject%20line";
    for (const auto& [json, subject] :
         {std::pair(R"({"CFBundleShortVersionString": "2.1", "CFBundleVersion": "57"})",
                    "2.1%20(57)%20" + line),
          {R"({"CFBundleShortVersionString": "", "CFBundleVersion": ""})", "%20()%20" + line},
          {R"({"CFBundleShortVersionString": "2.1", "CFBundleVersion": 57})", line},
          {R"({"CFBundleShortVersionString": null, "CFBundleVersion": "57"})", line},
          {R"(["CFBundleVersion"])", line},
          {"no dictionary", line},
          {"", line}}) {
        setInformation(json);
        EXPECT_THAT(opened(), ElementsAre(mail + subject)) << json;
    }
}

TEST_F(SupportCommandTest, SpeaksTheUsersLanguageAndDoesNotMindARefusal) {
    setInformation(R"({"CFBundleShortVersionString": "1", "CFBundleVersion": "2"})");
    workspace.takesLaunches = false;
    QTranslator translator;
    for (const char* language : {"en", "de", "ja", "ar", "fr"})
        ASSERT_TRUE(translator.load(QStringLiteral(":/i18n/velloren_%1.qm").arg(QLatin1String(language))));
    QCoreApplication::installTranslator(&translator);
    EXPECT_THAT(opened(), ElementsAre(mail + "1%20(2)%20Demande%20d%E2%80%99assistance"));
}

TEST(PercentEncoding, KeepsWhatAQueryMayHoldAndRefusesWhatIsNoText) {
    const std::string allowed = "AZaz09!$&'()*+,-./:;=?@_~";
    EXPECT_EQ(percentEncodedForQuery(allowed), allowed);
    EXPECT_EQ(percentEncodedForQuery(" \"#%<>[\\]^`{|}\n"), "%20%22%23%25%3C%3E%5B%5C%5D%5E%60%7B%7C%7D%0A");
    EXPECT_EQ(percentEncodedForQuery("\xed\xa0\x80"), std::nullopt);
}

} // namespace velloren
