// SPDX-License-Identifier: MIT
#include "base/base64.h"

#include <cstdint>

namespace zarn {

namespace {
constexpr std::string_view alphabet
    = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
} // namespace

std::string base64Encoded(std::string_view bytes)
{
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        for (std::size_t k = 0; k < 4; ++k)
            text += k <= count ? alphabet[group >> (18 - 6 * k) & 63U] : '=';
    }
    return text;
}

std::optional<std::string> base64Decoded(std::string_view text)
{
    std::string bytes;
    for (; text.size() >= 4; text.remove_prefix(4)) {
        const bool isPadded = text.size() == 4 && text[3] == '=';
        const std::size_t padding = !isPadded ? 0U : text[2] == '=' ? 2U : 1U;
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 4 - padding; ++i) {
            const auto digit = alphabet.find(text[i]);
            if (digit == std::string_view::npos)
                return std::nullopt;
            bits |= static_cast<std::uint32_t>(digit) << (18 - 6 * i);
        }
        for (std::size_t i = 0; i < 3; ++i) {
            const auto byte = static_cast<char>((bits >> (16 - 8 * i)) & 0xFFU);
            if (i < 3 - padding)
                bytes += byte;
            else if (byte != 0)
                return std::nullopt;
        }
    }
    return text.empty() ? std::optional(bytes) : std::nullopt;
}

} // namespace zarn
