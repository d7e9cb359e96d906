// SPDX-License-Identifier: MIT
#include "tests/support/demo_http.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace zarn::demo {

namespace {

char lowered(char c)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    return text;
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char low = lowered(c);
    return low >= 'a' && low <= 'f' ? low - 'a' + 10 : -1;
}

std::string formDecoded(std::string_view text)
{
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool whole = text[i] == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0
            && hexValue(text[i + 2]) >= 0;
        if (whole) {
            out += static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
            i += 2;
        } else {
            out += text[i] == '+' ? ' ' : text[i];
        }
    }
    return out;
}

const char* reasonFor(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 204:
        return "No Content";
    case 301:
        return "Moved Permanently";
    case 302:
        return "Found";
    case 401:
        return "Unauthorized";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 500:
        return "Internal Server Error";
    default:
        return "Status";
    }
}

} // namespace

bool equalsIgnoringCase(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
        [](char x, char y) { return lowered(x) == lowered(y); });
}

std::string Request::header(std::string_view name) const
{
    for (const auto& [key, value] : headers) {
        if (equalsIgnoringCase(key, name))
            return value;
    }
    return {};
}

std::string Request::path() const
{
    return target.substr(0, target.find('?'));
}

std::string replyHead(const Reply& reply)
{
    if (reply.raw)
        return *reply.raw;
    std::string head = "HTTP/1.1 " + std::to_string(reply.status) + " "
        + (reply.reason.empty() ? reasonFor(reply.status) : reply.reason) + "\r\n";
    for (const auto& [name, value] : reply.headers)
        head += name + ": " + value + "\r\n";
    const bool bodyless = reply.status == 204 || reply.status == 304 || reply.status < 200;
    if (!bodyless && !reply.endless && !reply.withoutLength) {
        const auto length
            = reply.bodyStart.size() + reply.body.size() * reply.repeat + reply.bodyEnd.size();
        head += "Content-Length: " + std::to_string(length) + "\r\n";
    }
    return head + "Connection: close\r\n\r\n";
}

bool parseHead(std::string_view head, Request& request)
{
    std::size_t at = head.find("\r\n");
    const auto line = head.substr(0, at);
    const auto first = line.find(' ');
    const auto last = line.rfind(' ');
    if (first == std::string_view::npos || first == last)
        return false;
    request.method = line.substr(0, first);
    request.target = line.substr(first + 1, last - first - 1);
    request.version = line.substr(last + 1);
    while (at != std::string_view::npos) {
        head.remove_prefix(at + 2);
        at = head.find("\r\n");
        const auto field = head.substr(0, at);
        if (field.empty())
            continue;
        const auto colon = field.find(':');
        if (colon == std::string_view::npos)
            return false;
        request.headers.emplace_back(field.substr(0, colon), trimmed(field.substr(colon + 1)));
    }
    return true;
}

Headers parseForm(std::string_view text)
{
    Headers form;
    while (!text.empty()) {
        const auto end = text.find('&');
        const auto pair = text.substr(0, end);
        const auto equals = pair.find('=');
        if (!pair.empty())
            form.emplace_back(formDecoded(pair.substr(0, equals)),
                equals == std::string_view::npos ? "" : formDecoded(pair.substr(equals + 1)));
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    }
    return form;
}

std::optional<std::string> formValue(const Headers& form, std::string_view name)
{
    for (const auto& [key, value] : form) {
        if (key == name)
            return value;
    }
    return std::nullopt;
}

std::string jsonString(std::string_view bytes)
{
    std::string out = "\"";
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (byte < 0x20 || byte >= 0x7f) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", unsigned{byte});
            out += escape;
        } else {
            out += c;
        }
    }
    return out + '"';
}

std::string toJsonLine(const Request& request)
{
    std::string headers;
    for (const auto& [name, value] : request.headers)
        headers
            += (headers.empty() ? "[" : ",[") + jsonString(name) + "," + jsonString(value) + "]";
    return "{\"method\":" + jsonString(request.method) + ",\"target\":" + jsonString(request.target)
        + ",\"version\":" + jsonString(request.version) + ",\"headers\":[" + headers
        + "],\"body\":" + jsonString(request.body) + ",\"tls\":" + jsonString(request.tlsVersion)
        + ",\"serverName\":" + jsonString(request.serverName)
        + ",\"port\":" + std::to_string(request.port) + "}\n";
}

std::string base64Decoded(std::string_view text)
{
    static constexpr std::string_view alphabet
        = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    unsigned bits = 0;
    unsigned count = 0;
    for (const char c : text) {
        const auto value = alphabet.find(c);
        if (value == std::string_view::npos)
            break;
        bits = ((bits << 6U) | static_cast<unsigned>(value)) & 0xffffffU;
        count += 6;
        if (count >= 8) {
            count -= 8;
            out += static_cast<char>((bits >> count) & 0xffU);
        }
    }
    return out;
}

} // namespace zarn::demo
