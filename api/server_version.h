// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zarn {

/// The parts of a server's version text, such as "11.40.0-t1712".
struct ServerVersion {
    std::int64_t major = 0;
    std::int64_t minor = 0;
    std::int64_t patch = 0;
    /// What follows the first "-" of the third part; nothing when there is no "-".
    std::optional<std::string> build;

    /// Nothing for fewer than three dotted parts. A part that is no number reads as 0.
    static std::optional<ServerVersion> parse(std::string_view text);
    /// Bearer tokens are used when each number is large enough on its own: 11.2.0 means Basic
    /// on purpose.
    bool selectsBearer() const { return major >= 10 && minor >= 35; }
};

/// An optional sign and decimal digits only; 0 for anything else and on overflow.
std::int64_t decimalOrZero(std::string_view text);

/// The pieces between separators, empty ones included; always at least one.
std::vector<std::string_view> splitText(std::string_view text, char separator);

} // namespace zarn
