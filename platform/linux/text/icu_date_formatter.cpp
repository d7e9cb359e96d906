// SPDX-License-Identifier: MIT
#include "platform/linux/text/icu_text.h"

#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <map>
#include <mutex>

#include <sys/stat.h>

namespace zarn::linux_backend {

namespace {

// Everything that determines the system's time zone.
std::string systemZoneStamp()
{
    struct stat link { };
    struct stat target { };
    ::lstat("/etc/localtime", &link);
    ::stat("/etc/localtime", &target);
    return std::to_string(link.st_ino) + ' ' + std::to_string(link.st_mtim.tv_sec) + ' '
        + std::to_string(link.st_mtim.tv_nsec) + ' ' + std::to_string(target.st_ino);
}

// Everything that determines the time zone. Comparing it for each line is far cheaper than a new
// formatter; the system's part is read once a second.
class ZoneStamp {
public:
    bool hasChanged()
    {
        const char* name = std::getenv("TZ");
        const bool isNamed = name != nullptr;
        bool changed = isNamed != m_isNamed;
        m_isNamed = isNamed;
        if (isNamed) {
            changed = changed || m_stamp != name;
            if (changed)
                m_stamp = name;
            return changed;
        }
        const auto time = std::chrono::steady_clock::now();
        if (!changed && time - m_asked < std::chrono::seconds(1))
            return false;
        m_asked = time;
        auto stamp = systemZoneStamp();
        changed = changed || stamp != m_stamp;
        m_stamp = std::move(stamp);
        return changed;
    }

private:
    bool m_isNamed = false;
    std::string m_stamp;
    std::chrono::steady_clock::time_point m_asked;
};

// ICU treats the TZ variable like the system's setting.
std::unique_ptr<icu::TimeZone> currentTimeZone()
{
    return std::unique_ptr<icu::TimeZone>(icu::TimeZone::detectHostTimeZone());
}

icu::Locale dateLocale()
{
    for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
        const char* value = std::getenv(variable);
        if (!value || !*value)
            continue;
        std::string name(value);
        name = name.substr(0, name.find('.'));
        // In the plain C locale names are English.
        return name == "C" || name == "POSIX" ? icu::Locale("en", "US", "POSIX")
                                              : icu::Locale(name.c_str());
    }
    return {"en", "US", "POSIX"};
}

} // namespace

struct IcuDateFormatter::Cache {
    std::mutex mutex;
    ZoneStamp zone;
    std::map<std::string, std::unique_ptr<icu::SimpleDateFormat>, std::less<>> formats;
    // The text of a log line's time changes once a second.
    std::string lastPattern;
    double lastSecond = 0;
    std::string lastText;
};

IcuDateFormatter::IcuDateFormatter()
    : m_cache(std::make_unique<Cache>())
{
}

IcuDateFormatter::~IcuDateFormatter() = default;

std::string IcuDateFormatter::string(Date date, std::string_view pattern) const
{
    const std::lock_guard lock(m_cache->mutex);
    auto& cache = *m_cache;
    if (cache.zone.hasChanged()) {
        ::tzset();
        cache.formats.clear();
        cache.lastPattern.clear();
    }
    const bool subSecond = pattern.find('S') != std::string_view::npos;
    const double second = std::floor(date.secondsSince1970);
    if (!subSecond && pattern == cache.lastPattern && second == cache.lastSecond)
        return cache.lastText;
    auto it = cache.formats.find(pattern);
    if (it == cache.formats.end()) {
        UErrorCode status = U_ZERO_ERROR;
        auto format = std::make_unique<icu::SimpleDateFormat>(
            icu::UnicodeString::fromUTF8(
                {pattern.data(), static_cast<std::int32_t>(pattern.size())}),
            dateLocale(), status);
        if (U_FAILURE(status))
            return "";
        format->adoptTimeZone(currentTimeZone().release());
        it = cache.formats.emplace(std::string(pattern), std::move(format)).first;
    }
    icu::UnicodeString text;
    it->second->format(date.secondsSince1970 * 1000, text);
    std::string result;
    text.toUTF8String(result);
    cache.lastPattern = pattern;
    cache.lastSecond = second;
    cache.lastText = result;
    return result;
}

} // namespace zarn::linux_backend
