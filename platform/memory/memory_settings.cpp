// SPDX-License-Identifier: MIT
#include "platform/memory/memory_settings.h"

namespace zarn::memory {

std::optional<Value> MemorySettingsDomain::object(std::string_view key) const
{
    for (const auto* layer : {&launchArguments, &values, &globalValues}) {
        if (const auto it = layer->find(std::string(key)); it != layer->end())
            return it->second;
    }
    return std::nullopt;
}

bool MemorySettingsDomain::fails() const
{
    if (!failure.empty() && m_observer)
        m_observer(failure);
    return !failure.empty();
}

void MemorySettingsDomain::set(std::string_view key, const Value& value)
{
    m_events.push_back("set " + m_name + " " + std::string(key));
    if (fails())
        return;
    values[std::string(key)] = value;
}

void MemorySettingsDomain::remove(std::string_view key)
{
    m_events.push_back("remove " + m_name + " " + std::string(key));
    if (fails())
        return;
    values.erase(std::string(key));
}

MemorySettingsDomain* MemorySettings::suite(std::string_view name)
{
    if (broken.contains(name))
        return nullptr;
    auto it = m_suites.find(name);
    if (it == m_suites.end())
        it = m_suites
                 .emplace(std::string(name),
                     std::make_unique<MemorySettingsDomain>(
                         std::string(name), m_events, m_observer))
                 .first;
    return it->second.get();
}

} // namespace zarn::memory
