// SPDX-License-Identifier: MIT
#pragma once

#include "base/value.h"

#include <cstdint>
#include <optional>
#include <string>

namespace zarn {

/// Converts a stored value to another type, by the rules of the settings framework. Pure functions.

/// Booleans and doubles convert; a text gives the integer at its start. A number out of range
/// becomes the nearest integer, any other value 0.
std::int64_t integerFrom(const Value& value);
/// Numbers are true unless 0; a text is true when it begins with Y, y, T, t or a digit from 1 to 9
/// (after blanks, one sign and zeros). Anything else is false.
bool booleanFrom(const Value& value);
/// Nothing unless the value is a text, a number or a boolean; a number gives its decimal text.
std::optional<std::string> stringFrom(const Value& value);

} // namespace zarn
