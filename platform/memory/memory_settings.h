// SPDX-License-Identifier: MIT
#pragma once

#include "platform/settings.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace zarn::memory {

/// A settings domain in memory. Records writes as "set <domain> <key>" and "remove <domain> <key>".
class MemorySettingsDomain final : public SettingsDomain {
public:
    MemorySettingsDomain(std::string name, std::vector<std::string>& events,
        const Settings::FailureObserver& observer)
        : m_name(std::move(name))
        , m_events(events)
        , m_observer(observer)
    {
    }

    std::optional<Value> object(std::string_view key) const override;
    void set(std::string_view key, const Value& value) override;
    void remove(std::string_view key) override;

    /// The domain's own values.
    Value::Dictionary values;
    /// Looked at before and after the domain's own values.
    Value::Dictionary launchArguments;
    Value::Dictionary globalValues;
    /// Why writes fail; "" while they do not.
    std::string failure;

private:
    bool fails() const;

    std::string m_name;
    std::vector<std::string>& m_events;
    const Settings::FailureObserver& m_observer;
};

/// Settings in memory. `events` is shared with other doubles where a test checks an order.
class MemorySettings final : public Settings {
public:
    explicit MemorySettings(std::vector<std::string>& events)
        : m_standard("standard", events, m_observer)
        , m_events(events)
    {
    }

    MemorySettingsDomain& standard() override { return m_standard; }
    MemorySettingsDomain* suite(std::string_view name) override;
    void setFailureObserver(FailureObserver observer) override { m_observer = std::move(observer); }

    /// Suites that cannot be opened.
    std::set<std::string, std::less<>> broken;

private:
    FailureObserver m_observer;
    MemorySettingsDomain m_standard;
    std::map<std::string, std::unique_ptr<MemorySettingsDomain>, std::less<>> m_suites;
    std::vector<std::string>& m_events;
};

} // namespace zarn::memory
