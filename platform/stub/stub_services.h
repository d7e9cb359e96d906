// SPDX-License-Identifier: MIT
#pragma once

#include "platform/alert.h"
#include "platform/bundle.h"
#include "platform/clock.h"
#include "platform/console.h"
#include "platform/file_manager.h"
#include "platform/keychain.h"
#include "platform/notification_center.h"
#include "platform/serial_queue.h"
#include "platform/settings.h"
#include "platform/text_services.h"
#include "platform/url_session.h"
#include "platform/window_list.h"
#include "platform/workspace.h"

/// The services without a screen, each with nothing behind it.
namespace zarn::stub {

class StubAlertRunner : public AlertRunner {
public:
    int runModal(const Alert&) override { return alertFirstButtonReturn; }
};

class StubBundle : public Bundle {
public:
    const Value::Dictionary* infoDictionary() const override { return nullptr; }
};

class StubClock : public Clock {
public:
    Date now() const override { return {}; }
};

class StubDateFormatter : public DateFormatter {
public:
    std::string string(Date, std::string_view) const override { return ""; }
};

class StubConsole : public Console {
public:
    void writeLine(std::string_view) override { }
};

class StubFileHandle : public FileHandle {
public:
    void seekToEndOfFile() override { }
    void writeData(std::string_view) override { }
};

class StubFileManager : public FileManager {
public:
    std::string homeDirectory() const override { return ""; }
    bool fileExists(const std::string&) const override { return false; }
    bool createFile(const std::string&) override { return false; }
    std::unique_ptr<FileHandle> openForUpdating(const std::string&) override
    {
        return std::make_unique<StubFileHandle>();
    }
    Result<std::vector<std::string>> contentsOfDirectory(const std::string&) const override
    {
        return std::vector<std::string>();
    }
    Status removeItem(const std::string&) override { return Success(); }
};

class StubKeychain : public Keychain {
public:
    KeychainStatus add(const KeychainItem&) override { return keychain_status::notAvailable; }
    KeychainStatus update(const KeychainQuery&, const Data&) override
    {
        return keychain_status::notAvailable;
    }
    KeychainMatch copyMatching(const KeychainQuery&) override
    {
        return {keychain_status::notAvailable, std::nullopt};
    }
    std::optional<std::string> messageText(KeychainStatus) const override { return std::nullopt; }
    bool isWaitingForUser() const override { return false; }
    void setWaitObserver(WaitObserver) override { }
};

class StubNotificationCenter : public DistributedNotificationCenter {
public:
    void addObserver(const void*, std::string_view, std::function<void()>) override { }
    void removeObserver(const void*, std::string_view) override { }
};

class StubSerialQueue : public SerialQueue {
public:
    explicit StubSerialQueue(std::string_view label)
        : m_label(label)
    {
    }
    void async(std::function<void()>) override { }
    bool drain(std::chrono::milliseconds) override { return true; }
    const std::string& label() const override { return m_label; }

private:
    std::string m_label;
};

class StubSerialQueues : public SerialQueues {
public:
    std::unique_ptr<SerialQueue> make(std::string_view label) override
    {
        return std::make_unique<StubSerialQueue>(label);
    }
};

class StubSettingsDomain : public SettingsDomain {
public:
    std::optional<Value> object(std::string_view) const override { return std::nullopt; }
    void set(std::string_view, const Value&) override { }
    void remove(std::string_view) override { }
};

class StubSettings : public Settings {
public:
    SettingsDomain& standard() override { return m_domain; }
    SettingsDomain* suite(std::string_view) override { return &m_domain; }
    void setFailureObserver(FailureObserver) override { }

private:
    StubSettingsDomain m_domain;
};

class StubTextServices : public TextServices {
public:
    int localizedCompare(std::string_view, std::string_view) const override { return 0; }
    void sortLocalized(std::vector<std::string>&) const override { }
    int numericCompare(std::string_view, std::string_view) const override { return 0; }
    std::optional<std::string> firstMatch(std::string_view, std::string_view) const override
    {
        return std::nullopt;
    }
};

class StubUrlSession : public UrlSession {
public:
    void dataTask(const UrlRequest&, DataTaskCompletion) override { }
    void finishTasksAndInvalidate() override { }
};

class StubUrlSessions : public UrlSessions {
public:
    std::shared_ptr<UrlSession> makeSession(
        const UrlSessionConfiguration&, UrlSessionDelegate&) override
    {
        return std::make_shared<StubUrlSession>();
    }
    void removeAllCachedResponses() override { }
};

class StubWindowList : public WindowList {
public:
    std::optional<std::vector<WindowRecord>> onScreen() const override { return std::nullopt; }
};

class StubWorkspace : public Workspace {
public:
    void openUrl(const Url&) override { }
    void openFolder(const std::string&) override { }
};

} // namespace zarn::stub
