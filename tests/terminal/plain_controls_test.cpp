// SPDX-License-Identifier: MIT
#include "terminal/plain_screen.h"

#include <gtest/gtest.h>

namespace zarn {
namespace {

using Texts = std::vector<std::string>;

TEST(PlainControls, KeepWhatTheyAreGiven)
{
    PlainTextField field;
    field.setStringValue("text");
    field.setEditable(false);
    field.setHidden(true);
    field.setEnabled(false);
    EXPECT_EQ(field.stringValue(), "text");
    EXPECT_FALSE(field.isEditable());
    EXPECT_TRUE(field.isHidden());
    EXPECT_FALSE(field.isEnabled());
    PlainButton button;
    button.setState(1);
    button.setTitle("Add");
    EXPECT_EQ(button.state(), 1);
    EXPECT_EQ(button.title(), "Add");
    PlainLabel label;
    label.setStringValue("label");
    EXPECT_EQ(label.stringValue(), "label");
}

TEST(PlainControls, TheMenuHasOneItemATitleAndItsFirstItemIsChosen)
{
    PlainPopUpButton menu;
    EXPECT_EQ(menu.titleOfSelectedItem(), "");
    menu.addItems({"A", "B", "A"});
    EXPECT_EQ(menu.itemTitles(), (Texts{"B", "A"}));
    EXPECT_EQ(menu.title(), "A");
    menu.insertSeparator(menu.numberOfItems());
    menu.addItem("Add Server...");
    EXPECT_EQ(menu.itemTitles(), (Texts{"B", "A", "", "Add Server..."}));
    EXPECT_EQ(menu.title(), "A");
}

TEST(PlainControls, TheMenuChoosesOnlyWhatItHas)
{
    PlainPopUpButton menu;
    menu.addItems({"A", "B"});
    menu.selectItem("B");
    EXPECT_EQ(menu.title(), "B");
    menu.removeItem("A");
    EXPECT_EQ(menu.title(), "B");
    menu.removeItem("B");
    EXPECT_EQ(menu.title(), "");
    menu.addItem("C");
    menu.selectItem("nothing");
    EXPECT_EQ(menu.title(), "");
    menu.selectItem("C");
    menu.selectNone();
    EXPECT_EQ(menu.title(), "");
    menu.removeAllItems();
    EXPECT_EQ(menu.numberOfItems(), 0U);
}

TEST(PlainScreen, HasTheControlsOfTheStoryboard)
{
    PlainScreen screen;
    EXPECT_EQ(screen.button("updateServerInfo_Button")->title(), "Set");
    EXPECT_EQ(screen.button("quit_Button")->title(), "Quit");
    EXPECT_EQ(screen.label("status_Label"), screen.label("status_Label"));
    EXPECT_NE(screen.label("status_Label"), screen.label("username_label"));
    EXPECT_EQ(screen.textField("a"), screen.textField("a"));
}

} // namespace
} // namespace zarn
