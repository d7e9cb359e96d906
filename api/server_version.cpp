// SPDX-License-Identifier: MIT
#include "api/server_version.h"

#include <charconv>

namespace zarn {

std::vector<std::string_view> splitText(std::string_view text, char separator)
{
    std::vector<std::string_view> pieces;
    for (;;) {
        const auto end = text.find(separator);
        pieces.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return pieces;
        text.remove_prefix(end + 1);
    }
}

std::int64_t decimalOrZero(std::string_view text)
{
    // from_chars accepts "-", but not "+".
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-'))
            return 0;
    }
    // Text that is not a number, or too large, leaves the zero in place.
    std::int64_t number = 0;
    const auto* end = text.data() + text.size();
    return std::from_chars(text.data(), end, number).ptr == end ? number : 0;
}

std::optional<ServerVersion> ServerVersion::parse(std::string_view text)
{
    const auto parts = splitText(text, '.');
    if (parts.size() < 3)
        return std::nullopt;
    const auto patchAndBuild = splitText(parts[2], '-');
    ServerVersion version;
    version.major = decimalOrZero(parts[0]);
    version.minor = decimalOrZero(parts[1]);
    version.patch = decimalOrZero(patchAndBuild[0]);
    if (patchAndBuild.size() > 1)
        version.build = std::string(patchAndBuild[1]);
    return version;
}

} // namespace zarn
