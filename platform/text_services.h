// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zarn {

/// Compares and searches texts by the rules of the user's locale. UTF-8. Any thread.
class TextServices {
public:
    virtual ~TextServices() = default;

    /// Below 0, 0 or above 0: the order of two texts in the user's locale.
    virtual int localizedCompare(std::string_view a, std::string_view b) const = 0;
    /// Sorts ascending by localizedCompare, stably.
    virtual void sortLocalized(std::vector<std::string>& texts) const = 0;
    /// Below 0, 0 or above 0. Runs of digits of any length are compared by value, the rest as text.
    virtual int numericCompare(std::string_view a, std::string_view b) const = 0;
    /// The first match of an ICU regular expression; nothing without a match or for a malformed
    /// pattern.
    virtual std::optional<std::string> firstMatch(
        std::string_view pattern, std::string_view text) const = 0;
};

} // namespace zarn
