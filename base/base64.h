// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zarn {

/// Standard Base64 (RFC 4648, "+" and "/", padded) without line breaks. Any thread.
std::string base64Encoded(std::string_view bytes);

/// The bytes that such a text stands for; nothing for any other text. Any thread.
std::optional<std::string> base64Decoded(std::string_view text);

} // namespace zarn
