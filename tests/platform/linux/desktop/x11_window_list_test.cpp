// SPDX-License-Identifier: MIT
// Run without a window manager and under openbox: a managed window is in a frame there.
#include "platform/linux/desktop/x11_window_list.h"
#include "tests/support/qt_environment.h"
#include "tests/support/x11_windows.h"

#include <QWindow>

#include <fstream>

#include <unistd.h>

namespace zarn::linux_backend {
namespace {

using Texts = std::vector<std::string>;
using Managed = X11Windows::Managed;

const auto* const environment = testing::AddGlobalTestEnvironment(new QtEnvironment);

class X11WindowListTest : public testing::Test {
protected:
    /// "owner/title" of each record, "-" for what is missing.
    Texts listed() const
    {
        const auto records = m_list.onScreen();
        if (!records)
            return {"no list"};
        Texts result;
        for (const auto& record : *records)
            result.push_back(
                record.ownerName.value_or("-") + "/" + record.windowName.value_or("-"));
        return result;
    }

    X11Windows other;

private:
    X11WindowList m_list{[] { return Texts{"never asked"}; }};
};

TEST_F(X11WindowListTest, AManagedWindowIsListedOnceUnderItsOwnNames)
{
    const auto window = other.make(Managed::Yes);
    other.setClass(window, "print-desk", "Zarn Print Desk");
    other.setTitle(window, "About");
    other.show(window);
    EXPECT_EQ(listed(), Texts{"Zarn Print Desk/About"});
}

TEST_F(X11WindowListTest, AWindowInAForeignFrameWithNamesOfItsOwnIsFound)
{
    const auto frame = other.make();
    other.setClass(frame, "frames", "Window Frames");
    other.setTitle(frame, "A frame");
    const auto inner = other.make(Managed::No, frame);
    const auto window = other.make(Managed::No, inner);
    other.setClass(window, "editor", "Editor");
    other.setTitle(window, "Letter");
    other.setNumber(window, "WM_STATE", other.atom("WM_STATE"), 1);
    other.map(window);
    other.map(inner);
    other.show(frame);
    EXPECT_EQ(listed(), Texts{"Editor/Letter"});
}

TEST_F(X11WindowListTest, AWindowWithoutAStateYetIsFoundInItsFrame)
{
    const auto frame = other.make();
    const auto window = other.make(Managed::No, frame);
    other.setClass(window, "editor", "Editor");
    other.setTitle(window, "Letter");
    other.map(window);
    other.show(frame);
    EXPECT_EQ(listed(), Texts{"Editor/Letter"});
}

TEST_F(X11WindowListTest, AnEmptyFrameIsNoWindow)
{
    const auto frame = other.make();
    other.show(frame);
    EXPECT_EQ(listed(), Texts{});
}

TEST_F(X11WindowListTest, WithoutAClassTheOwnerIsTheNameOfTheProcess)
{
    const auto window = other.make();
    other.setTitle(window, "Plain");
    other.setNumber(
        window, "_NET_WM_PID", XCB_ATOM_CARDINAL, static_cast<std::uint32_t>(::getpid()));
    other.show(window);
    std::string process;
    std::getline(std::ifstream("/proc/self/comm"), process);
    ASSERT_FALSE(process.empty());
    EXPECT_EQ(listed(), Texts{process + "/Plain"});
}

TEST_F(X11WindowListTest, WithoutClassAndProcessThereIsNoOwner)
{
    const auto window = other.make();
    other.setTitle(window, "Nobody's");
    other.show(window);
    EXPECT_EQ(listed(), Texts{"-/Nobody's"});
}

TEST_F(X11WindowListTest, AWindowWithoutATitleHasNoName)
{
    const auto window = other.make();
    other.setClass(window, "panel", "Panel");
    other.show(window);
    EXPECT_EQ(listed(), Texts{"Panel/-"});
}

TEST_F(X11WindowListTest, TheUnicodeTitleGoesBeforeTheOldOne)
{
    const auto window = other.make();
    other.setClass(window, "a", "A");
    other.setOldTitle(window, "old");
    other.setTitle(window, "new");
    other.show(window);
    EXPECT_EQ(listed(), Texts{"A/new"});
}

TEST_F(X11WindowListTest, AnOldTitleIsReadAsLatin1)
{
    const auto window = other.make();
    other.setClass(window, "a", "A");
    other.setOldTitle(window,
        "Gr\xf6\xdf"
        "e");
    other.show(window);
    EXPECT_EQ(listed(),
        Texts{"A/Gr\xc3\xb6\xc3\x9f"
              "e"});
}

TEST_F(X11WindowListTest, AHiddenWindowIsNotListed)
{
    const auto hidden = other.make();
    other.setClass(hidden, "a", "Hidden");
    const auto shown = other.make();
    other.setClass(shown, "a", "Shown");
    other.show(hidden);
    other.show(shown);
    other.hide(hidden);
    EXPECT_EQ(listed(), Texts{"Shown/-"});
}

TEST_F(X11WindowListTest, AWindowBeyondTheEdgeOfTheScreenIsNotListed)
{
    const auto window = other.make();
    other.setClass(window, "parked", "Parked");
    other.show(window);
    EXPECT_EQ(listed(), Texts{"Parked/-"});
    other.move(window, -200, 0);
    EXPECT_EQ(listed(), Texts{});
    other.move(window, -199, 0);
    EXPECT_EQ(listed(), Texts{"Parked/-"});
    other.move(window, 0, 1024);
    EXPECT_EQ(listed(), Texts{});
}

TEST_F(X11WindowListTest, TheDesktopAndTheDockAreNotListed)
{
    for (const std::string type : {"DESKTOP", "DOCK"}) {
        const auto window = other.make();
        other.setClass(window, "shell", "Shell");
        other.setNumber(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
            other.atom("_NET_WM_WINDOW_TYPE_" + type));
        other.show(window);
    }
    EXPECT_EQ(listed(), Texts{});
}

TEST_F(X11WindowListTest, AWindowThatOnlyTakesInputIsNotListed)
{
    const auto window = other.make(Managed::No, XCB_WINDOW_NONE, XCB_WINDOW_CLASS_INPUT_ONLY);
    other.setClass(window, "trap", "Trap");
    other.map(window);
    EXPECT_EQ(listed(), Texts{});
}

TEST_F(X11WindowListTest, ThisProgramsOwnWindowIsListedToo)
{
    QWindow window;
    window.setTitle("Own");
    window.show();
    ASSERT_TRUE(runEventsUntil([&] { return window.isExposed(); }));
    const auto records = listed();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_TRUE(records[0].ends_with("/Own")) << records[0];
}

} // namespace
} // namespace zarn::linux_backend
