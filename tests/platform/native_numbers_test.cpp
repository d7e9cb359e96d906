// SPDX-License-Identifier: MIT
// A backend on the native framework hands these numbers over as they are.
#include "platform/alert.h"
#include "platform/application.h"
#include "platform/keychain.h"
#include "platform/window.h"

#include <gtest/gtest.h>

namespace zarn {
namespace {

TEST(NativeNumbersTest, TheBitsOfAWindowsStyle)
{
    EXPECT_EQ(window_style::closable, 2U);
    EXPECT_EQ(window_style::miniaturizable, 4U);
    EXPECT_EQ(window_style::resizable, 8U);
    EXPECT_EQ(window_style::fullScreen, 16384U);
    EXPECT_EQ(window_style::fullSizeContentView, 32768U);
    EXPECT_EQ(static_cast<int>(TitleVisibility::Hidden), 1);
}

TEST(NativeNumbersTest, TheStylesAndAnswersOfAnAlert)
{
    EXPECT_EQ(static_cast<int>(AlertStyle::Warning), 0);
    EXPECT_EQ(static_cast<int>(AlertStyle::Informational), 1);
    EXPECT_EQ(alertFirstButtonReturn, 1000);
    EXPECT_EQ(alertSecondButtonReturn, 1001);
}

TEST(NativeNumbersTest, TheFlagOfTheOptionKey)
{
    EXPECT_EQ(modifierFlagOption, 524288U);
}

TEST(NativeNumbersTest, TheStatusCodesOfAKeychain)
{
    EXPECT_EQ(keychain_status::success, 0);
    EXPECT_EQ(keychain_status::userCanceled, -128);
    EXPECT_EQ(keychain_status::notAvailable, -25291);
    EXPECT_EQ(keychain_status::duplicateItem, -25299);
    EXPECT_EQ(keychain_status::itemNotFound, -25300);
    EXPECT_EQ(keychain_status::interactionNotAllowed, -25308);
}

} // namespace
} // namespace zarn
