// SPDX-License-Identifier: MIT
#include "base/utf8.h"

#include <cstddef>

namespace zarn {

namespace {

struct Lead {
    std::size_t length;
    unsigned char lowest;
    unsigned char highest;
};

// The bounds of the second byte exclude overlong forms, surrogates and values above U+10FFFF.
Lead leadOf(unsigned char byte)
{
    if (byte < 0x80)
        return {1, 0, 0};
    if (byte >= 0xC2 && byte <= 0xDF)
        return {2, 0x80, 0xBF};
    if (byte == 0xE0)
        return {3, 0xA0, 0xBF};
    if (byte == 0xED)
        return {3, 0x80, 0x9F};
    if (byte >= 0xE1 && byte <= 0xEF)
        return {3, 0x80, 0xBF};
    if (byte == 0xF0)
        return {4, 0x90, 0xBF};
    if (byte >= 0xF1 && byte <= 0xF3)
        return {4, 0x80, 0xBF};
    if (byte == 0xF4)
        return {4, 0x80, 0x8F};
    return {0, 0, 0};
}

} // namespace

bool isUtf8(std::string_view bytes)
{
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    for (std::size_t i = 0; i < bytes.size();) {
        const Lead lead = leadOf(at(i));
        if (lead.length == 0 || lead.length > bytes.size() - i)
            return false;
        if (lead.length > 1 && (at(i + 1) < lead.lowest || at(i + 1) > lead.highest))
            return false;
        for (std::size_t k = 2; k < lead.length; ++k) {
            if ((at(i + k) & 0xC0U) != 0x80)
                return false;
        }
        i += lead.length;
    }
    return true;
}

} // namespace zarn
