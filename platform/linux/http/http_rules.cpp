// SPDX-License-Identifier: MIT
#include "platform/linux/http/http_rules.h"

#include <algorithm>
#include <array>

namespace zarn::linux_backend {

namespace {

char lowered(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isTokenCharacter(char c)
{
    static constexpr std::string_view others = "!#$%&'*+-.^_`|~";
    return (c >= '0' && c <= '9') || (lowered(c) >= 'a' && lowered(c) <= 'z')
        || others.find(c) != std::string_view::npos;
}

bool isValueCharacter(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return c == '\t' || (byte >= 0x20 && byte != 0x7f);
}

bool belongsToTheTransport(std::string_view name)
{
    static constexpr std::array<std::string_view, 11> names
        = {"Host", "Content-Length", "Transfer-Encoding", "Connection", "Proxy-Connection",
            "Keep-Alive", "TE", "Trailer", "Upgrade", "Expect", "Proxy-Authorization"};
    return std::any_of(
        names.begin(), names.end(), [&](auto known) { return sameHeaderName(name, known); });
}

bool isRedirect(int status)
{
    return (status >= 301 && status <= 303) || status == 307 || status == 308;
}

} // namespace

Result<HttpUrl, UrlError> allowedAddress(const Url& url)
{
    const auto address = HttpUrl::parse(url.text());
    if (!address)
        return UrlError{UrlErrorCode::BadUrl, "not an http or https address of a server"};
    if (!address->https && !address->isLoopback())
        return UrlError{UrlErrorCode::InsecureHttp,
            "nothing was sent to " + address->origin()
                + ": http is allowed to this computer only, use https"};
    return *address;
}

bool sameHeaderName(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
        [](char x, char y) { return lowered(x) == lowered(y); });
}

bool hasHeader(const HttpHeaders& headers, std::string_view name)
{
    return std::any_of(headers.begin(), headers.end(),
        [&](const auto& header) { return sameHeaderName(header.first, name); });
}

bool isHttpToken(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), isTokenCharacter);
}

bool headersAreSafe(const HttpHeaders& headers)
{
    return std::all_of(headers.begin(), headers.end(), [](const auto& header) {
        const auto& [name, value] = header;
        return isHttpToken(name) && !belongsToTheTransport(name)
            && std::all_of(value.begin(), value.end(), isValueCharacter);
    });
}

std::string_view withoutOuterBlanks(std::string_view text)
{
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool carriesCredentials(const HttpHeaders& headers, const std::optional<std::string>& body)
{
    return body.has_value() || hasHeader(headers, "Authorization") || hasHeader(headers, "Cookie");
}

Redirect nextHop(
    const HttpHop& hop, int status, const std::vector<std::string>& locations, bool withCredentials)
{
    if (!isRedirect(status) || locations.empty())
        return {};
    const auto refused = [](UrlErrorCode code, std::string text) {
        return Redirect{std::nullopt, UrlError{code, std::move(text)}};
    };
    const bool oneOnly = std::all_of(locations.begin(), locations.end(),
        [&](const auto& location) { return location == locations.front(); });
    const auto url = hop.url.resolve(locations.front());
    if (!oneOnly || !url)
        return refused(UrlErrorCode::BadRedirect, "the server redirects to no usable address");
    if (!url->https && (hop.url.https || !url->isLoopback()))
        return refused(UrlErrorCode::RedirectToHttp, url->origin());
    if (withCredentials && !url->sameOrigin(hop.url))
        return refused(UrlErrorCode::RedirectElsewhere, url->origin());
    HttpHop next{*url, hop.method, hop.body};
    const bool becomesGet = status == 303 ? hop.method != "GET" && hop.method != "HEAD"
                                          : status < 303 && hop.method == "POST";
    if (becomesGet) {
        next.method = "GET";
        next.body.reset();
    }
    return {next, std::nullopt};
}

std::optional<int> statusOfLine(std::string_view line)
{
    if (!line.starts_with("HTTP/1.1 ") && !line.starts_with("HTTP/1.0 "))
        return std::nullopt;
    line.remove_prefix(9);
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
        line.remove_suffix(1);
    if (line.size() < 3 || (line.size() > 3 && line[3] != ' '))
        return std::nullopt;
    int status = 0;
    for (const char digit : line.substr(0, 3)) {
        if (digit < '0' || digit > '9')
            return std::nullopt;
        status = status * 10 + (digit - '0');
    }
    return status >= 100 ? std::optional(status) : std::nullopt;
}

} // namespace zarn::linux_backend
