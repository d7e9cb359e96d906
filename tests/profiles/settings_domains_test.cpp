// SPDX-License-Identifier: MIT
#include "profiles/settings_domains.h"

#include "platform/memory/memory_settings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zarn {
namespace {

class SettingsDomainsTest : public testing::Test {
protected:
    std::vector<std::string> events;
    memory::MemorySettings settings{events};
    SettingsDomains domains{settings};
};

using SettingsDomainsDeathTest = SettingsDomainsTest;

TEST_F(SettingsDomainsTest, TheSuitesHaveTheirFixedNames)
{
    domains.sharedProfileDefaults().set("a", 1);
    domains.actionsDefaults().set("b", 2);
    domains.standardDefaults().set("c", 3);
    EXPECT_EQ(events,
        (std::vector<std::string>{"set group.R3V8N1P6WB.zarnie.SharedZPMA a",
            "set group.Q7X2M9K4TA.zarnactions b", "set standard c"}));
}

TEST_F(SettingsDomainsDeathTest, ASuiteThatCannotBeOpenedStopsTheProcess)
{
    settings.broken = {"group.R3V8N1P6WB.zarnie.SharedZPMA"};
    EXPECT_DEATH(domains.sharedProfileDefaults(),
        "fatal: settings suite group.R3V8N1P6WB.zarnie.SharedZPMA cannot be opened\n");
    settings.broken = {"group.Q7X2M9K4TA.zarnactions"};
    EXPECT_DEATH(domains.actionsDefaults(),
        "fatal: settings suite group.Q7X2M9K4TA.zarnactions cannot be opened\n");
}

} // namespace
} // namespace zarn
