// SPDX-License-Identifier: MIT
#pragma once

#include "base/value.h"

#include <optional>
#include <string_view>

namespace zarn::fuzz {

/// A strict JSON parser that shares nothing with the program's: what both accept and read alike is
/// what JSON is. Nothing when the text is malformed, or beyond the program's bounds.
std::optional<Value> independentlyParsedJson(std::string_view utf8);

} // namespace zarn::fuzz
