// SPDX-License-Identifier: MIT
#include "api/connection_state.h"

#include <gtest/gtest.h>

namespace zarn {
namespace {

TEST(ConnectionStateTest, AFreshProcessKnowsNothingAndAsksAsAnApiClient)
{
    const ConnectionState state;
    EXPECT_EQ(state.serverUrl, "");
    EXPECT_EQ(state.username, "");
    EXPECT_EQ(state.password, "");
    EXPECT_EQ(state.base64Creds, "");
    EXPECT_EQ(state.useApiClient, 1);
    EXPECT_EQ(state.useUsernameState, 0);
    EXPECT_EQ(state.token, "");
    EXPECT_EQ(state.authScheme, "Basic");
    EXPECT_FALSE(state.bearerTokenActive);
    EXPECT_EQ(state.tokenCreated, std::nullopt);
    EXPECT_EQ(state.serverVersion, "");
    EXPECT_EQ(state.versionMajor, 0);
    EXPECT_EQ(state.versionMinor, 0);
    EXPECT_EQ(state.versionPatch, 0);
    EXPECT_EQ(state.versionBuild, "");
}

} // namespace
} // namespace zarn
