// SPDX-License-Identifier: MIT
#include "platform/memory/memory_settings.h"

#include <gtest/gtest.h>

namespace zarn::memory {
namespace {

class MemorySettingsTest : public testing::Test {
protected:
    std::vector<std::string> events;
    MemorySettings settings{events};
};

TEST_F(MemorySettingsTest, LaunchArgumentsComeBeforeOwnValuesAndGlobalValuesAfterThem)
{
    auto& standard = settings.standard();
    standard.globalValues["key"] = "global";
    EXPECT_EQ(standard.object("key"), Value("global"));
    standard.set("key", "own");
    EXPECT_EQ(standard.object("key"), Value("own"));
    standard.launchArguments["key"] = "launch";
    EXPECT_EQ(standard.object("key"), Value("launch"));
    standard.remove("key");
    standard.launchArguments.clear();
    EXPECT_EQ(standard.object("key"), Value("global"));
}

TEST_F(MemorySettingsTest, ReadsConvertAsTheInterfaceSays)
{
    settings.standard().launchArguments["forceBasicAuth"] = "1";
    EXPECT_EQ(settings.standard().integer("forceBasicAuth"), 1);
    EXPECT_FALSE(settings.standard().boolean("missing"));
}

TEST_F(MemorySettingsTest, EveryWriteIsRecordedInOrderAcrossDomains)
{
    settings.suite("a")->set("one", 1);
    settings.standard().set("two", 2);
    settings.suite("a")->remove("one");
    EXPECT_EQ(events, (std::vector<std::string>{"set a one", "set standard two", "remove a one"}));
}

TEST_F(MemorySettingsTest, ASuiteIsTheSameEachTimeAndMayBeMadeToFail)
{
    auto* suite = settings.suite("a");
    ASSERT_TRUE(suite);
    EXPECT_EQ(settings.suite("a"), suite);
    EXPECT_NE(settings.suite("b"), suite);
    settings.broken.insert("a");
    EXPECT_EQ(settings.suite("a"), nullptr);
}

} // namespace
} // namespace zarn::memory
