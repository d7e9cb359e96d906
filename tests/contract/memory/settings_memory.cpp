// SPDX-License-Identifier: MIT
#include "platform/memory/memory_settings.h"
#include "tests/contract/settings_contract.h"

namespace zarn {
namespace {

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

class MemoryFixture final : public SettingsFixture {
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

private:
    std::vector<std::string> m_events;
    memory::MemorySettings m_settings{m_events};
    OtherProcess m_other{m_settings};
};

INSTANTIATE_TEST_SUITE_P(Memory, SettingsContract,
    testing::Values(SettingsBackend{"memory", [] { return std::make_unique<MemoryFixture>(); }}));

} // namespace
} // namespace zarn
