#include "Platform/Foundation/Bundle.h"
#include "Tests/Support/AgentTest.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "VellorenMenu/Commands.h"
#include "VellorenMenu/DropDownButton.h"
#include "VellorenMenu/MenuAppDelegate.h"

#include <QAction>
#include <QMenu>
#include <QTranslator>
#include <gmock/gmock.h>

#include <fstream>

namespace velloren {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SupportCommandTest : public AgentTest {
  protected:
    ~SupportCommandTest() override { SharedInstance<Bundle>::reset(); }

    void setVersion(const std::string& shortVersion, const std::string& build) {
        std::ofstream(folder / "Info.json") << R"({"CFBundleShortVersionString": ")" << shortVersion
                                            << R"(", "CFBundleVersion": )" << build << "}";
        SharedInstance<Bundle>::provide([this] { return Bundle::inFolder(folder.path()); });
    }

    std::vector<CommandState> statesOfARun() {
        std::vector<CommandState> states;
        SupportCommand command{[&](CommandState state) { states.push_back(state); }};
        command.execute();
        EXPECT_EQ(command.state, states.back());
        return states;
    }

    TemporaryDirectory folder;
};

/// The agent's delegate with its popover open.
class ActionMenuTest : public SupportCommandTest {
  protected:
    ActionMenuTest() {
        setVersion("2.1", "\"57\"");
        application.setDelegate(&delegate);
        delegate.applicationDidFinishLaunching();
        delegate.showPopover(nullptr);
        button = delegate.popover().contentViewController()->view().findChild<DropDownButton*>();
    }

    QAction& item(int position) { return *button->actionMenu().actions().at(position); }

    MenuAppDelegate delegate{link};
    DropDownButton* button = nullptr;
};

} // namespace

TEST_F(SupportCommandTest, OpensAMailWhoseSubjectNamesTheProductAndItsVersion) {
    setVersion("2.1", "\"57\"");
    EXPECT_THAT(statesOfARun(), ElementsAre(CommandState::executing, CommandState::finished));
    EXPECT_THAT(
        workspace.openedURLs,
        ElementsAre(
            "mailto:support@velloren.example?subject=Velloren%202.1%20(57)%20Support%20subject%20line"));
}

TEST_F(SupportCommandTest, LeavesOutAVersionThatIsNotThereAndDoesNotMindARefusal) {
    setVersion("2.1", "57");
    workspace.takesLaunches = false;
    EXPECT_THAT(statesOfARun(), ElementsAre(CommandState::executing, CommandState::finished));
    EXPECT_THAT(workspace.openedURLs,
                ElementsAre("mailto:support@velloren.example?subject=Velloren%20Support%20subject%20line"));
}

TEST_F(SupportCommandTest, FailsWhereTheSubjectCannotBeEncoded) {
    setVersion("2.1 \\ud800", "\"57\"");
    EXPECT_THAT(statesOfARun(), ElementsAre(CommandState::executing, CommandState::failed));
    EXPECT_THAT(workspace.openedURLs, IsEmpty());
}

TEST_F(SupportCommandTest, SpeaksTheUsersLanguage) {
    setVersion("1", "\"2\"");
    QTranslator translator;
    ASSERT_TRUE(translator.load(QStringLiteral(":/i18n/velloren_fr.qm")));
    QCoreApplication::installTranslator(&translator);
    EXPECT_THAT(statesOfARun(), ElementsAre(CommandState::executing, CommandState::finished));
    EXPECT_THAT(workspace.openedURLs, ElementsAre("mailto:support@velloren.example?subject="
                                                  "Velloren%201%20(2)%20Demande%20d%E2%80%99assistance"));
    for (const char* language : {"en", "de", "ja", "ar"})
        EXPECT_TRUE(translator.load(QStringLiteral(":/i18n/velloren_%1.qm").arg(QLatin1String(language))))
            << language;
}

TEST(PercentEncoding, KeepsWhatAQueryMayHoldAndRefusesWhatIsNoText) {
    const std::string allowed = "AZaz09!$&'()*+,-./:;=?@_~";
    EXPECT_EQ(percentEncodedForQuery(allowed), allowed);
    EXPECT_EQ(percentEncodedForQuery(" \"#%<>[\\]^`{|}\n"), "%20%22%23%25%3C%3E%5B%5C%5D%5E%60%7B%7C%7D%0A");
    EXPECT_EQ(percentEncodedForQuery("Ü日"), "%C3%9C%E6%97%A5");
    EXPECT_EQ(percentEncodedForQuery(""), "");
    for (const char* broken : {"\xff", "\xc3", "\xed\xa0\x80"})
        EXPECT_EQ(percentEncodedForQuery(broken), std::nullopt);
    EXPECT_EQ(URL::fromString("mailto:a@b?subject=x y"), std::nullopt);
    EXPECT_EQ(URL::fromString("no address"), std::nullopt);
}

TEST_F(ActionMenuTest, HoldsTheActionsInOrderAndNoShortcuts) {
    std::vector<std::string> titles;
    for (const QAction* action : button->actionMenu().actions()) {
        titles.push_back(action->isSeparator() ? "---" : action->text().toStdString());
        EXPECT_TRUE(action->shortcut().isEmpty());
    }
    EXPECT_THAT(titles, ElementsAre("", "Support", "Help Center", "---", "Quit"));
    EXPECT_EQ(&button->actionMenu(), &button->actionMenu());
    EXPECT_TRUE(button->popUpButtonCell.pullsDown());
    EXPECT_EQ(button->popUpButtonCell.preferredEdge(), RectEdge::MinY);
}

TEST_F(ActionMenuTest, ClosesThePopoverBeforeItOpensALink) {
    item(1).trigger();
    EXPECT_FALSE(delegate.popover().isShown());
    delegate.showPopover(nullptr);
    item(2).trigger();
    EXPECT_FALSE(delegate.popover().isShown());
    EXPECT_THAT(workspace.openedURLs,
                ElementsAre(::testing::StartsWith("mailto:support@velloren.example?subject="),
                            "https://help.velloren.example"));
}

TEST_F(ActionMenuTest, QuitsThroughTheDelegateWithThePopoverOpen) {
    log.clear();
    item(4).trigger();
    EXPECT_TRUE(delegate.popover().isShown());
    EXPECT_THAT(log.messages(), ElementsAre("applicationShouldTerminate: " + application.description(),
                                            "applicationWillTerminate"));
    EXPECT_THAT(workspace.openedURLs, IsEmpty());
}

} // namespace velloren
