// SPDX-License-Identifier: MIT
#include "base/utf8.h"

#include <gtest/gtest.h>

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

} // namespace
} // namespace zarn
