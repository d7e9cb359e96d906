// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/demo_http.h"

#include <cstdint>
#include <optional>
#include <string>

namespace zarn::demo {

/// A change to the replies of some requests. Each field that is given takes the place of the same
/// field of the ordinary reply.
struct Fault {
    /// A path, one that ends in "*" for all that begin alike, or "*" for all.
    std::string path = "*";
    /// "" for all.
    std::string method;
    /// Lets that many matching requests pass first.
    std::uint64_t skip = 0;
    /// Ends after that many; without it never.
    std::optional<std::uint64_t> times;

    std::optional<int> status;
    std::optional<std::string> reason;
    Headers headers;
    std::optional<std::string> bodyStart;
    std::optional<std::string> body;
    std::optional<std::string> bodyEnd;
    std::optional<std::uint64_t> repeat;
    std::optional<std::string> raw;
    bool endless = false;
    bool withoutLength = false;
    bool stall = false;
    bool dropQuietly = false;
    std::optional<std::chrono::milliseconds> delay;
    std::optional<std::chrono::milliseconds> byteInterval;
    std::optional<std::uint64_t> dropAfter;

    bool matches(const Request& request) const;
    void apply(Reply& reply) const;
};

/// One line for each field that parseFault knows.
extern const char* const faultHelp;

/// A fault from "path=/api/v1/auth/token&status=500&times=1" (application/x-www-form-urlencoded).
/// Nothing, with the reason in `error`, for an unknown field or a number that is none.
std::optional<Fault> parseFault(std::string_view form, std::string& error);

} // namespace zarn::demo
