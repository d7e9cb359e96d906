// SPDX-License-Identifier: MIT
#include "profiles/status_line.h"

#include "tests/profiles/login_fixture.h"

namespace zarn {

namespace {

class StatusLineTest : public LoginTest {
protected:
    void SetUp() override
    {
        standard().values["agreedToTermsOfUse"] = true;
        storeProfile("Head office", "https://zarn.example:8443");
        load();
        platform.console.lines.clear();
    }
    std::string shown() { return labelText("status_Label"); }
    const std::vector<std::string>& printed() { return platform.console.lines; }
};

} // namespace

TEST_F(StatusLineTest, TheLineIsEmptyAtFirst)
{
    EXPECT_EQ(shown(), "");
}

TEST_F(StatusLineTest, AProgressIsShownUntilItEndsAndIsNotPrinted)
{
    statusLine.showProgress(Wait::Server, "Asking zarn.example for a token");
    EXPECT_EQ(shown(), "Asking zarn.example for a token");
    statusLine.endProgress(Wait::Keyring);
    EXPECT_EQ(shown(), "Asking zarn.example for a token");
    statusLine.endProgress(Wait::Server);
    EXPECT_EQ(shown(), "");
    EXPECT_EQ(printed(), std::vector<std::string>{});
}

TEST_F(StatusLineTest, AFailureIsShownAndPrintedOnceWithItsOperation)
{
    statusLine.showFailure("TokenDelegate.getToken", "zarn.example refused the connection");
    EXPECT_EQ(shown(), "zarn.example refused the connection");
    EXPECT_EQ(printed(),
        std::vector<std::string>{"[TokenDelegate.getToken] zarn.example refused the connection"});
}

TEST_F(StatusLineTest, TheLastFailureIsTheOneShown)
{
    statusLine.showFailure("a", "first");
    statusLine.showFailure("b", "second");
    EXPECT_EQ(shown(), "second");
    EXPECT_EQ(printed(), (std::vector<std::string>{"[a] first", "[b] second"}));
}

TEST_F(StatusLineTest, AProgressHidesAFailureForItsTime)
{
    statusLine.showFailure("a", "The keyring did not take the secret");
    statusLine.showProgress(Wait::Server, "Asking");
    EXPECT_EQ(shown(), "Asking");
    statusLine.endProgress(Wait::Server);
    EXPECT_EQ(shown(), "The keyring did not take the secret");
}

TEST_F(StatusLineTest, WaitingForTheKeyringHidesWaitingForAServer)
{
    statusLine.showProgress(Wait::Keyring, "Waiting for the keyring");
    statusLine.showProgress(Wait::Server, "Asking");
    EXPECT_EQ(shown(), "Waiting for the keyring");
    statusLine.endProgress(Wait::Keyring);
    EXPECT_EQ(shown(), "Asking");
}

TEST_F(StatusLineTest, AnActionOfTheUserEndsAFailureButNoProgress)
{
    for (const auto* control : {"hideCreds_button", "useUsername_button", "saveCreds_button"}) {
        statusLine.showFailure("a", "cause");
        statusLine.showProgress(Wait::Server, "Asking");
        click(control);
        EXPECT_EQ(shown(), "Asking") << control;
        statusLine.endProgress(Wait::Server);
        EXPECT_EQ(shown(), "") << control;
    }
    statusLine.showFailure("a", "cause");
    choose("Head office");
    EXPECT_EQ(shown(), "");
}

TEST_F(StatusLineTest, TypingInAnyFieldEndsAFailure)
{
    choose("Add Server...");
    for (const auto* name : {"displayName_TextField", "zarnProServer_textfield",
             "zarnProUsername_textfield", "zarnProPassword_textfield"}) {
        statusLine.showFailure("a", "cause");
        EXPECT_EQ(shown(), "cause") << name;
        type(name, "x");
        EXPECT_EQ(shown(), "") << name;
    }
}

TEST_F(StatusLineTest, MovingTheKeyboardOrFillingAFieldFromCodeEndsNothing)
{
    choose("Add Server...");
    statusLine.showFailure("a", "cause");
    ASSERT_TRUE(window.moveFocus("zarnProUsername_textfield"));
    ASSERT_TRUE(window.moveFocus("zarnProPassword_textfield"));
    field("zarnProServer_textfield").setStringValue("https://elsewhere.example");
    EXPECT_EQ(shown(), "cause");
}

TEST_F(StatusLineTest, TheSameTextIsAnnouncedOnce)
{
    std::vector<std::string> shownTexts;
    window.outlets.labelNamed("status_Label").recordAs("status_Label", &shownTexts);
    statusLine.showProgress(Wait::Server, "Asking");
    statusLine.showProgress(Wait::Server, "Asking");
    EXPECT_EQ(shownTexts, std::vector<std::string>{"status_Label = Asking"});
}

TEST_F(StatusLineTest, AViewThatIsGoneIsLeftAloneAndTheFailureStillPrinted)
{
    window.controller.reset();
    statusLine.showFailure("a", "cause");
    EXPECT_EQ(shown(), "");
    EXPECT_EQ(printed(), std::vector<std::string>{"[a] cause"});
}

TEST_F(StatusLineTest, WhatCannotStandInALineIsNeutralisedOnScreenAndOnStandardOutput)
{
    statusLine.showFailure("a", "x\ny\x1B[31m");
    EXPECT_EQ(shown(), "x\uFFFDy\uFFFD[31m");
    EXPECT_EQ(printed(), std::vector<std::string>{"[a] x\uFFFDy\uFFFD[31m"});
    statusLine.showProgress(Wait::Server, "x\ny");
    EXPECT_EQ(shown(), "x\uFFFDy");
}

TEST(PlainLine, OrdinaryTextStaysAsItIs)
{
    for (const std::string text : {"", "a & <b>b</b>", " x ", "Sch\u00F6n \u65E5\u672C \U0001F600",
             "~", "\u00A0", "\u200A", "\u2010", "\u2027", "\u202F", "\u205F", "\u2070"})
        EXPECT_EQ(plainLine(text), text);
}

TEST(PlainLine, EveryCharacterThatMisleadsIsReplaced)
{
    for (const std::string text :
        {"\x01", "\t", "\n", "\r", "\x1F", "\x7F", "\u0080", "\u0085", "\u009F", "\u061C", "\u200B",
            "\u200F", "\u2028", "\u202A", "\u202E", "\u2060", "\u2066", "\u206F"})
        EXPECT_EQ(plainLine("a" + text + "b"), "a\uFFFDb");
    EXPECT_EQ(plainLine(std::string("a\0b", 3)), "a\uFFFDb");
}

TEST(PlainLine, BytesThatAreNotUtf8AreReplacedOneByOne)
{
    EXPECT_EQ(plainLine("a\xFF\xC3"), "a\uFFFD\uFFFD");
    EXPECT_EQ(plainLine("\xC3\xB6\xFF"), "\uFFFD\uFFFD\uFFFD");
}

TEST(PlainLine, ALongTextEndsInAnEllipsisBetweenTwoCharacters)
{
    EXPECT_EQ(plainLine(std::string(300, 'x')), std::string(300, 'x'));
    EXPECT_EQ(plainLine(std::string(301, 'x')), std::string(300, 'x') + "\u2026");
    EXPECT_EQ(plainLine(std::string(299, 'x') + "\u00F6"), std::string(299, 'x') + "\u2026");
}

} // namespace zarn
