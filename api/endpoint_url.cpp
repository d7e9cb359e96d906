// SPDX-License-Identifier: MIT
#include "api/endpoint_url.h"

#include <algorithm>
#include <array>

namespace zarn {

std::string collapseApiSlashes(std::string text)
{
    constexpr std::string_view doubled = "//api";
    for (auto at = text.find(doubled); at != std::string::npos;
         at = text.find(doubled, at + doubled.size() - 1))
        text.erase(at, 1);
    return text;
}

std::string_view apiPathPrefix(std::string_view endpoint)
{
    static constexpr std::array<std::string_view, 5> firstVersion{
        "buildings", "csa/token", "icon", "zarn-pro-version", "auth/invalidate-token"};
    const bool isFirst
        = std::find(firstVersion.begin(), firstVersion.end(), endpoint) != firstVersion.end();
    return isFirst ? "v1/" : "v2/";
}

} // namespace zarn
