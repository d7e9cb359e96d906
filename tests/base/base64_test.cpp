// SPDX-License-Identifier: MIT
#include "base/base64.h"

#include <gtest/gtest.h>

namespace zarn {
namespace {

TEST(Base64, EncodesTheReferenceTexts)
{
    const struct {
        const char* bytes;
        const char* text;
    } rows[] = {{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"}};
    for (const auto& row : rows)
        EXPECT_EQ(base64Encoded(row.bytes), row.text) << row.bytes;
}

TEST(Base64, UsesPlusAndSlashAndKeepsZeroBytes)
{
    EXPECT_EQ(base64Encoded("\xfb\xff\xbf"), "+/+/");
    EXPECT_EQ(base64Encoded(std::string_view("\0\0", 2)), "AAA=");
}

TEST(Base64, HasACharacterForEachOfTheSixtyFourValues)
{
    std::string alphabet;
    for (unsigned value = 0; value < 64; ++value) {
        // Four times the same six bits.
        const unsigned group = value * 0x041041U;
        const std::string bytes{static_cast<char>(group >> 16),
            static_cast<char>(group >> 8 & 0xFFU), static_cast<char>(group & 0xFFU)};
        const auto text = base64Encoded(bytes);
        ASSERT_EQ(text, std::string(4, text[0]));
        alphabet += text[0];
    }
    EXPECT_EQ(alphabet, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
}

TEST(Base64, ReadsNoByteBehindTheText)
{
    const std::string_view bytes = "\xff\xff\xff\xff\xff\xff";
    const char* const texts[] = {"", "/w==", "//8=", "////", "/////w==", "//////8="};
    for (std::size_t size = 0; size < 6; ++size)
        EXPECT_EQ(base64Encoded(bytes.substr(0, size)), texts[size]) << size;
}

TEST(Base64, BreaksNoLines)
{
    const auto text = base64Encoded(std::string(3000, 'x'));
    EXPECT_EQ(text.size(), 4000U);
    EXPECT_EQ(text.find('\n'), std::string::npos);
}

TEST(Base64, DecodingUndoesEncoding)
{
    std::string bytes;
    for (int i = 0; i < 600; ++i) {
        EXPECT_EQ(base64Decoded(base64Encoded(bytes)), bytes) << i;
        bytes += static_cast<char>(i * 7);
    }
}

TEST(Base64, DecodesNothingButProperText)
{
    for (const auto* text : {"A", "AA", "AAA", "A===", "====", "AA=A", "=AAA", "AA==AAAA",
             "AAAA=", "AA\nA", "AA-_", "AB==", "AAB=", "AAA\xff"})
        EXPECT_EQ(base64Decoded(text), std::nullopt) << text;
}

} // namespace
} // namespace zarn
