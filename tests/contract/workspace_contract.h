// SPDX-License-Identifier: MIT
#pragma once

#include "platform/workspace.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace zarn {

/// Lends a workspace and sees what the user's other programs were asked to open.
class WorkspaceFixture {
public:
    virtual ~WorkspaceFixture() = default;
    virtual Workspace& workspace() = 0;
    /// "url <address>" and "folder <path>", after `count` of them have come.
    virtual std::vector<std::string> opened(std::size_t count) = 0;
};

/// Made by the backend that this is linked with.
std::unique_ptr<WorkspaceFixture> makeWorkspaceFixture();

/// What every workspace has to do.
class WorkspaceContract : public testing::Test {
protected:
    void openUrl(const std::string& address)
    {
        const auto url = Url::fromText(address);
        ASSERT_TRUE(url) << address;
        fixture->workspace().openUrl(*url);
    }
    std::unique_ptr<WorkspaceFixture> fixture = makeWorkspaceFixture();
};

} // namespace zarn
