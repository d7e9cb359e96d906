// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace zarn {

/// Whether the bytes are well-formed UTF-8: no overlong forms, no surrogates, nothing above
/// U+10FFFF. Any thread.
bool isUtf8(std::string_view bytes);

} // namespace zarn
