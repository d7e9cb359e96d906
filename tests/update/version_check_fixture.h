// SPDX-License-Identifier: MIT
#pragma once

#include "platform/memory/memory_desktop.h"
#include "platform/memory/memory_text_services.h"
#include "platform/memory/memory_url_sessions.h"
#include "update/version_check.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace zarn {

class VersionCheckTest : public testing::Test {
protected:
    const std::string row = "<tr><td>Current Version</td><td>";

    void check()
    {
        VersionCheck({sessions, bundle, texts, pageUrl}).checkForUpdate([](bool) {});
    }
    std::optional<bool> resultOf(
        const std::string& body, const std::string& current = "1.9.0", int status = 200)
    {
        (*bundle.info)["CFBundleShortVersionString"] = current;
        sessions.reply(status, body);
        return run();
    }
    std::optional<bool> run()
    {
        std::vector<bool> answers;
        VersionCheck versionCheck({sessions, bundle, texts, pageUrl});
        versionCheck.checkForUpdate([&](bool isNewer) { answers.push_back(isNewer); });
        EXPECT_TRUE(answers.empty());
        sessions.deliverAll();
        EXPECT_LE(answers.size(), 1U);
        return answers.empty() ? std::nullopt : std::optional<bool>(answers[0]);
    }

    std::vector<std::string> events;
    memory::MemoryUrlSessions sessions{events};
    memory::MemoryBundle bundle;
    memory::MemoryTextServices texts;
    std::string pageUrl = "https://zarn-actions.example/releases";
};

} // namespace zarn
