// SPDX-License-Identifier: MIT
// On a display that keeps other programs' windows private.
#include "platform/linux/desktop/x11_window_list.h"
#include "tests/support/qt_environment.h"

namespace zarn::linux_backend {
namespace {

const auto* const environment = testing::AddGlobalTestEnvironment(new QtEnvironment);

TEST(PrivateWindows, TheProgramsOwnWindowsAreListed)
{
    QGuiApplication::setApplicationName("zarn-actions");
    const X11WindowList list{[] { return std::vector<std::string>{"Zarn Actions", "About"}; }};
    const auto records = list.onScreen();
    ASSERT_TRUE(records);
    ASSERT_EQ(records->size(), 2U);
    EXPECT_EQ((*records)[0].ownerName, "zarn-actions");
    EXPECT_EQ((*records)[0].windowName, "Zarn Actions");
    EXPECT_EQ((*records)[1].windowName, "About");
}

TEST(PrivateWindows, NoWindowIsAnEmptyListAndNotAMissingOne)
{
    const X11WindowList list{[] { return std::vector<std::string>{}; }};
    const auto records = list.onScreen();
    ASSERT_TRUE(records);
    EXPECT_TRUE(records->empty());
}

} // namespace
} // namespace zarn::linux_backend
