// SPDX-License-Identifier: MIT
#include "platform/memory/memory_desktop.h"
#include "tests/contract/notification_center_contract.h"

namespace zarn {
namespace {

class MemoryNotificationCenterFixture final : public NotificationCenterFixture {
public:
    DistributedNotificationCenter& center() override { return m_center; }
    void changeAppearance() override { m_center.post("AppleInterfaceThemeChangedNotification"); }

private:
    memory::MemoryNotificationCenter m_center;
};

INSTANTIATE_TEST_SUITE_P(Memory, NotificationCenterContract,
    testing::Values(NotificationCenterBackend{
        "memory", [] { return std::make_unique<MemoryNotificationCenterFixture>(); }}),
    [](const auto& backend) { return backend.param.name; });

} // namespace
} // namespace zarn
