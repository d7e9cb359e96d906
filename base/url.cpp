// SPDX-License-Identifier: MIT
#include "base/url.h"

#include "base/utf8.h"

namespace zarn {

namespace {

bool isHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool escapesAreWhole(std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%')
            continue;
        if (i + 2 >= text.size() || !isHexDigit(text[i + 1]) || !isHexDigit(text[i + 2]))
            return false;
    }
    return true;
}

// The host is between the last "@" of the authority and its port. Brackets are allowed only as one
// pair around the whole host.
bool bracketsAreBalanced(std::string_view text)
{
    const auto slashes = text.find("//");
    if (slashes == std::string_view::npos)
        return true;
    auto authority = text.substr(slashes + 2);
    authority = authority.substr(0, authority.find_first_of("/?#"));
    if (const auto at = authority.rfind('@'); at != std::string_view::npos)
        authority.remove_prefix(at + 1);
    if (authority.find_first_of("[]") == std::string_view::npos)
        return true;
    const auto close = authority.find(']');
    return authority.front() == '[' && close != std::string_view::npos
        && authority.find('[', 1) == std::string_view::npos
        && authority.find(']', close + 1) == std::string_view::npos
        && (close + 1 == authority.size() || authority[close + 1] == ':');
}

} // namespace

std::optional<std::string> Url::problemIn(std::string_view text)
{
    if (text.empty())
        return "nothing";
    if (!isUtf8(text))
        return "bytes that are no text";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == ' ')
            return "a blank";
        if (byte < 0x20 || byte == 0x7f)
            return "a control character";
        if (std::string_view("<>\"{}|\\^`").find(c) != std::string_view::npos)
            return std::string("the character ") + c;
    }
    if (!escapesAreWhole(text))
        return "a percent sign without two hexadecimal digits";
    if (!bracketsAreBalanced(text))
        return "brackets that are not around its host";
    return std::nullopt;
}

std::optional<Url> Url::fromText(std::string_view text)
{
    return problemIn(text) ? std::nullopt : std::optional(Url(std::string(text)));
}

} // namespace zarn
