// SPDX-License-Identifier: MIT
// A server's address as an administrator types it: what becomes of it on its way into a request,
// the keychain and the profile.
#include "api/endpoint_url.h"
#include "base/url.h"
#include "profiles/server_url.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view forbidden = "<>\"{}|\\^` ";

void expect(bool condition, const char* what, const std::string& text)
{
    if (condition)
        return;
    std::fprintf(stderr, "%s: %s\n", what, text.c_str());
    std::abort();
}

bool isHexDigit(const std::string& text, std::size_t at)
{
    return at < text.size() && std::isxdigit(static_cast<unsigned char>(text[at])) != 0;
}

void checkUrl(const std::string& text)
{
    const auto url = zarn::Url::fromText(text);
    if (!url)
        return;
    expect(!text.empty() && url->text() == text, "as given", text);
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        expect(byte >= 0x20 && byte != 0x7f, "control character", text);
        expect(forbidden.find(text[at]) == std::string_view::npos, "forbidden character", text);
        if (text[at] == '%')
            expect(isHexDigit(text, at + 1) && isHexDigit(text, at + 2), "broken escape", text);
    }
}

void checkHost(const std::string& text)
{
    const auto host = zarn::hostFromServerURL(text);
    expect(text.find(host) != std::string::npos, "host is part of the text", text);
    expect(host.find(':') == std::string::npos, "host without port", text);
    if (std::count(text.begin(), text.end(), '/') >= 2)
        expect(host.find('/') == std::string::npos, "host without path", text);
    else
        expect(text.starts_with(host), "host of a bare text", text);
}

void checkTrailingSlashes(const std::string& text)
{
    const auto bare = zarn::removeTrailingSlashes(text);
    expect(!bare.ends_with('/'), "no slash at the end", text);
    expect(text == bare + std::string(text.size() - bare.size(), '/'), "only slashes gone", text);
}

std::string withoutSlashes(std::string text)
{
    std::erase(text, '/');
    return text;
}

void checkApiSlashes(const std::string& text)
{
    std::size_t doubled = 0;
    for (auto at = text.find("//api"); at != std::string::npos; at = text.find("//api", at + 1))
        ++doubled;
    const auto collapsed = zarn::collapseApiSlashes(text);
    expect(collapsed.size() + doubled == text.size(), "one slash each", text);
    expect(withoutSlashes(collapsed) == withoutSlashes(text), "nothing but slashes", text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkUrl(text);
    checkHost(text);
    checkTrailingSlashes(text);
    checkApiSlashes(text);
    return 0;
}
