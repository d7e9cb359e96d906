// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace zarn {

class Settings;
class SettingsDomain;

inline constexpr std::string_view sharedProfileSuite = "group.R3V8N1P6WB.zarnie.SharedZPMA";
inline constexpr std::string_view actionsSuite = "group.Q7X2M9K4TA.zarnactions";

/// The settings domains, each opened once, on first use. A suite that cannot be opened stops the
/// process. Main thread only.
class SettingsDomains {
public:
    explicit SettingsDomains(Settings& settings)
        : m_settings(settings)
    {
    }
    SettingsDomain& sharedProfileDefaults()
    {
        return open(m_sharedProfileDefaults, sharedProfileSuite);
    }
    SettingsDomain& actionsDefaults() { return open(m_actionsDefaults, actionsSuite); }
    SettingsDomain& standardDefaults();

private:
    SettingsDomain& open(SettingsDomain*& domain, std::string_view name);

    Settings& m_settings;
    SettingsDomain* m_sharedProfileDefaults = nullptr;
    SettingsDomain* m_actionsDefaults = nullptr;
};

} // namespace zarn
