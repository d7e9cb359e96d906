// SPDX-License-Identifier: MIT
#pragma once

#include "base/result.h"
#include "base/value.h"

#include <string>
#include <string_view>

namespace zarn {

/// Parses one JSON text; any value may be on top (a bare number, string, true, null).
/// Malformed: bad syntax, text after the value, invalid UTF-8, an empty text, a number that no
/// double can hold, nesting deeper than 512, more than 100,000 values. A byte order mark in front
/// is skipped. Of equal keys the last one wins. Whole numbers that fit become integers, all others
/// doubles. Any thread.
Result<Value> parseJson(std::string_view utf8);

/// Pretty-printed UTF-8, indented by four spaces; an array or a dictionary ends in a line break.
/// What is not UTF-8 becomes U+FFFD. InvalidArgument: a date, data or non-finite number anywhere in
/// the value, or nesting deeper than 512. Any thread.
Result<std::string> prettyPrintedJson(const Value& value);

} // namespace zarn
