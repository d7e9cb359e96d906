// SPDX-License-Identifier: MIT
#include "api/endpoint_url.h"

#include <algorithm>
#include <array>

namespace zarn {

std::string collapseApiSlashes(std::string_view text)
{
    constexpr std::string_view doubled = "//api";
    std::string collapsed;
    for (auto at = text.find(doubled); at != std::string_view::npos; at = text.find(doubled)) {
        collapsed += text.substr(0, at);
        collapsed += doubled.substr(1);
        text.remove_prefix(at + doubled.size());
    }
    collapsed += text;
    return collapsed;
}

std::string_view apiPathPrefix(std::string_view endpoint)
{
    static constexpr std::array<std::string_view, 5> firstVersion{
        "buildings", "csa/token", "icon", "zarn-pro-version", "auth/invalidate-token"};
    const bool isFirst
        = std::find(firstVersion.begin(), firstVersion.end(), endpoint) != firstVersion.end();
    return isFirst ? "v1/" : "v2/";
}

std::string apiUrlText(std::string_view serverUrl, std::string_view endpoint)
{
    std::string text(serverUrl);
    text.append("/api/").append(apiPathPrefix(endpoint)).append(endpoint);
    return collapseApiSlashes(text);
}

} // namespace zarn
