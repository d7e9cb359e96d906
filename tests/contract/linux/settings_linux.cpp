// SPDX-License-Identifier: MIT
#include "platform/linux/settings/plist_settings.h"
#include "tests/contract/settings_contract.h"
#include "tests/support/scratch_folder.h"

namespace zarn {
namespace {

using linux_backend::PlistSettings;

class Desktop final : public linux_backend::GlobalValues {
public:
    std::optional<Value> object(std::string_view key) const override
    {
        const auto it = values.find(std::string(key));
        return it == values.end() ? std::nullopt : std::optional(it->second);
    }
    Value::Dictionary values;
};

/// Launch arguments are known from the start: the settings look at the ones of the moment.
class LinuxFixture final : public SettingsFixture {
public:
    Settings& settings() override { return m_proxy; }
    Settings& otherProcess() override { return m_other; }
    void setLaunchArgument(const std::string& key, const std::string& value) override
    {
        m_proxy.restart(linux_backend::launchArgumentsOf({"-" + key, value}));
    }
    void setGlobalValue(const std::string& key, const Value& value) override
    {
        m_desktop.values[key] = value;
    }

private:
    /// The domains outlive a restart with other launch arguments.
    class Restartable final : public Settings, public SettingsDomain {
    public:
        Restartable(std::string folder, const Desktop& desktop)
            : m_folder(std::move(folder))
            , m_desktop(desktop)
            , m_settings(std::make_unique<PlistSettings>(m_folder, Value::Dictionary{}, &desktop))
        {
        }
        void restart(Value::Dictionary arguments)
        {
            m_earlier.push_back(std::move(m_settings));
            m_settings
                = std::make_unique<PlistSettings>(m_folder, std::move(arguments), &m_desktop);
        }
        SettingsDomain& standard() override { return *this; }
        SettingsDomain* suite(std::string_view name) override { return m_settings->suite(name); }
        std::optional<Value> object(std::string_view key) const override
        {
            return m_settings->standard().object(key);
        }
        void set(std::string_view key, const Value& value) override
        {
            m_settings->standard().set(key, value);
        }
        void remove(std::string_view key) override { m_settings->standard().remove(key); }

    private:
        std::string m_folder;
        const Desktop& m_desktop;
        std::unique_ptr<PlistSettings> m_settings;
        std::vector<std::unique_ptr<PlistSettings>> m_earlier;
    };

    const ScratchFolder m_scratch;
    Desktop m_desktop;
    Restartable m_proxy{m_scratch.path() + "/config/zarn-actions", m_desktop};
    PlistSettings m_other{m_scratch.path() + "/config/zarn-actions", {}, nullptr};
};

INSTANTIATE_TEST_SUITE_P(Linux, SettingsContract,
    testing::Values(SettingsBackend{"linux", [] { return std::make_unique<LinuxFixture>(); }}));

} // namespace
} // namespace zarn
