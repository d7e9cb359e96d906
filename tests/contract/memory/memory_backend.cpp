// SPDX-License-Identifier: MIT
// What the suites ask of the in-memory backend, except for the screen.
#include "platform/memory/memory_clock.h"
#include "platform/memory/memory_desktop.h"
#include "platform/memory/memory_file_manager.h"
#include "platform/memory/memory_keychain.h"
#include "platform/memory/memory_serial_queue.h"
#include "platform/memory/memory_settings.h"
#include "platform/memory/memory_text_services.h"
#include "platform/memory/memory_url_sessions.h"
#include "tests/contract/bundle_contract.h"
#include "tests/contract/clock_contract.h"
#include "tests/contract/console_contract.h"
#include "tests/contract/date_formatter_contract.h"
#include "tests/contract/file_manager_contract.h"
#include "tests/contract/keychain_contract.h"
#include "tests/contract/notification_center_contract.h"
#include "tests/contract/serial_queue_contract.h"
#include "tests/contract/settings_contract.h"
#include "tests/contract/text_services_contract.h"
#include "tests/contract/url_session_contract.h"
#include "tests/contract/window_list_contract.h"
#include "tests/contract/workspace_contract.h"

namespace zarn {
namespace {

class MemoryConsoleFixture final : public ConsoleFixture {
public:
    Console& console() override { return m_console; }
    std::string written() override
    {
        std::string text;
        for (const auto& line : m_console.lines)
            text += line + "\n";
        return text;
    }

private:
    memory::MemoryConsole m_console;
};

class MemoryDateFormatterFixture final : public DateFormatterFixture {
public:
    DateFormatter& formatter() override { return m_formatter; }
    void setHoursFromUtc(int hours) override { m_formatter.secondsFromUtc = hours * 3600.0; }

private:
    memory::MemoryDateFormatter m_formatter;
};

class MemoryFileManagerFixture final : public FileManagerFixture {
public:
    FileManager& fileManager() override { return m_files; }
    std::string contentsOf(const std::string& path) override { return m_files.files.at(path); }

private:
    std::vector<std::string> m_events;
    memory::MemoryFileManager m_files{m_events};
};

class MemoryKeychainFixture final : public KeychainFixture {
public:
    Keychain& keychain() override { return m_keychain; }
    Keychain& reopened() override { return m_keychain; }

private:
    std::vector<std::string> m_events;
    memory::MemoryKeychain m_keychain{m_events};
};

class MemoryNotificationCenterFixture final : public NotificationCenterFixture {
public:
    DistributedNotificationCenter& center() override { return m_center; }
    void changeAppearance() override { m_center.post("AppleInterfaceThemeChangedNotification"); }

private:
    memory::MemoryNotificationCenter m_center;
};

/// A second view of the same values, without the launch arguments and the desktop.
class OtherProcess final : public Settings {
public:
    explicit OtherProcess(memory::MemorySettings& shared)
        : m_shared(shared)
        , m_standard(shared.standard())
    {
    }
    SettingsDomain& standard() override { return m_standard; }
    SettingsDomain* suite(std::string_view name) override { return m_shared.suite(name); }
    void setFailureObserver(FailureObserver) override { }

private:
    class OwnValues final : public SettingsDomain {
    public:
        explicit OwnValues(memory::MemorySettingsDomain& domain)
            : m_domain(domain)
        {
        }
        std::optional<Value> object(std::string_view key) const override
        {
            const auto it = m_domain.values.find(std::string(key));
            return it == m_domain.values.end() ? std::nullopt : std::optional(it->second);
        }
        void set(std::string_view key, const Value& value) override { m_domain.set(key, value); }
        void remove(std::string_view key) override { m_domain.remove(key); }

    private:
        memory::MemorySettingsDomain& m_domain;
    };

