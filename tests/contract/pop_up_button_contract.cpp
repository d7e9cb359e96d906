// SPDX-License-Identifier: MIT
#include "tests/contract/controls_contract.h"

namespace zarn {

using Texts = std::vector<std::string>;

std::string PopUpButtonContract::items()
{
    std::string result;
    const auto titles = popUp().itemTitles();
    EXPECT_EQ(menu().numberOfItems(), titles.size());
    for (const auto& title : titles) {
        const bool isChosen = !title.empty() && title == popUp().titleOfSelectedItem();
        const auto shown = title.empty() ? "-" : title;
        result += (result.empty() ? "" : " ") + (isChosen ? "[" + shown + "]" : shown);
    }
    return result;
}

// --- Items

TEST_F(PopUpButtonContract, AnEmptyOneHasNoItemAndNoChoice)
{
    EXPECT_EQ(popUp().itemTitles(), Texts{});
    EXPECT_EQ(popUp().titleOfSelectedItem(), "");
    EXPECT_EQ(menu().numberOfItems(), 0U);
    popUp().removeAllItems();
    popUp().removeItem("A");
    popUp().selectItem("A");
    popUp().selectNone();
    EXPECT_EQ(popUp().titleOfSelectedItem(), "");
}

TEST_F(PopUpButtonContract, TheFirstItemIsChosenByItselfAndNoLaterOne)
{
    popUp().addItem("A");
    EXPECT_EQ(items(), "[A]");
    popUp().addItem("B");
    EXPECT_EQ(items(), "[A] B");
    popUp().selectNone();
    popUp().addItem("C");
    EXPECT_EQ(items(), "A B C");
    popUp().removeAllItems();
    EXPECT_EQ(items(), "");
    popUp().addItem("D");
    EXPECT_EQ(items(), "[D]");
}

TEST_F(PopUpButtonContract, AddingATitleThatExistsMovesItToTheEnd)
{
    popUp().addItems({"A", "B", "C"});
    popUp().addItem("B");
    EXPECT_EQ(items(), "[A] C B");
    popUp().addItem("A"); // It stays the chosen one.
    EXPECT_EQ(items(), "C B [A]");
    popUp().addItem("A");
    EXPECT_EQ(items(), "C B [A]");
}

TEST_F(PopUpButtonContract, SeveralTitlesAreAddedAsOneByOne)
{
    popUp().addItems({"A", "B", "A", "C", "B"});
    EXPECT_EQ(items(), "[A] C B");
    popUp().addItems({"D", "C", "D"});
    EXPECT_EQ(items(), "[A] B C D");
    popUp().addItems({});
    EXPECT_EQ(items(), "[A] B C D");
    popUp().selectNone();
    popUp().addItems({"A", "E"});
    EXPECT_EQ(items(), "B C D A E");
    popUp().removeAllItems();
    popUp().addItems({"A", "B", "C", "A"});
    EXPECT_EQ(items(), "B C [A]");
}

TEST_F(PopUpButtonContract, TitlesAreTheSameOnlyWhenTheyAreEqual)
{
    popUp().addItems({"server", "Server", "server ", "Sch\xc3\xb6n", "Scho\xcc\x88n"});
    EXPECT_EQ(popUp().itemTitles(),
        (Texts{"server", "Server", "server ", "Sch\xc3\xb6n", "Scho\xcc\x88n"}));
    popUp().selectItem("Server");
    EXPECT_EQ(popUp().titleOfSelectedItem(), "Server");
    popUp().selectItem("SERVER");
    EXPECT_EQ(popUp().titleOfSelectedItem(), "");
}

TEST_F(PopUpButtonContract, ATitleIsShownAsItIs)
{
    for (const auto* title : {"a & b", "<b>x</b> &amp;", "Sch\xc3\xb6n", "-"}) {
        popUp().addItem(title);
        popUp().selectItem(title);
        EXPECT_EQ(popUp().titleOfSelectedItem(), title);
        EXPECT_EQ(popUp().itemTitles().back(), title);
        EXPECT_EQ(fixture->shownText("selectServer_Button"), title);
    }
}

TEST_F(PopUpButtonContract, RemovingAnItemKeepsTheChoiceUnlessItWasTheChosenOne)
{
    popUp().addItems({"A", "B", "C", "D"});
    popUp().selectItem("C");
    popUp().removeItem("A");
    EXPECT_EQ(items(), "B [C] D");
    popUp().removeItem("D");
    EXPECT_EQ(items(), "B [C]");
    popUp().removeItem("X");
    EXPECT_EQ(items(), "B [C]");
    popUp().removeItem("C");
    EXPECT_EQ(items(), "B");
    EXPECT_EQ(popUp().titleOfSelectedItem(), "");
}

TEST_F(PopUpButtonContract, ASeparatorHasNoTitleAndIsNeverTheOneThatIsMeant)
{
    popUp().addItems({"A", "B"});
    popUp().selectItem("B");
    menu().insertSeparator(1);
    EXPECT_EQ(items(), "A - [B]");
    menu().insertSeparator(0);
    menu().insertSeparator(4);
    EXPECT_EQ(items(), "- A - [B] -");
    popUp().removeItem("");
    EXPECT_EQ(items(), "- A - [B] -");
    popUp().selectItem("");
    EXPECT_EQ(items(), "- A - B -");
    EXPECT_EQ(popUp().titleOfSelectedItem(), "");
    popUp().addItem("A");
    EXPECT_EQ(items(), "- - B - A");
}

TEST_F(PopUpButtonContract, ASeparatorLeavesNothingChosenWhereNothingWas)
{
    popUp().addItem("A");
    popUp().selectNone();
    menu().insertSeparator(0);
    EXPECT_EQ(items(), "- A");
    popUp().addItem("B");
    EXPECT_EQ(items(), "- A B");
}

// --- The choice

TEST_F(PopUpButtonContract, SelectingATitleThatDoesNotExistSelectsNothing)
{
    popUp().addItems({"A", "B"});
    popUp().selectItem("B");
    EXPECT_EQ(items(), "A [B]");
    EXPECT_EQ(outlets().popUpButtonCell("selectedServer_ButtonCell")->title(), "B");
    popUp().selectItem("C");
    EXPECT_EQ(items(), "A B");
    EXPECT_EQ(popUp().titleOfSelectedItem(), "");
    EXPECT_EQ(outlets().popUpButtonCell("selectedServer_ButtonCell")->title(), "");
    EXPECT_EQ(fixture->shownText("selectServer_Button"), "");
}

TEST_F(PopUpButtonContract, ChoosingAnItemIsItsActionWithTheItemChosen)
{
    popUp().addItems({"A", "B", "C"});
    std::string chosen;
    Button* sender = &button("quit_Button");
    probe("LoginVC").onAction = [&](Button* used) {
        sender = used;
        chosen = popUp().titleOfSelectedItem();
    };
    ASSERT_TRUE(fixture->choose("C", false));
    EXPECT_EQ(events(), Texts{"selectServer_Action"});
    EXPECT_EQ(chosen, "C");
    EXPECT_EQ(sender, nullptr);
    EXPECT_EQ(items(), "A B [C]");
}

TEST_F(PopUpButtonContract, ChoosingTheItemThatIsChosenAlreadyFiresItsActionAgain)
{
    popUp().addItems({"A", "B"});
    ASSERT_TRUE(fixture->choose("A", false));
    ASSERT_TRUE(fixture->choose("A", false));
    EXPECT_EQ(events(), (Texts{"selectServer_Action", "selectServer_Action"}));
    EXPECT_EQ(items(), "[A] B");
}

TEST_F(PopUpButtonContract, AnItemBehindASeparatorCanBeChosen)
{
    popUp().addItems({"A", "Add Server..."});
    menu().insertSeparator(1);
    ASSERT_TRUE(fixture->choose("Add Server...", false));
    EXPECT_EQ(popUp().titleOfSelectedItem(), "Add Server...");
    EXPECT_EQ(events(), Texts{"selectServer_Action"});
}

TEST_F(PopUpButtonContract, TheActionMayRebuildTheMenuItCameFrom)
{
    popUp().addItems({"A", "B"});
    probe("LoginVC").onAction = [&](Button*) {
        popUp().removeAllItems();
        popUp().addItems({"B", "C"});
        popUp().selectItem("C");
    };
    ASSERT_TRUE(fixture->choose("B", false));
    EXPECT_EQ(items(), "B [C]");
    EXPECT_EQ(events(), Texts{"selectServer_Action"});
}

TEST_F(PopUpButtonContract, NothingIsChosenFromADisabledOrHiddenOne)
{
    popUp().addItems({"A", "B"});
    popUp().setEnabled(false);
    EXPECT_FALSE(fixture->choose("B", false));
    popUp().setEnabled(true);
    popUp().setHidden(true);
    EXPECT_FALSE(fixture->choose("B", false));
    popUp().setHidden(false);
    EXPECT_FALSE(fixture->choose("X", false));
    EXPECT_EQ(items(), "[A] B");
    EXPECT_EQ(events(), Texts{});
}

TEST_F(PopUpButtonContract, TheOptionKeyIsSeenWhileItIsHeld)
{
    popUp().addItems({"A", "B"});
    std::vector<unsigned> flags;
    probe("LoginVC").onAction = [&](Button*) {
        flags.push_back(fixture->application().currentModifierFlags() & modifierFlagOption);
    };
    ASSERT_TRUE(fixture->choose("B", true));
    ASSERT_TRUE(fixture->choose("A", false));
    EXPECT_EQ(flags, (std::vector<unsigned>{modifierFlagOption, 0U}));
}

} // namespace zarn
