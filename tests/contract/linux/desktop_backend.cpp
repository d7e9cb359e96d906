// SPDX-License-Identifier: MIT
// What the suites ask of the desktop's services; the screen has a file of its own.
#include "platform/linux/desktop/desktop_preferences.h"
#include "platform/linux/desktop/desktop_workspace.h"
#include "platform/linux/desktop/x11_window_list.h"
#include "tests/contract/notification_center_contract.h"
#include "tests/contract/window_list_contract.h"
#include "tests/contract/workspace_contract.h"
#include "tests/support/fake_file_manager.h"
#include "tests/support/fake_opener.h"
#include "tests/support/fake_settings_portal.h"
#include "tests/support/qt_environment.h"
#include "tests/support/x11_windows.h"

#include <map>

namespace zarn {
namespace {

using namespace linux_backend;

class PortalFixture final : public NotificationCenterFixture {
public:
    PortalFixture()
    {
        EXPECT_TRUE(runEventsUntil([this] { return m_desktop.reads() > 0; }));
        m_portal.waitForFirstReply(std::chrono::seconds(10));
    }
    DistributedNotificationCenter& center() override { return m_portal; }
    void changeAppearance() override
    {
        const bool dark = !m_portal.prefersDark();
        m_desktop.setColorScheme(dark ? 1 : 2);
        EXPECT_TRUE(runEventsUntil([&] { return m_portal.prefersDark() == dark; }));
    }

private:
    const TestGuiApplication m_toolkit;
    FakeSettingsPortal m_desktop{0};
    DesktopPreferences m_portal;
};

class X11WindowListFixture final : public WindowListFixture {
public:
    WindowList& windowList() override { return m_list; }
    void open(const std::string& owner, const std::string& title) override
    {
        const auto window = m_other.make();
        m_other.setClass(window, "instance", owner);
        m_other.setTitle(window, title);
        m_other.show(window);
        m_windows[title] = window;
    }
    void close(const std::string& title) override { m_other.destroy(m_windows.at(title)); }

private:
    const TestGuiApplication m_toolkit;
    X11Windows m_other;
    std::map<std::string, xcb_window_t> m_windows;
    X11WindowList m_list{[] { return std::vector<std::string>{"never asked"}; }};
};

class DesktopWorkspaceFixture final : public WorkspaceFixture {
public:
    Workspace& workspace() override { return m_workspace; }
    std::vector<std::string> opened(std::size_t count) override
    {
        runEventsUntil(
            [&] { return m_opener.calls().size() + m_fileManager.folders.size() >= count; });
        std::vector<std::string> result;
        for (const auto& call : m_opener.calls())
            result.push_back("url " + call.substr(2));
        for (const auto& folder : m_fileManager.folders)
            result.push_back("folder " + folder);
        return result;
    }

private:
    const TestGuiApplication m_toolkit;
    FakeOpener m_opener;
    FakeFileManager m_fileManager;
    DesktopWorkspace m_workspace;
};

} // namespace

std::unique_ptr<NotificationCenterFixture> makeNotificationCenterFixture()
{
    return std::make_unique<PortalFixture>();
}

std::unique_ptr<WindowListFixture> makeWindowListFixture()
{
    return std::make_unique<X11WindowListFixture>();
}

std::unique_ptr<WorkspaceFixture> makeWorkspaceFixture()
{
    return std::make_unique<DesktopWorkspaceFixture>();
}

} // namespace zarn
