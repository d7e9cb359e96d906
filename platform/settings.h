// SPDX-License-Identifier: MIT
#pragma once

#include "base/conversions.h"
#include "base/value.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace zarn {

/// One settings domain: a persistent map of key to property-list value, shared with other programs.
/// Main thread only. Reads see what another process wrote. A write changes only the key that it
/// names, and is durable and atomic when it returns. A failed write leaves the old contents, prints
/// one line on standard error, and calls the failure observer of its Settings.
class SettingsDomain {
public:
    virtual ~SettingsDomain() = default;

    /// The stored value, or nothing.
    virtual std::optional<Value> object(std::string_view key) const = 0;
    virtual void set(std::string_view key, const Value& value) = 0;
    virtual void remove(std::string_view key) = 0;

    /// 0 when absent; converts as integerFrom() does.
    std::int64_t integer(std::string_view key) const
    {
        return integerFrom(object(key).value_or(Value()));
    }
    /// false when absent; converts as booleanFrom() does.
    bool boolean(std::string_view key) const { return booleanFrom(object(key).value_or(Value())); }
    /// Nothing when absent; converts as stringFrom() does.
    std::optional<std::string> string(std::string_view key) const
    {
        return stringFrom(object(key).value_or(Value()));
    }
};

/// Opens settings domains. Main thread only.
class Settings {
public:
    virtual ~Settings() = default;

    /// The program's own domain. A read searches the launch arguments, the domain's own values and
    /// the desktop's global values, in this order; a write goes to the domain's own values.
    virtual SettingsDomain& standard() = 0;
    /// The shared suite `name`, or nullptr when it cannot be opened. Lives as long as this object.
    virtual SettingsDomain* suite(std::string_view name) = 0;

    /// Called within each write that fails, with the reason in one line that holds no value. Empty
    /// for none.
    using FailureObserver = std::function<void(const std::string& reason)>;
    virtual void setFailureObserver(FailureObserver observer) = 0;
};

} // namespace zarn
