// SPDX-License-Identifier: MIT
#include "platform/memory/memory_clock.h"

#include <array>
#include <chrono>
#include <cmath>

namespace zarn::memory {

namespace {

constexpr std::array<const char*, 7> weekdays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<const char*, 12> months{
    "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

std::string padded(long value, std::size_t width)
{
    auto text = std::to_string(value);
    return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

std::string field(char letter, std::size_t count, std::chrono::sys_seconds moment)
{
    using namespace std::chrono;
    const auto day = floor<days>(moment);
    const year_month_day date(day);
    const hh_mm_ss time(moment - day);
    switch (letter) {
    case 'y':
        return padded(static_cast<int>(date.year()), count);
    case 'M':
        return count == 3 ? months.at(static_cast<unsigned>(date.month()) - 1)
                          : padded(static_cast<unsigned>(date.month()), count);
    case 'd':
        return padded(static_cast<unsigned>(date.day()), count);
    case 'H':
        return padded(time.hours().count(), count);
    case 'm':
        return padded(time.minutes().count(), count);
    case 's':
        return padded(time.seconds().count(), count);
    case 'E':
        return weekdays.at(weekday(day).c_encoding());
    default:
        return std::string().append(count, letter);
    }
}

} // namespace

std::string MemoryDateFormatter::string(Date date, std::string_view pattern) const
{
    const std::chrono::sys_seconds moment{std::chrono::seconds(
        static_cast<std::int64_t>(std::floor(date.secondsSince1970 + secondsFromUtc)))};
    std::string text;
    for (std::size_t i = 0; i < pattern.size();) {
        const auto end = std::min(pattern.find_first_not_of(pattern[i], i), pattern.size());
        text += field(pattern[i], end - i, moment);
        i = end;
    }
    return text;
}

} // namespace zarn::memory
