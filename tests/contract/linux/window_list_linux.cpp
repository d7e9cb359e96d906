// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/x11_window_list.h"
#include "tests/contract/window_list_contract.h"
#include "tests/support/qt_environment.h"
#include "tests/support/x11_windows.h"

#include <map>

namespace zarn {
namespace {

using namespace linux_backend;

const auto* const environment = testing::AddGlobalTestEnvironment(new QtEnvironment);

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
    X11Windows m_other;
    std::map<std::string, xcb_window_t> m_windows;
    X11WindowList m_list{[] { return std::vector<std::string>{"never asked"}; }};
};

INSTANTIATE_TEST_SUITE_P(X11, WindowListContract,
    testing::Values(
        WindowListBackend{"x11", [] { return std::make_unique<X11WindowListFixture>(); }}),
    [](const auto& backend) { return backend.param.name; });

} // namespace
} // namespace zarn
