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

TEST(Base64, BreaksNoLines)
{
    const auto text = base64Encoded(std::string(3000, 'x'));
    EXPECT_EQ(text.size(), 4000U);
    EXPECT_EQ(text.find('\n'), std::string::npos);
}

} // namespace
} // namespace zarn
