// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace zarn {

/// Standard Base64 (RFC 4648, "+" and "/", padded) without line breaks. Any thread.
std::string base64Encoded(std::string_view bytes);

} // namespace zarn