    memory::MemorySettings& m_shared;
    OwnValues m_standard;
};

class MemorySettingsFixture final : public SettingsFixture {
public:
    Settings& settings() override { return m_settings; }
    Settings& otherProcess() override { return m_other; }
    void setLaunchArgument(const std::string& key, const std::string& value) override
    {
        m_settings.standard().launchArguments[key] = value;
    }
    void setGlobalValue(const std::string& key, const Value& value) override
    {
        m_settings.standard().globalValues[key] = value;
    }
    void refuseWrites() override { m_settings.suite(suiteName)->failure = "The disk is full."; }

private:
    std::vector<std::string> m_events;
    memory::MemorySettings m_settings{m_events};
    OtherProcess m_other{m_settings};
};

class MemoryUrlSessionBackend final : public UrlSessionBackend {
public:
    UrlSessions& sessions() override { return *m_sessions; }
    void destroySessions() override { m_sessions.reset(); }
    Url url(const std::string& path) override
    {
        return *Url::fromText("https://zarn.example" + path);
    }
    void willReply(int status, const std::string& body) override
    {
        m_sessions->reply(status, body);
    }
    void willNotRespond() override { m_sessions->replyNothing(); }
    UrlRequest failing(UrlErrorCode code) override
    {
        m_sessions->fail({code, "scripted"});
        return {url("/s3cret")};
    }
    UrlRequest redirecting(UrlErrorCode code) override
    {
        m_sessions->redirectNowhere(307, {code, "https://other.example:8443"});
        return {url("/"), "POST", "s3cret"};
    }

    std::vector<SeenRequest> seen() override
    {
        std::vector<SeenRequest> seen;
        for (const auto& request : m_sessions->requests)
            seen.push_back(
                {request.method, request.url, request.headers, request.body.value_or("")});
        return seen;
    }

    bool runUntil(const std::function<bool()>& done) override
    {
        while (!done()) {
            if (!m_sessions || !m_sessions->deliver())
                return done();
        }
        return true;
    }

private:
    std::vector<std::string> m_events;
    std::unique_ptr<memory::MemoryUrlSessions> m_sessions
        = std::make_unique<memory::MemoryUrlSessions>(m_events);
};

class MemoryWindowListFixture final : public WindowListFixture {
public:
    WindowList& windowList() override { return m_list; }
    void open(const std::string& owner, const std::string& title) override
    {
        m_list.records->insert(m_list.records->begin(), WindowRecord{owner, title});
    }
    void close(const std::string& title) override
    {
        std::erase_if(*m_list.records,
            [&](const WindowRecord& record) { return record.windowName == title; });
    }

private:
    memory::MemoryWindowList m_list;
};

class MemoryWorkspaceFixture final : public WorkspaceFixture {
public:
    Workspace& workspace() override { return m_workspace; }
    std::vector<std::string> opened(std::size_t) override
    {
        std::vector<std::string> result;
        for (const auto& url : m_workspace.openedUrls)
            result.push_back("url " + url);
        for (const auto& folder : m_workspace.openedFolders)
            result.push_back("folder " + folder);
        return result;
    }

private:
    memory::MemoryWorkspace m_workspace;
};

INSTANTIATE_TEST_SUITE_P(Memory, KeychainContract,
    testing::Values(
        KeychainBackend{"memory", [] { return std::make_unique<MemoryKeychainFixture>(); }}),
    backendName);

INSTANTIATE_TEST_SUITE_P(Memory, TextServicesContract,
    testing::Values(TextServicesBackend{
        "memory", [] { return std::make_unique<memory::MemoryTextServices>(); }}));

} // namespace

std::unique_ptr<Bundle> makeBundle()
{
    return std::make_unique<memory::MemoryBundle>();
}

std::unique_ptr<Clock> makeClock()
{
    return std::make_unique<memory::MemoryClock>();
}

std::unique_ptr<ConsoleFixture> makeConsoleFixture()
{
    return std::make_unique<MemoryConsoleFixture>();
}

std::unique_ptr<DateFormatterFixture> makeDateFormatterFixture()
{
    return std::make_unique<MemoryDateFormatterFixture>();
}

std::unique_ptr<FileManagerFixture> makeFileManagerFixture()
{
    return std::make_unique<MemoryFileManagerFixture>();
}

std::unique_ptr<NotificationCenterFixture> makeNotificationCenterFixture()
{
    return std::make_unique<MemoryNotificationCenterFixture>();
}

std::unique_ptr<SerialQueues> makeSerialQueues()
{
    return std::make_unique<memory::MemorySerialQueues>();
}

std::unique_ptr<SettingsFixture> makeSettingsFixture()
{
    return std::make_unique<MemorySettingsFixture>();
}

std::unique_ptr<UrlSessionBackend> makeUrlSessionBackend()
{
    return std::make_unique<MemoryUrlSessionBackend>();
}

std::unique_ptr<WindowListFixture> makeWindowListFixture()
{
    return std::make_unique<MemoryWindowListFixture>();
}

std::unique_ptr<WorkspaceFixture> makeWorkspaceFixture()
{
    return std::make_unique<MemoryWorkspaceFixture>();
}

} // namespace zarn
