// SPDX-License-Identifier: MIT
#include "tests/contract/alert_contract.h"

namespace zarn {

namespace {

using Texts = std::vector<std::string>;

Alert alertWith(std::vector<AlertButton> buttons)
{
    return {"Attention", "Something happened", AlertStyle::Warning, std::move(buttons)};
}

} // namespace

int AlertContract::runAnd(const Alert& alert, const std::function<void()>& act)
{
    bool wasOpen = false;
    fixture->whenOpen([&] {
        wasOpen = fixture->isOpen();
        act();
    });
    const int response = fixture->runner().runModal(alert);
    EXPECT_TRUE(wasOpen);
    EXPECT_FALSE(fixture->isOpen());
    return response;
}

TEST_F(AlertContract, EachButtonHasTheResponseOfItsPlace)
{
    const auto alert = alertWith({{"OK", ""}, {"View", ""}});
    EXPECT_EQ(runAnd(alert, [&] { EXPECT_TRUE(fixture->press("OK")); }), 1000);
    EXPECT_EQ(runAnd(alert, [&] { EXPECT_TRUE(fixture->press("View")); }), 1001);
}

TEST_F(AlertContract, TheCallReturnsOnlyWhenAButtonWasPressed)
{
    Texts events;
    runAnd(alertWith({{"OK", ""}}), [&] {
        events.emplace_back("open");
        fixture->press("OK");
        events.emplace_back("pressed");
    });
    events.emplace_back("returned");
    EXPECT_EQ(events, (Texts{"open", "pressed", "returned"}));
}

TEST_F(AlertContract, ItShowsItsTextsAndItsButtonsInOrder)
{
    Texts texts;
    Texts buttons;
    runAnd(alertWith({{"View", ""}, {"Ignore", ""}}), [&] {
        texts = fixture->texts();
        buttons = fixture->buttons();
        fixture->press("View");
    });
    EXPECT_EQ(texts, (Texts{"Attention", "Something happened"}));
    EXPECT_EQ(buttons, (Texts{"View", "Ignore"}));
}

TEST_F(AlertContract, WithoutAHeaderTheMessageStandsAlone)
{
    auto alert = alertWith({{"OK", ""}});
    alert.messageText.clear();
    Texts texts;
    runAnd(alert, [&] {
        texts = fixture->texts();
        fixture->press("OK");
    });
    EXPECT_EQ(texts, Texts{"Something happened"});
}

TEST_F(AlertContract, TextsAndTitlesArePlainAndNeverMarkup)
{
    Alert alert{"<b>bold</b> &amp; <img src=x>", "a < b && c\n&nbsp;Sch\xc3\xb6n",
        AlertStyle::Informational, {{"&OK", ""}, {"<i>No</i>", ""}}};
    Texts texts;
    Texts buttons;
    runAnd(alert, [&] {
        texts = fixture->texts();
        buttons = fixture->buttons();
        EXPECT_TRUE(fixture->press("&OK"));
    });
    EXPECT_EQ(texts, (Texts{alert.messageText, alert.informativeText}));
    EXPECT_EQ(buttons, (Texts{"&OK", "<i>No</i>"}));
}

TEST_F(AlertContract, EscapeAndClosingPressCancelOrIgnoreWhereverItStandsAndElseTheFirstButton)
{
    const struct {
        std::vector<AlertButton> buttons;
        int response;
    } rows[] = {
        {{{"Remove", ""}, {"Cancel", ""}}, 1001},
        {{{"Cancel", ""}, {"Remove", ""}}, 1000},
        {{{"View", ""}, {"Ignore", ""}}, 1001},
        {{{"Ignore", ""}, {"View", ""}}, 1000},
        {{{"OK", ""}, {"Quit", ""}}, 1000},
        {{{"OK", ""}, {"cancel", ""}}, 1000},
        {{{"OK", ""}, {"Ignore it", ""}}, 1000},
        {{{"OK", ""}}, 1000},
    };
    for (const auto& row : rows) {
        const auto alert = alertWith(row.buttons);
        const auto& title = row.buttons.back().title;
        EXPECT_EQ(runAnd(alert, [&] { fixture->pressEscape(); }), row.response) << title;
        EXPECT_EQ(runAnd(alert, [&] { fixture->closeWindow(); }), row.response) << title;
    }
}

TEST_F(AlertContract, ReturnPressesTheFirstButtonUnlessAnotherClaimsIt)
{
    const auto pressReturn = [this] { fixture->pressKey("\r"); };
    EXPECT_EQ(runAnd(alertWith({{"OK", "\r"}, {"Quit", "v"}}), pressReturn), 1000);
    EXPECT_EQ(runAnd(alertWith({{"View", ""}, {"Ignore", ""}}), pressReturn), 1000);
    EXPECT_EQ(runAnd(alertWith({{"Remove", ""}, {"Keep", "\r"}}), pressReturn), 1001);
}

TEST_F(AlertContract, AKeyEquivalentPressesItsButton)
{
    const auto pressV = [this] { fixture->pressKey("v"); };
    EXPECT_EQ(runAnd(alertWith({{"OK", "\r"}, {"Quit", "v"}}), pressV), 1001);
    EXPECT_EQ(runAnd(alertWith({{"View", "v"}, {"Ignore", ""}}), pressV), 1000);
}

TEST_F(AlertContract, AKeyThatNoButtonClaimsLeavesTheAlertOpen)
{
    const int response = runAnd(alertWith({{"OK", "\r"}, {"Quit", "v"}}), [&] {
        for (const auto* key : {"q", "o", "c", "x"})
            fixture->pressKey(key);
        EXPECT_TRUE(fixture->isOpen());
        fixture->press("Quit");
    });
    EXPECT_EQ(response, 1001);
}

TEST_F(AlertContract, AnAlertOverAnotherAnswersForItself)
{
    int inner = 0;
    const int outer = runAnd(alertWith({{"OK", ""}, {"Outer", ""}}), [&] {
        fixture->whenOpen([&] { EXPECT_TRUE(fixture->press("Inner")); });
        inner = fixture->runner().runModal(alertWith({{"OK", ""}, {"Inner", ""}}));
        EXPECT_TRUE(fixture->isOpen());
        EXPECT_TRUE(fixture->press("OK"));
    });
    EXPECT_EQ(inner, 1001);
    EXPECT_EQ(outer, 1000);
}

TEST_F(AlertContract, OneAlertAfterTheOtherCanBeRun)
{
    const auto alert = alertWith({{"OK", ""}, {"Quit", ""}});
    for (const int response : {1001, 1000, 1001})
        EXPECT_EQ(
            runAnd(alert, [&] { fixture->press(response == 1000 ? "OK" : "Quit"); }), response);
}

} // namespace zarn
