// SPDX-License-Identifier: MIT
#include "base/utf8.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>

namespace zarn {
namespace {

TEST(Utf8, AcceptsWellFormedTexts)
{
    for (const char* text :
        {"", "plain", "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF"})
        EXPECT_TRUE(isUtf8(text)) << text;
}

TEST(Utf8, AcceptsZeroBytes)
{
    EXPECT_TRUE(isUtf8(std::string_view("a\0b", 3)));
}

TEST(Utf8, RefusesMalformedSequences)
{
    const char* const texts[]
        = {"\x80", "\xC3", "\xC0\xAF", "\xC1\xBF", "\xE0\x80\xAF", "\xED\xA0\x80", "\xE2\x82",
            "\xF0\x80\x80\xAF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "a\xE2\x28\xA1"};
    for (const char* text : texts)
        EXPECT_FALSE(isUtf8(text)) << testing::PrintToString(std::string(text));
}

// Decodes by arithmetic: as many bytes as the first one has leading ones, six bits from each that
// follows; then the value decides whether this was its shortest form, and a character at all.
bool decodes(std::string_view bytes)
{
    constexpr std::array<std::uint32_t, 5> least{0, 0, 0x80, 0x800, 0x10000};
    while (!bytes.empty()) {
        const auto first = static_cast<unsigned char>(bytes.front());
        const auto ones = static_cast<std::size_t>(std::countl_one(first));
        const std::size_t length = ones == 0 ? 1 : ones;
        if (ones == 1 || ones > 4 || length > bytes.size())
            return false;
        std::uint32_t value = first & (0xFFU >> ones);
        for (const char c : bytes.substr(1, length - 1)) {
            const auto byte = static_cast<unsigned char>(c);
            if (byte >> 6U != 2)
                return false;
            value = value << 6U | (byte & 0x3FU);
        }
        if (value < least[ones] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
            return false;
        bytes.remove_prefix(length);
    }
    return true;
}

// Every byte in front; behind it, those around which something changes. As views of one buffer, so
// that a read behind the text would find what may complete it.
TEST(Utf8, AgreesWithADecoderOnSequencesOfOneToFourBytes)
{
    constexpr std::array<std::uint8_t, 13> seconds{
        0x00, 0x41, 0x7F, 0x80, 0x81, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xE1, 0xFF};
    constexpr std::array<std::uint8_t, 5> others{0x41, 0x7F, 0x80, 0xBF, 0xC0};
    for (unsigned first = 0; first < 0x100; ++first) {
        for (const auto second : seconds) {
            for (const auto third : others) {
                for (const auto fourth : others) {
                    const std::string bytes{static_cast<char>(first), static_cast<char>(second),
                        static_cast<char>(third), static_cast<char>(fourth)};
                    for (std::size_t size = 1; size <= 4; ++size) {
                        const auto view = std::string_view(bytes).substr(0, size);
                        ASSERT_EQ(isUtf8(view), decodes(view))
                            << testing::PrintToString(std::string(view));
                    }
                }
            }
        }
    }
}

} // namespace
} // namespace zarn
