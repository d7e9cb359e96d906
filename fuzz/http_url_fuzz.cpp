// SPDX-License-Identifier: MIT
// The addresses that HTTP requests go to. Input: an address, a line break, what a server answers as
// Location. Whatever they are, the two must agree with themselves and with libcurl, and no redirect
// may lead where it must not.
#include "platform/linux/http/http_rules.h"
#include "platform/linux/http/http_url.h"

#include <curl/curl.h>

#include <arpa/inet.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

using zarn::linux_backend::HttpHop;
using zarn::linux_backend::HttpUrl;

namespace {

void expect(bool condition, const char* what, const std::string& text)
{
    if (condition)
        return;
    std::fprintf(stderr, "%s: %s\n", what, text.c_str());
    std::abort();
}

bool same(const HttpUrl& a, const HttpUrl& b)
{
    return a.sameOrigin(b) && a.isIpv6 == b.isIpv6 && a.target == b.target;
}

std::string part(CURLU* url, CURLUPart which)
{
    char* text = nullptr;
    const auto code = curl_url_get(url, which, &text, CURLU_DEFAULT_PORT);
    std::string out = code == CURLUE_OK && text ? text : "";
    curl_free(text);
    return out;
}

// libcurl reads the text once more before it connects: it must see the same server.
void checkWithCurl(const HttpUrl& url)
{
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> parsed(curl_url(), curl_url_cleanup);
    if (curl_url_set(
            parsed.get(), CURLUPART_URL, url.text().c_str(), CURLU_PATH_AS_IS | CURLU_DISALLOW_USER)
        != CURLUE_OK)
        return;
    expect(part(parsed.get(), CURLUPART_SCHEME) == (url.https ? "https" : "http"), "scheme",
        url.text());
    expect(part(parsed.get(), CURLUPART_HOST) == (url.isIpv6 ? "[" + url.host + "]" : url.host),
        "host", url.text());
    expect(part(parsed.get(), CURLUPART_PORT) == std::to_string(url.port), "port", url.text());
    expect(part(parsed.get(), CURLUPART_USER).empty(), "user", url.text());
    const std::string query = part(parsed.get(), CURLUPART_QUERY);
    const std::string target
        = part(parsed.get(), CURLUPART_PATH) + (query.empty() ? "" : "?" + query);
    const bool emptyQuery = url.target.back() == '?';
    expect(
        target == url.target || (emptyQuery && target + "?" == url.target), "target", url.text());
}

void check(const HttpUrl& url)
{
    expect(!url.host.empty() && url.port != 0 && url.target.starts_with('/'), "parts", url.text());
    for (const char c : url.text())
        expect(c > 0x20 && c < 0x7f, "characters", url.text());
    in6_addr address{};
    if (url.isIpv6)
        expect(inet_pton(AF_INET6, url.host.c_str(), &address) == 1, "address", url.text());
    else
        expect(url.host.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-_.")
                == std::string::npos,
            "host", url.text());
    const auto again = HttpUrl::parse(url.text());
    expect(again && same(*again, url), "read again", url.text());
    checkWithCurl(url);
}

void checkRedirects(const HttpUrl& from, const std::string& location)
{
    for (const int status : {301, 303, 308}) {
        const HttpHop hop{from, "POST", "secret"};
        const auto careful = zarn::linux_backend::nextHop(hop, status, {location}, true).next;
        expect(!careful || careful->url.sameOrigin(from), "credentials", location);
        const auto next = zarn::linux_backend::nextHop(hop, status, {location}, false).next;
        if (!next)
            continue;
        check(next->url);
        expect(next->url.https || (!from.https && next->url.isLoopback()), "downgrade", location);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto end = text.find('\n');
    const std::string location = end == std::string::npos ? "" : text.substr(end + 1);
    if (const auto url = HttpUrl::parse(text.substr(0, end))) {
        check(*url);
        checkRedirects(*url, location);
    }
    const auto status = zarn::linux_backend::statusOfLine(text);
    expect(!status || (*status >= 100 && *status <= 999), "status", text);
    if (zarn::linux_backend::headersAreSafe({{"X", text}}))
        expect(text.find_first_of(std::string("\r\n\0", 3)) == std::string::npos, "value", text);
    return 0;
}
