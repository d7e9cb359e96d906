// SPDX-License-Identifier: MIT
#include "base/url.h"

#include <gtest/gtest.h>

namespace zarn {
namespace {

TEST(Url, KeepsTheTextAsGiven)
{
    const char* const texts[] = {"https://zarn.example", "https://zarn.example:8443/a?b=c#d",
        "zarn.example", "127.0.0.1:8443", "ftp://zarn.example", "https://zarn.example:99999",
        "https://", "https:/host/api", "https://[::1]:8443/", "https://user@[::1]/",
        "https://\xC3\xBC.example/%C3%BC", "http://0x7f.1", "/api/v1/auth/token",
        "https://host/a[b]"};
    for (const char* text : texts) {
        const auto url = Url::fromText(text);
        ASSERT_TRUE(url) << text;
        EXPECT_EQ(url->text(), text);
    }
}

TEST(Url, RefusesCharactersThatNoUrlHolds)
{
    const std::string forbidden = " <>\"{}|\\^`\t\r\n\x01\x1f\x7f";
    for (const char c : forbidden)
        EXPECT_FALSE(Url::fromText(std::string("https://zarn.example/a") + c + "b")) << int{c};
    EXPECT_FALSE(Url::fromText(std::string_view("https://a\0b", 11)));
}

TEST(Url, AllowsEveryOtherAsciiCharacter)
{
    const std::string_view forbidden = "<>\"{}|\\^`";
    for (char c = '!'; c < '\x7f'; ++c) {
        if (forbidden.find(c) == std::string_view::npos && c != '%') {
            EXPECT_TRUE(Url::fromText(std::string("zarn.example/") + c)) << c;
        }
    }
}

TEST(Url, APercentSignWantsTwoHexadecimalDigits)
{
    const std::string_view digits = "0123456789abcdefABCDEF";
    for (char c = '!'; c < '\x7f'; ++c) {
        if (!Url::fromText(std::string(1, c)))
            continue;
        const bool isDigit = digits.find(c) != std::string_view::npos;
        EXPECT_EQ(Url::fromText(std::string("h/%") + c + "0").has_value(), isDigit) << c;
        EXPECT_EQ(Url::fromText(std::string("h/%0") + c).has_value(), isDigit) << c;
    }
    EXPECT_TRUE(Url::fromText("%41%42a%43"));
    EXPECT_FALSE(Url::fromText(std::string_view("h/%412").substr(0, 4)));
    EXPECT_FALSE(Url::fromText("%41%4"));
}

TEST(Url, RefusesAnEmptyText)
{
    EXPECT_FALSE(Url::fromText(""));
}

TEST(Url, RefusesBytesThatAreNotUtf8)
{
    EXPECT_FALSE(Url::fromText("https://zarn.example/\xFF"));
}

TEST(Url, RefusesBrokenPercentEscapes)
{
    for (const char* text :
        {"%", "%zz", "https://h/%", "https://h/%4", "https://h/%zz", "https://h/a%4gb"})
        EXPECT_FALSE(Url::fromText(text)) << text;
}

TEST(Url, AllowsBracketsOutsideTheHost)
{
    for (const char* text : {"[", "]", "host[", "[::1", "https:/[", "https://h/[", "https://h?[",
             "https://h#[", "https://h/]", "https://h?u@[", "https://a[b@h", "https://a]@h:1",
             "https://a@b@[::1]", "https://h//[", "https://[::1]/[", "https://[::1]:", "https://[]",
             "https://@[::1]", "//[::1]?]"})
        EXPECT_TRUE(Url::fromText(text)) << text;
}

TEST(Url, RefusesUnbalancedBracketsAroundTheHost)
{
    for (const char* text : {"https://[::1", "https://::1]", "https://[[::1]]/", "https://a[::1]/",
             "https://[::1]x/", "https://u@[::1/", "https://[", "https://]", "https://[a]:b]",
             "https://[a]:[b", "https://[a]:[b]", "https://[[", "https://[[]", "https://]a[",
             "https://a]", "https://@[", "https://[::1]]", "//[", "https://[::1@h]", "https://[/]"})
        EXPECT_FALSE(Url::fromText(text)) << text;
}

TEST(Url, SaysWhatKeepsATextFromBeingOne)
{
    const struct {
        std::string_view text;
        const char* problem;
    } rows[] = {{"", "nothing"}, {"a\xFF", "bytes that are no text"}, {"a b\"", "a blank"},
        {"a\t b", "a control character"}, {"a\x7F", "a control character"},
        {"a\"b", "the character \""}, {"%4", "a percent sign without two hexadecimal digits"},
        {"https://[a", "brackets that are not around its host"}};
    for (const auto& row : rows)
        EXPECT_EQ(Url::problemIn(row.text), row.problem) << row.text;
    EXPECT_EQ(Url::problemIn("https://zarn.example"), std::nullopt);
}

} // namespace
} // namespace zarn
