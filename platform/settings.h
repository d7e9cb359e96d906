// SPDX-License-Identifier: MIT
#pragma once

#include "base/value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zarn {

/// One settings domain: a persistent map of key to property-list value, shared with other programs.
/// Main thread only. Reads see what another process wrote. A write changes only the key it names,
/// is durable and atomic when it returns, and is not reported when it fails (one line on standard
/// error says so); the old contents survive then.
class SettingsDomain {
public:
    virtual ~SettingsDomain() = default;

    /// The stored value, or nothing.
    virtual std::optional<Value> object(std::string_view key) const = 0;
    virtual void set(std::string_view key, const Value& value) = 0;
    virtual void remove(std::string_view key) = 0;

    /// 0 when absent. Booleans and doubles convert; a text gives the integer that it begins with.
    std::int64_t integer(std::string_view key) const;
    /// false when absent. Numbers are true unless 0; a text is true when it begins with Y, y, T, t
    /// or a digit from 1 to 9 (after blanks, one sign and zeros).
    bool boolean(std::string_view key) const;
    /// Nothing when absent or neither text nor number; a number gives its decimal text.
    std::optional<std::string> string(std::string_view key) const;
};

/// Opens settings domains. Main thread only.
class Settings {
public:
    virtual ~Settings() = default;

    /// The program's own domain. Looks at launch arguments, its own values and the desktop's global
    /// values, in this order; writes go to its own values.
    virtual SettingsDomain& standard() = 0;
    /// The shared suite `name`, or nullptr when it cannot be opened. Lives as long as this object.
    virtual SettingsDomain* suite(std::string_view name) = 0;
};

} // namespace zarn
