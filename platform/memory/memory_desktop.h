// SPDX-License-Identifier: MIT
#pragma once

#include "platform/bundle.h"
#include "platform/console.h"
#include "platform/notification_center.h"
#include "platform/window_list.h"
#include "platform/workspace.h"

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

/// The small services of a desktop, in memory.
namespace zarn::memory {

class MemoryBundle final : public Bundle {
public:
    const Value::Dictionary* infoDictionary() const override { return info ? &*info : nullptr; }

    std::optional<Value::Dictionary> info
        = Value::Dictionary{{"CFBundleShortVersionString", "1.4.2"}, {"CFBundleVersion", "57"},
            {"CFBundleExecutable", "zarn-actions"}};
};

class MemoryConsole final : public Console {
public:
    void writeLine(std::string_view line) override
    {
        const std::lock_guard lock(m_mutex);
        lines.emplace_back(line);
    }
    std::vector<std::string> lines;

private:
    std::mutex m_mutex;
};

class MemoryWorkspace final : public Workspace {
public:
    void openUrl(const Url& url) override { openedUrls.push_back(url.text()); }
    void openFolder(const std::string& path) override { openedFolders.push_back(path); }

    std::vector<std::string> openedUrls;
    std::vector<std::string> openedFolders;
};

class MemoryWindowList final : public WindowList {
public:
    std::optional<std::vector<WindowRecord>> onScreen() const override { return records; }
    std::optional<std::vector<WindowRecord>> records = std::vector<WindowRecord>{};
};

class MemoryNotificationCenter final : public DistributedNotificationCenter {
public:
    void addObserver(
        const void* observer, std::string_view name, std::function<void()> handler) override
    {
        m_observers.push_back({++m_lastId, observer, std::string(name), std::move(handler)});
    }
    void removeObserver(const void* observer, std::string_view name) override
    {
        removals.emplace_back(name);
        std::erase_if(m_observers,
            [&](const Entry& entry) { return entry.observer == observer && entry.name == name; });
    }
    void post(std::string_view name)
    {
        // A handler may add or remove observers; one that was removed may be gone.
        const auto observers = m_observers;
        for (const auto& entry : observers) {
            const auto isSame = [&](const Entry& other) { return other.id == entry.id; };
            if (entry.name == name && std::any_of(m_observers.begin(), m_observers.end(), isSame))
                entry.handler();
        }
    }
    std::size_t observerCount() const { return m_observers.size(); }

    std::vector<std::string> removals;

private:
    struct Entry {
        std::uint64_t id;
        const void* observer;
        std::string name;
        std::function<void()> handler;
    };
    std::vector<Entry> m_observers;
    std::uint64_t m_lastId = 0;
};

} // namespace zarn::memory
