// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/settings_portal.h"
#include "tests/contract/notification_center_contract.h"
#include "tests/support/fake_settings_portal.h"
#include "tests/support/qt_environment.h"

namespace zarn {
namespace {

using namespace linux_backend;

const auto* const environment = testing::AddGlobalTestEnvironment(new QtEnvironment);

class PortalFixture final : public NotificationCenterFixture {
public:
    PortalFixture()
    {
        EXPECT_TRUE(runEventsUntil([this] { return m_desktop.reads() > 0; }));
        m_portal.waitForFirstAnswer(std::chrono::seconds(10));
    }
    DistributedNotificationCenter& center() override { return m_portal; }
    void changeAppearance() override
    {
        const bool dark = !m_portal.prefersDark();
        m_desktop.setColorScheme(dark ? 1 : 2);
        EXPECT_TRUE(runEventsUntil([&] { return m_portal.prefersDark() == dark; }));
    }

private:
    FakeSettingsPortal m_desktop{0};
    SettingsPortal m_portal;
};

INSTANTIATE_TEST_SUITE_P(Portal, NotificationCenterContract,
    testing::Values(
        NotificationCenterBackend{"portal", [] { return std::make_unique<PortalFixture>(); }}),
    [](const auto& backend) { return backend.param.name; });

} // namespace
} // namespace zarn
