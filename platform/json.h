// SPDX-License-Identifier: MIT
#pragma once

#include "base/result.h"
#include "base/value.h"

#include <string>
#include <string_view>

namespace zarn {

/// JSON texts to values and back. Any thread.
class JsonSerialization {
public:
    virtual ~JsonSerialization() = default;

    /// Parses one JSON text, fragments (a bare number, string, true, null) allowed.
    /// Malformed: bad syntax, text after the value, invalid UTF-8, an empty body, a number that no
    /// double can hold, nesting deeper than 512, or more than some 100,000 values (the main thread
    /// reads whatever a server sends). Of equal keys the last one wins.
    /// Whole numbers that fit become integers, all others doubles.
    virtual Result<Value> parse(std::string_view utf8) const = 0;

    /// Pretty-printed UTF-8. InvalidArgument: a date, data or non-finite number anywhere in the
    /// value.
    virtual Result<std::string> prettyPrinted(const Value& value) const = 0;
};

} // namespace zarn
