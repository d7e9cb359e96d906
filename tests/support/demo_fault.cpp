// SPDX-License-Identifier: MIT
#include "tests/support/demo_fault.h"

#include <charconv>

namespace zarn::demo {

const char* const faultHelp
    = "  path=PATH          only this path; one that ends in * for all that begin alike\n"
      "  method=METHOD      only this method\n"
      "  skip=N             let N matching requests pass first\n"
      "  times=N            only for N requests\n"
      "  status=N           another status, with an empty body unless one is given\n"
      "  reason=TEXT        the text after the status\n"
      "  header=NAME: TEXT  one more header; may be repeated\n"
      "  location=URL       the Location header\n"
      "  body=TEXT          another body\n"
      "  repeat=N           the body N times over\n"
      "  body-start=TEXT    before the repeated body\n"
      "  body-end=TEXT      after it\n"
      "  endless=1          the body again and again until the client goes\n"
      "  without-length=1   no Content-Length\n"
      "  raw=TEXT           these bytes in place of status line and headers\n"
      "  delay-ms=N         wait before the first byte\n"
      "  byte-ms=N          one byte at a time, with this pause after each\n"
      "  drop-after=N       reset the connection after N bytes of the reply\n"
      "  drop-quietly=1     there, end the stream without a reset and without a TLS goodbye\n"
      "  stall=1            keep the connection open and silent after the last byte\n";

namespace {

std::optional<std::uint64_t> number(std::string_view text)
{
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

bool setText(Fault& fault, std::string_view key, const std::string& value)
{
    if (key == "path")
        fault.path = value;
    else if (key == "method")
        fault.method = value;
    else if (key == "reason")
        fault.reason = value;
    else if (key == "location")
        fault.headers.emplace_back("Location", value);
    else if (key == "body")
        fault.body = value;
    else if (key == "body-start")
        fault.bodyStart = value;
    else if (key == "body-end")
        fault.bodyEnd = value;
    else if (key == "raw")
        fault.raw = value;
    else
        return false;
    return true;
}

bool setNumber(Fault& fault, std::string_view key, std::uint64_t value)
{
    if (key == "skip")
        fault.skip = value;
    else if (key == "times")
        fault.times = value;
    else if (key == "status")
        fault.status = static_cast<int>(value);
    else if (key == "repeat")
        fault.repeat = value;
    else if (key == "endless")
        fault.endless = value != 0;
    else if (key == "without-length")
        fault.withoutLength = value != 0;
    else if (key == "stall")
        fault.stall = value != 0;
    else if (key == "drop-quietly")
        fault.dropQuietly = value != 0;
    else if (key == "delay-ms")
        fault.delay = std::chrono::milliseconds(value);
    else if (key == "byte-ms")
        fault.byteInterval = std::chrono::milliseconds(value);
    else if (key == "drop-after")
        fault.dropAfter = value;
    else
        return false;
    return true;
}

} // namespace

bool Fault::matches(const Request& request) const
{
    if (!method.empty() && method != request.method)
        return false;
    if (path.ends_with('*'))
        return request.path().starts_with(std::string_view(path).substr(0, path.size() - 1));
    return request.path() == path;
}

void Fault::apply(Reply& reply) const
{
    if (status) {
        reply.status = *status;
        reply.reason.clear();
        reply.body.clear();
    }
    reply.reason = reason.value_or(reply.reason);
    reply.headers.insert(reply.headers.end(), headers.begin(), headers.end());
    reply.bodyStart = bodyStart.value_or(reply.bodyStart);
    reply.body = body.value_or(reply.body);
    reply.repeat = repeat.value_or(reply.repeat);
    reply.bodyEnd = bodyEnd.value_or(reply.bodyEnd);
    reply.endless = endless || reply.endless;
    reply.withoutLength = withoutLength || reply.withoutLength;
    reply.stall = stall || reply.stall;
    reply.dropQuietly = dropQuietly || reply.dropQuietly;
    reply.delay = delay.value_or(reply.delay);
    reply.byteInterval = byteInterval.value_or(reply.byteInterval);
    if (raw) {
        reply.raw = raw;
        reply.body = body.value_or("");
    }
    if (dropAfter)
        reply.dropAfter = dropAfter;
}

std::optional<Fault> parseFault(std::string_view form, std::string& error)
{
    Fault fault;
    for (const auto& [key, value] : parseForm(form)) {
        if (setText(fault, key, value))
            continue;
        if (key == "header") {
            const auto colon = value.find(": ");
            if (colon == std::string::npos) {
                error = "header wants \"Name: text\"";
                return std::nullopt;
            }
            fault.headers.emplace_back(value.substr(0, colon), value.substr(colon + 2));
            continue;
        }
        const auto count = number(value);
        if (!count || !setNumber(fault, key, *count)) {
            error = "field \"" + key + "\" is unknown or its number is invalid";
            return std::nullopt;
        }
    }
    return fault;
}

} // namespace zarn::demo
