// SPDX-License-Identifier: MIT
#pragma once

#include "base/base64.h"
#include "platform/memory/memory_platform.h"
#include "platform/memory/memory_terminal.h"
#include "terminal/command_line.h"
#include "terminal/terminal_app.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace zarn {

/// Commands in memory. Each is a process of its own: what it left in the stores stays.
class TerminalTest : public testing::Test {
protected:
    TerminalTest()
    {
        platform.settings.standard().values["agreedToTermsOfUse"] = true;
        loop.whileWaiting = [this] { return platform.urlSessions.deliver(); };
    }

    TerminalServices services()
    {
        return {.bundle = platform.bundle,
            .clock = platform.clock,
            .dateFormatter = platform.dateFormatter,
            .fileManager = platform.fileManager,
            .instanceLock = lock,
            .keychain = platform.keychain,
            .runLoop = loop,
            .serialQueues = platform.serialQueues,
            .settings = platform.settings,
            .terminal = terminal,
            .textServices = platform.textServices,
            .urlSessions = platform.urlSessions};
    }
    /// Runs a command line; the exit code of the process.
    int run(const std::vector<std::string>& words)
    {
        terminal.output.clear();
        terminal.errors.clear();
        const auto line = parseCommandLine(words, keychains, "1.0");
        if (!line.command) {
            terminal.errors.push_back(line.text);
            return static_cast<int>(line.exitCode);
        }
        TerminalApp app(services(),
            {"https://zarn.example/actions", "zarn.example/feedback", "Agreement",
                "https://zarn.example/agreement", "Publisher"});
        const auto code = app.finish(app.run(*line.command));
        return code ? static_cast<int>(*code) : -1;
    }
    /// The server accepts: a token, and its version if that is asked for.
    void acceptToken(const std::string& member = "access_token")
    {
        platform.urlSessions.reply(200, "{\"" + member + "\":\"t0k3n\"}");
    }
    void accept(const std::string& member = "access_token")
    {
        acceptToken(member);
        platform.urlSessions.reply(200, R"({"version":"11.40.0"})");
    }
    /// Registers a server as a command does.
    void add(const std::string& name, const std::string& url = "https://zarn.example",
        const std::string& clientId = "id", const std::string& secret = "s3cret")
    {
        terminal.input.push_back(secret);
        accept();
        ASSERT_EQ(run({"add", name, "--url", url, "--client-id", clientId}), 0) << error();
        platform.urlSessions.requests.clear();
        platform.events.clear();
    }

    Value::Dictionary& actions()
    {
        return platform.settings.suite("group.Q7X2M9K4TA.zarnactions")->values;
    }
    Value::Dictionary& shared()
    {
        return platform.settings.suite("group.R3V8N1P6WB.zarnie.SharedZPMA")->values;
    }
    std::vector<std::string> names()
    {
        std::vector<std::string> names;
        if (const auto* profiles = shared()["serversDict"].dictionary()) {
            for (const auto& [name, record] : *profiles)
                names.push_back(name);
        }
        return names;
    }
    /// "service/account=secret" of every keychain item, oldest first.
    std::vector<std::string> items() const
    {
        std::vector<std::string> items;
        for (const auto& item : platform.keychain.items)
            items.push_back(item.service + "/" + item.account + "="
                + std::string(item.secret.begin(), item.secret.end()));
        return items;
    }
    void storeItem(
        const std::string& service, const std::string& account, const std::string& secret)
    {
        platform.keychain.items.push_back({std::string(keychainAccessGroup), service, account,
            Data(secret.begin(), secret.end())});
    }
    std::vector<std::string> requestedUrls() const
    {
        std::vector<std::string> urls;
        for (const auto& request : platform.urlSessions.requests)
            urls.push_back(request.method + " " + request.url);
        return urls;
    }
    std::string error() const
    {
        return terminal.errors.empty() ? std::string() : terminal.errors.back();
    }
    /// Everything that is stored, to see whether a command changed something.
    std::vector<Value> stored()
    {
        Value::Array keychain;
        for (const auto& item : items())
            keychain.emplace_back(item);
        return {shared(), actions(), platform.settings.standard().values, keychain};
    }

    static constexpr std::array<KeychainKind, 2> keychains{
        {{"secret-service", "the keyring service"}, {"file", "a file"}}};
    memory::MemoryPlatform platform;
    memory::MemoryTerminal terminal;
    memory::MemoryRunLoop loop;
    memory::MemoryInstanceLock lock{platform.events};
};

} // namespace zarn
