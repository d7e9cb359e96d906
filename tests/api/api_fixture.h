// SPDX-License-Identifier: MIT
#pragma once

#include "api/alert_display.h"
#include "api/bundle_texts.h"
#include "api/connection_state.h"
#include "api/status_display.h"
#include "api/token_delegate.h"
#include "log/write_to_log.h"
#include "platform/memory/memory_clock.h"
#include "platform/memory/memory_desktop.h"
#include "platform/memory/memory_file_manager.h"
#include "platform/memory/memory_settings.h"
#include "platform/memory/memory_url_sessions.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zarn {

/// Records what it was asked to show.
class RecordingAlerts final : public AlertDisplay {
public:
    std::string display(
        std::string_view header, std::string_view message, std::string_view second) override
    {
        shown.push_back(
            std::string(header) + "|" + std::string(message) + "|" + std::string(second));
        if (whileOpen)
            whileOpen();
        return "OK";
    }
    std::vector<std::string> shown;
    std::function<void()> whileOpen;
};

/// Records what it was asked to show.
class RecordingStatus final : public StatusDisplay {
public:
    void showProgress(Wait wait, std::string_view text) override
    {
        events.push_back((wait == Wait::Server ? "progress " : "wrong wait ") + std::string(text));
    }
    void endProgress(Wait wait) override
    {
        events.emplace_back(wait == Wait::Server ? "end" : "wrong wait");
    }
    void showFailure(std::string_view operation, std::string_view cause) override
    {
        events.push_back("[" + std::string(operation) + "] " + std::string(cause));
    }
    std::vector<std::string> events;
};

/// A server client on the in-memory platform.
class ApiFixture : public testing::Test {
protected:
    /// The log's lines without their timestamps.
    std::vector<std::string> logLines() const
    {
        constexpr std::size_t stamp = std::string_view("Sat Mar 01 10:15:00 ").size();
        std::vector<std::string> lines;
        const auto it = files.files.find(logFile.currentPath());
        if (it == files.files.end())
            return lines;
        std::string text = it->second;
        for (auto end = text.find('\n'); end != std::string::npos; end = text.find('\n')) {
            lines.push_back(text.substr(0, end).substr(std::min(stamp, end)));
            text.erase(0, end + 1);
        }
        return lines;
    }

    ValidationCompletion completion()
    {
        return [this](std::int64_t status, const std::string& result) {
            outcomes.push_back(std::to_string(status) + " " + result);
        };
    }

    std::vector<std::string> events;
    memory::MemoryFileManager files{events};
    memory::MemoryClock clock;
    memory::MemoryDateFormatter dates;
    memory::MemoryBundle bundle;
    memory::MemoryConsole console;
    memory::MemorySettings settings{events};
    memory::MemoryUrlSessions sessions{events};
    RecordingAlerts alerts;
    RecordingStatus statusLine;
    ConnectionState connection;
    BundleTexts texts{bundle};
    LogFile logFile{{files, clock, dates}};
    WriteToLog log{logFile};
    std::shared_ptr<TokenDelegate> delegate
        = std::make_shared<TokenDelegate>(TokenDelegate::Deps{.connection = connection,
            .sessions = sessions,
            .standardDefaults = settings.standard(),
            .texts = texts,
            .clock = clock,
            .log = log,
            .alerts = alerts,
            .console = console,
            .status = statusLine});
    std::vector<std::string> outcomes;
};

} // namespace zarn
