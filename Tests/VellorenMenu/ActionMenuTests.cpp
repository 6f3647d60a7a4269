#include "Platform/Foundation/Bundle.h"
#include "Tests/Support/AgentTest.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "VellorenMenu/Commands.h"
#include "VellorenMenu/DropDownButton.h"
#include "VellorenMenu/URLs.h"

#include <QAction>
#include <QTranslator>
#include <gmock/gmock.h>

#include <fstream>

namespace velloren {

namespace {

using ::testing::ElementsAre;

class SupportCommandTest : public AgentTest {
  protected:
    ~SupportCommandTest() override { SharedInstance<Bundle>::reset(); }

    void setVersion(const std::string& shortVersion, const std::string& build) {
        std::ofstream(folder / "Info.json") << R"({"CFBundleShortVersionString": ")" << shortVersion
                                            << R"(", "CFBundleVersion": )" << build << "}";
        SharedInstance<Bundle>::provide([this] { return Bundle::inFolder(folder.path()); });
    }

    /// Runs a command, which goes through being executed to `last`; what it asked the desktop to open.
    std::vector<std::string> opened(CommandState last) {
        workspace.openedURLs.clear();
        std::vector<CommandState> states;
        SupportCommand command{[&](CommandState state) { states.push_back(state); }};
        command.execute();
        EXPECT_THAT(states, ElementsAre(CommandState::executing, last));
        EXPECT_EQ(command.state, last);
        return workspace.openedURLs;
    }

    const std::string mail = "mailto:support@velloren.example?subject=Velloren%20";
    TemporaryDirectory folder;
};

} // namespace

TEST_F(SupportCommandTest, OpensAMailWhoseSubjectNamesTheProductAndItsVersion) {
    using Row = std::tuple<const char*, const char*, CommandState, std::vector<std::string>>;
    for (const auto& [version, build, last, address] :
         {Row{"2.1", "\"57\"", CommandState::finished, {mail + "2.1%20(57)%20Support%20subject%20line"}},
          Row{"2.1", "57", CommandState::finished, {mail + "Support%20subject%20line"}}}) {
        setVersion(version, build);
        EXPECT_EQ(opened(last), address) << version << build;
    }
}

TEST_F(SupportCommandTest, SpeaksTheUsersLanguageAndDoesNotMindARefusal) {
    setVersion("1", "\"2\"");
    workspace.takesLaunches = false;
    QTranslator translator;
    for (const char* language : {"en", "de", "ja", "ar", "fr"})
        ASSERT_TRUE(translator.load(QStringLiteral(":/i18n/velloren_%1.qm").arg(QLatin1String(language))));
    QCoreApplication::installTranslator(&translator);
    EXPECT_THAT(opened(CommandState::finished),
                ElementsAre(mail + "1%20(2)%20Demande%20d%E2%80%99assistance"));
}

TEST(PercentEncoding, KeepsWhatAQueryMayHoldAndRefusesWhatIsNoText) {
    const std::string allowed = "AZaz09!$&'()*+,-./:;=?@_~";
    EXPECT_EQ(percentEncodedForQuery(allowed), allowed);
    EXPECT_EQ(percentEncodedForQuery(" \"#%<>[\\]^`{|}\n"), "%20%22%23%25%3C%3E%5B%5C%5D%5E%60%7B%7C%7D%0A");
    EXPECT_EQ(percentEncodedForQuery("Ü日"), "%C3%9C%E6%97%A5");
    for (const char* broken : {"\xff", "\xc3", "\xed\xa0\x80"})
        EXPECT_EQ(percentEncodedForQuery(broken), std::nullopt);
    for (const char* broken : {"mailto:a@b?subject=x y", "no address"})
        EXPECT_EQ(URL::fromString(broken), std::nullopt);
}

TEST(ConnectionProtocol, MatchesItsRawValuesToTheLetter) {
    using Protocol = URLs::ConnectionProtocol;
    EXPECT_EQ(URLs::connectionProtocol("http://"), Protocol::http);
    EXPECT_EQ(URLs::connectionProtocol("https://"), Protocol::https);
    for (const char* other : {"", "HTTPS://", "https:/", "https://velloren.example", "ftp://"})
        EXPECT_FALSE(URLs::connectionProtocol(other)) << other;
}

TEST(ActionMenu, HoldsTheActionsInOrderAndNoShortcuts) {
    DropDownButton button;
    std::vector<std::string> titles;
    for (const QAction* action : button.actionMenu().actions()) {
        titles.push_back(action->isSeparator() ? "---" : action->text().toStdString());
        EXPECT_TRUE(action->shortcut().isEmpty());
    }
    EXPECT_THAT(titles, ElementsAre("", "Support", "Help Center", "---", "Quit"));
}

} // namespace velloren
