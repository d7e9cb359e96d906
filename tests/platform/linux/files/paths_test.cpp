// SPDX-License-Identifier: MIT
#include "platform/linux/files/paths.h"

#include "tests/support/scoped_variable.h"

#include <gtest/gtest.h>

namespace zarn::linux_backend {
namespace {

class PathsTest : public testing::Test {
protected:
    ScopedVariable home{"HOME", "/h/me"};
    ScopedVariable config{"XDG_CONFIG_HOME", ""};
    ScopedVariable data{"XDG_DATA_HOME", ""};
    ScopedVariable state{"XDG_STATE_HOME", ""};
};

TEST_F(PathsTest, FoldersLieInTheHomeDirectoryByDefault)
{
    const auto paths = Paths::fromEnvironment();
    EXPECT_EQ(paths.home, "/h/me");
    EXPECT_EQ(paths.config, "/h/me/.config/zarn-actions");
    EXPECT_EQ(paths.data, "/h/me/.local/share/zarn-actions");
    EXPECT_EQ(paths.state, "/h/me/.local/state/zarn-actions");
}

TEST_F(PathsTest, TheEnvironmentNamesOtherFolders)
{
    config.set("/c/");
    data.set("/d");
    state.set("/s//");
    const auto paths = Paths::fromEnvironment();
    EXPECT_EQ(paths.config, "/c/zarn-actions");
    EXPECT_EQ(paths.data, "/d/zarn-actions");
    EXPECT_EQ(paths.state, "/s/zarn-actions");
}

TEST_F(PathsTest, ARelativeFolderCountsAsUnset)
{
    config.set("config");
    data.set("./d");
    state.set("~/s");
    const auto paths = Paths::fromEnvironment();
    EXPECT_EQ(paths.config, "/h/me/.config/zarn-actions");
    EXPECT_EQ(paths.data, "/h/me/.local/share/zarn-actions");
    EXPECT_EQ(paths.state, "/h/me/.local/state/zarn-actions");
}

TEST_F(PathsTest, WithoutHomeThePasswordDatabaseIsAsked)
{
    for (const char* value : {"", "relative"}) {
        home.set(value);
        EXPECT_TRUE(Paths::fromEnvironment().home.starts_with('/'));
    }
}

TEST_F(PathsTest, TheHomeDirectoryHasNoSlashAtItsEnd)
{
    home.set("/h/me///");
    EXPECT_EQ(Paths::fromEnvironment().home, "/h/me");
}

} // namespace
} // namespace zarn::linux_backend
