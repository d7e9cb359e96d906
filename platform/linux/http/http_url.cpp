// SPDX-License-Identifier: MIT
#include "platform/linux/http/http_url.h"

#include "base/url.h"

#include <unicode/uidna.h>

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <vector>

namespace zarn::linux_backend {

namespace {

constexpr std::size_t maximumHostLength = 253;
constexpr std::size_t maximumLabelLength = 63;

bool isAscii(std::string_view text)
{
    return std::all_of(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isAlpha(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

std::string lowered(std::string_view text)
{
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

// Internationalised names become what the name system knows them by (UTS 46, not transitional).
std::optional<std::string> asciiHost(std::string_view host)
{
    if (isAscii(host))
        return lowered(host);
    if (host.size() > 4 * maximumHostLength)
        return std::nullopt;
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<UIDNA, decltype(&uidna_close)> converter(
        uidna_openUTS46(UIDNA_CHECK_BIDI | UIDNA_CHECK_CONTEXTJ | UIDNA_NONTRANSITIONAL_TO_ASCII
                | UIDNA_USE_STD3_RULES,
            &error),
        uidna_close);
    if (U_FAILURE(error))
        return std::nullopt;
    std::array<char, 1024> out{};
    UIDNAInfo info = UIDNA_INFO_INITIALIZER;
    const auto length = uidna_nameToASCII_UTF8(converter.get(), host.data(),
        static_cast<std::int32_t>(host.size()), out.data(), static_cast<std::int32_t>(out.size()),
        &info, &error);
    if (U_FAILURE(error) || info.errors != 0)
        return std::nullopt;
    return lowered(std::string_view(out.data(), static_cast<std::size_t>(length)));
}

bool isIpv4(const std::string& host)
{
    in_addr address{};
    return inet_pton(AF_INET, host.c_str(), &address) == 1;
}

// System resolvers read "0x7f.1", "127.1" and "2130706433" as addresses. A name whose last label is
// a number is one only when it is four decimal numbers.
bool endsInNumber(std::string_view host)
{
    if (host.ends_with('.'))
        host.remove_suffix(1);
    const auto label = host.substr(host.rfind('.') + 1);
    if (label.starts_with("0x"))
        return true;
    return !label.empty() && std::all_of(label.begin(), label.end(), isDigit);
}

bool isName(std::string_view host)
{
    if (host.ends_with('.'))
        host.remove_suffix(1);
    if (host.empty() || host.size() > maximumHostLength)
        return false;
    while (true) {
        const auto label = host.substr(0, host.find('.'));
        const bool plain = std::all_of(label.begin(), label.end(),
            [](char c) { return isAlpha(c) || isDigit(c) || c == '-' || c == '_'; });
        if (label.empty() || label.size() > maximumLabelLength || !plain)
            return false;
        if (label.size() == host.size())
            return true;
        host.remove_prefix(label.size() + 1);
    }
}

bool setIpv6(HttpUrl& url, std::string_view text)
{
    in6_addr address{};
    std::array<char, INET6_ADDRSTRLEN> usual{};
    if (inet_pton(AF_INET6, std::string(text).c_str(), &address) != 1
        || !inet_ntop(AF_INET6, &address, usual.data(), usual.size()))
        return false;
    url.host = usual.data();
    url.isIpv6 = true;
    return true;
}

bool setHost(HttpUrl& url, std::string_view text)
{
    const auto host = asciiHost(text);
    if (!host || !isName(*host) || (endsInNumber(*host) && !isIpv4(*host)))
        return false;
    url.host = *host;
    return true;
}

bool setPort(HttpUrl& url, std::string_view text)
{
    url.port = url.https ? 443 : 80;
    if (text.empty())
        return true;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), url.port);
    return error == std::errc() && end == text.data() + text.size() && url.port != 0;
}

bool setAuthority(HttpUrl& url, std::string_view authority)
{
    if (authority.find('@') != std::string_view::npos)
        return false;
    std::size_t hostEnd = authority.find(':');
    bool good = false;
    if (authority.starts_with('[')) {
        hostEnd = authority.find(']');
        if (hostEnd == std::string_view::npos)
            return false;
        good = setIpv6(url, authority.substr(1, hostEnd - 1));
        ++hostEnd;
    } else {
        good = setHost(url, authority.substr(0, hostEnd));
    }
    auto rest = hostEnd >= authority.size() ? std::string_view() : authority.substr(hostEnd);
    if (!rest.empty() && rest.front() != ':')
        return false;
    if (!rest.empty())
        rest.remove_prefix(1);
    return good && setPort(url, rest);
}

std::string percentEncoded(std::string_view text)
{
    static constexpr std::string_view digits = "0123456789ABCDEF";
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            out += c;
            continue;
        }
        out += '%';
        out += digits[byte >> 4U];
        out += digits[byte & 0xfU];
    }
    return out;
}

std::string_view withoutFragment(std::string_view text)
{
    return text.substr(0, text.find('#'));
}

bool hasScheme(std::string_view text)
{
    const auto colon = text.find(':');
    if (colon == std::string_view::npos || colon == 0 || !isAlpha(text.front()))
        return false;
    const auto scheme = text.substr(0, colon);
    return std::all_of(scheme.begin(), scheme.end(),
        [](char c) { return isAlpha(c) || isDigit(c) || c == '+' || c == '-' || c == '.'; });
}

// RFC 3986, section 5.2.4, for a path that begins with "/".
std::string withoutDotSegments(std::string_view path)
{
    std::vector<std::string_view> kept;
    bool endsInFolder = false;
    while (!path.empty()) {
        path.remove_prefix(1);
        const auto segment = path.substr(0, path.find('/'));
        path.remove_prefix(segment.size());
        endsInFolder = segment == "." || segment == "..";
        if (segment == ".." && !kept.empty())
            kept.pop_back();
        if (!endsInFolder)
            kept.push_back(segment);
    }
    std::string out;
    for (const auto segment : kept)
        out.append("/").append(segment);
    return endsInFolder || out.empty() ? out + "/" : out;
}

} // namespace

std::optional<HttpUrl> HttpUrl::parse(std::string_view text)
{
    if (!Url::fromText(text))
        return std::nullopt;
    text = withoutFragment(text);
    const auto colon = text.find(':');
    if (colon == std::string_view::npos || !text.substr(colon).starts_with("://"))
        return std::nullopt;
    const std::string scheme = lowered(text.substr(0, colon));
    if (scheme != "http" && scheme != "https")
        return std::nullopt;
    text.remove_prefix(colon + 3);
    const auto authority = text.substr(0, text.find_first_of("/?"));
    text.remove_prefix(authority.size());

    HttpUrl url;
    url.https = scheme == "https";
    if (!setAuthority(url, authority))
        return std::nullopt;
    url.target = (text.starts_with('/') ? "" : "/") + percentEncoded(text);
    return url;
}

std::optional<HttpUrl> HttpUrl::resolve(std::string_view reference) const
{
    if (!Url::fromText(reference))
        return std::nullopt;
    if (hasScheme(reference))
        return parse(reference);
    if (reference.starts_with("//"))
        return parse((https ? "https:" : "http:") + std::string(reference));
    reference = withoutFragment(reference);
    HttpUrl url = *this;
    if (reference.empty())
        return url;
    const auto queryAt = std::min(reference.find('?'), reference.size());
    const auto path = reference.substr(0, queryAt);
    const std::string basePath = target.substr(0, target.find('?'));
    std::string whole;
    if (path.empty())
        whole = basePath;
    else if (path.starts_with('/'))
        whole = withoutDotSegments(path);
    else
        whole = withoutDotSegments(basePath.substr(0, basePath.rfind('/') + 1) + std::string(path));
    url.target = percentEncoded(whole + std::string(reference.substr(queryAt)));
    return url;
}

bool HttpUrl::sameOrigin(const HttpUrl& other) const
{
    return https == other.https && host == other.host && port == other.port;
}

bool HttpUrl::isLoopback() const
{
    if (isIpv6)
        return host == "::1";
    return host == "localhost" || (host.starts_with("127.") && isIpv4(host));
}

std::string HttpUrl::origin() const
{
    std::string out = https ? "https://" : "http://";
    out += isIpv6 ? "[" + host + "]" : host;
    if (port != (https ? 443 : 80))
        out += ":" + std::to_string(port);
    return out;
}

} // namespace zarn::linux_backend
