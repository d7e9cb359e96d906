// SPDX-License-Identifier: MIT
#include "profiles/settings_domains.h"

#include "base/fatal.h"
#include "platform/settings.h"

#include <string>

namespace zarn {

SettingsDomain& SettingsDomains::standardDefaults()
{
    return m_settings.standard();
}

SettingsDomain& SettingsDomains::open(SettingsDomain*& domain, std::string_view name)
{
    if (!domain)
        domain = m_settings.suite(name);
    if (!domain)
        fatalError("settings suite " + std::string(name) + " cannot be opened");
    return *domain;
}

} // namespace zarn
