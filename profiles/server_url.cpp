// SPDX-License-Identifier: MIT
#include "profiles/server_url.h"

namespace zarn {

std::string hostFromServerURL(std::string_view serverUrl)
{
    std::string_view host = serverUrl;
    if (const auto first = serverUrl.find('/'); first != std::string_view::npos) {
        if (const auto second = serverUrl.find('/', first + 1); second != std::string_view::npos) {
            host = serverUrl.substr(second + 1);
            host = host.substr(0, host.find('/'));
        }
    }
    return std::string(host.substr(0, host.find(':')));
}

std::string removeTrailingSlashes(std::string_view text)
{
    while (text.ends_with('/'))
        text.remove_suffix(1);
    return std::string(text);
}

} // namespace zarn
