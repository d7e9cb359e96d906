// SPDX-License-Identifier: MIT
#include "app/my_alert.h"

#include "tests/app/app_fixture.h"

namespace zarn {

namespace {

class MyAlertTest : public AppTest {
protected:
    const Alert& lastAlert() const { return platform.alertRunner.shown.back(); }
    std::vector<std::string> buttonTitles() const
    {
        std::vector<std::string> titles;
        for (const auto& button : lastAlert().buttons)
            titles.push_back(button.title);
        return titles;
    }
    MyAlert alert{{platform.alertRunner, platform.application, platform.workspace,
        "https://publisher.example/releases"}};
};

TEST_F(MyAlertTest, TheAnswerIsTheTitleOfThePressedButton)
{
    const struct {
        int response;
        const char* second;
        const char* answer;
    } rows[] = {{1000, "Quit", "OK"}, {1001, "Quit", "Quit"}, {1000, "", "OK"},
        {1002, "Quit", "Quit"}, {0, "Cancel", "Cancel"}};
    for (const auto& row : rows) {
        platform.alertRunner.answers = {row.response};
        EXPECT_EQ(alert.display("", "m", row.second), row.answer) << row.response;
    }
}

TEST_F(MyAlertTest, TheApplicationComesToTheFrontBeforeTheAlert)
{
    alert.display("H", "m", "");
    EXPECT_EQ(events(), (std::vector<std::string>{"activate", "alert H|m"}));
}

TEST_F(MyAlertTest, ViewOpensTheUpdateCheckPage)
{
    alert.showUpdateResult(true, "1.4.2");
    EXPECT_EQ(platform.workspace.openedUrls,
        (std::vector<std::string>{"https://publisher.example/releases"}));
}

TEST_F(MyAlertTest, APageAddressThatIsNoUrlOpensNothing)
{
    MyAlert broken{{platform.alertRunner, platform.application, platform.workspace, "not a url"}};
    broken.showUpdateResult(true, "1.4.2");
    EXPECT_TRUE(platform.workspace.openedUrls.empty());
}

TEST_F(MyAlertTest, NoUpdateIsToldWithOkAlone)
{
    alert.showUpdateResult(false, "1.4.2");
    EXPECT_EQ(lastAlert().messageText, "Running Zarn Actions: 1.4.2");
    EXPECT_EQ(lastAlert().informativeText, "No updates are currently available.");
    EXPECT_EQ(lastAlert().style, AlertStyle::Informational);
    EXPECT_EQ(buttonTitles(), (std::vector<std::string>{"OK"}));
    EXPECT_EQ(lastAlert().buttons[0].keyEquivalent, "");
    EXPECT_EQ(events(),
        (std::vector<std::string>{
            "alert Running Zarn Actions: 1.4.2|No updates are currently available."}));
    EXPECT_TRUE(platform.workspace.openedUrls.empty());
}

// --- Edge cases

using AlertEdgeCases = MyAlertTest;

TEST_F(AlertEdgeCases, AnAlertWithAnEmptySecondTitleShowsOneButtonAndAnswersOk)
{
    EXPECT_EQ(alert.display("Header", "Message", ""), "OK");
    EXPECT_EQ(lastAlert().messageText, "Header");
    EXPECT_EQ(lastAlert().informativeText, "Message");
    EXPECT_EQ(lastAlert().style, AlertStyle::Warning);
    EXPECT_EQ(buttonTitles(), (std::vector<std::string>{"OK"}));
    EXPECT_EQ(lastAlert().buttons[0].keyEquivalent, "");
}

TEST_F(AlertEdgeCases, TheSecondButtonAnswersItsTitleAndHasTheKeyVWhileReturnPressesOk)
{
    platform.alertRunner.answers = {alertSecondButtonReturn};
    EXPECT_EQ(alert.display("", "Sure?", "Quit"), "Quit");
    EXPECT_EQ(buttonTitles(), (std::vector<std::string>{"OK", "Quit"}));
    EXPECT_EQ(lastAlert().buttons[0].keyEquivalent, "\r");
    EXPECT_EQ(lastAlert().buttons[1].keyEquivalent, "v");
}

TEST_F(AlertEdgeCases, AnAvailableUpdateIsShownWithViewFirstAndIgnoreSecond)
{
    platform.alertRunner.answers = {alertSecondButtonReturn};
    alert.showUpdateResult(true, "1.4.2");
    EXPECT_EQ(lastAlert().messageText, "Running Zarn Actions: 1.4.2");
    EXPECT_EQ(lastAlert().informativeText, "A new versions is available.");
    EXPECT_EQ(lastAlert().style, AlertStyle::Informational);
    EXPECT_EQ(buttonTitles(), (std::vector<std::string>{"View", "Ignore"}));
    for (const auto& button : lastAlert().buttons)
        EXPECT_EQ(button.keyEquivalent, "") << button.title;
    EXPECT_TRUE(platform.workspace.openedUrls.empty()); // "Ignore" does nothing.
    // Not brought to the front: the check was asked for here.
    EXPECT_EQ(events(),
        (std::vector<std::string>{
            "alert Running Zarn Actions: 1.4.2|A new versions is available."}));
}

} // namespace

} // namespace zarn
