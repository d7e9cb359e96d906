// SPDX-License-Identifier: MIT
#include "platform/linux/settings/plist_document.h"

#include <gtest/gtest.h>

#include <limits>

namespace zarn::linux_backend {
namespace {

using Dictionary = Value::Dictionary;

std::string plist(const std::string& body)
{
    return R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)" + body
        + "</dict></plist>\n";
}

std::optional<Dictionary> read(const std::string& xml)
{
    const auto parsed = PlistDocument::parse(xml);
    return parsed ? std::optional(parsed.value().dictionary()) : std::nullopt;
}

/// What another reader finds after the value was stored.
std::optional<Value> stored(const Value& value)
{
    PlistDocument document;
    document.set("key", value);
    const auto again = PlistDocument::parse(document.xml());
    return again ? again.value().object("key") : std::nullopt;
}

TEST(PlistDocument, ReadsEveryTypeOfAPropertyList)
{
    EXPECT_EQ(
        read(plist("<key>a</key><true/><key>b</key><integer>-5</integer><key>c</key>"
                   "<real>1.5</real><key>d</key><date>2025-03-01T10:15:00Z</date><key>e</key>"
                   "<data>AAH/</data><key>f</key><array><string>x &amp; &#233;</string></array>")),
        (Dictionary{{"a", true}, {"b", -5}, {"c", 1.5}, {"d", Date{1740824100}},
            {"e", Data{0, 1, 255}}, {"f", Value::Array{"x & é"}}}));
}

TEST(PlistDocument, WhatItCannotShowStaysInTheFile)
{
    const auto parsed = PlistDocument::parse(
        plist("<key>uid</key><dict><key>CF$UID</key><integer>7</integer></dict><key>big</key>"
              "<integer>18446744073709551615</integer><key>small</key><real>1e-20</real>"));
    ASSERT_TRUE(parsed);
    const auto xml = parsed.value().xml();
    EXPECT_NE(xml.find("CF$UID"), std::string::npos);
    EXPECT_NE(xml.find("18446744073709551615"), std::string::npos);
    EXPECT_NE(xml.find("e-2"), std::string::npos) << xml;
}

TEST(PlistDocument, DatesFrom1932To2069AreKept)
{
    for (const double seconds : {-1169176447.0, 0.0, 978307199.0, 978307200.0, 3125790847.0})
        EXPECT_EQ(stored(Date{seconds}), Value(Date{seconds})) << seconds;
}

TEST(PlistDocument, DatesAreWholeSeconds)
{
    EXPECT_EQ(stored(Date{1740824100.9}), Value(Date{1740824100}));
    EXPECT_EQ(stored(Date{-0.5}), Value(Date{-1}));
}

TEST(PlistDocument, ADateBeyondItsYearsBecomesTheNearest)
{
    for (const double late : {3125790848.0, 4102444800.0, 1e300})
        EXPECT_EQ(stored(Date{late}), Value(Date{3125790847.0})) << late;
    for (const double early : {-1169176448.0, -2208988800.0, -1e300})
        EXPECT_EQ(stored(Date{early}), Value(Date{-1169176447.0})) << early;
}

// Of the profiles beyond what can be kept the oldest goes: a date far in the future must not read
// as the past.
TEST(PlistDocument, ADateInAFileBeyondItsYearsReadsAsTheLastAndStaysInTheFile)
{
    for (const char* date : {"2069-01-19T03:14:08Z", "2100-01-01T00:00:00Z", "9999-12-31T23:59:59Z",
             "1900-01-01T00:00:00Z"}) {
        const auto parsed
            = PlistDocument::parse(plist("<key>d</key><date>" + std::string(date) + "</date>"));
        ASSERT_TRUE(parsed) << date;
        EXPECT_EQ(parsed.value().object("d"), Value(Date{3125790847.0})) << date;
        EXPECT_NE(parsed.value().xml().find(date), std::string::npos) << parsed.value().xml();
    }
}

TEST(PlistDocument, TextsOfEveryScriptAndLineBreakAreKept)
{
    for (const char* text : {"größer 😀 日本 \xE2\x80\xAE", "a\rb\r\nc\nd\te", "]]>", "<![CDATA[",
             "&#13;", "&amp;lt;", "  blanks  ", "\x7F", "'\""})
        EXPECT_EQ(stored(text), Value(text));
}

TEST(PlistDocument, ACharacterThatXmlCannotHoldIsReplacedAndTold)
{
    PlistDocument document;
    EXPECT_TRUE(document.set("fine", "text"));
    for (const auto& character : {std::string("\0", 1), std::string("\x01"), std::string("\x1F"),
             std::string("\xEF\xBF\xBE"), std::string("\xFF"), std::string("\xED\xA0\x80")}) {
        EXPECT_FALSE(document.set("key", "a" + character + "b"));
        const auto again = PlistDocument::parse(document.xml());
        ASSERT_TRUE(again);
        const auto text = again.value().object("key");
        ASSERT_TRUE(text && text->string());
        EXPECT_TRUE(text->string()->starts_with("a\xEF\xBF\xBD"));
        EXPECT_TRUE(text->string()->ends_with("b"));
    }
    EXPECT_FALSE(document.set("key", Dictionary{{"na\x02me", 1}}));
}

TEST(PlistDocument, RefusesWhatIsNoWholePropertyListOfADictionary)
{
    for (const char* xml : {"", " ", "text", "<plist></plist>", "<plist><string>a</string></plist>",
             "<plist><array/></plist>", "<plist><dict></plist>", "<plist><dict><key>a</key>"})
        EXPECT_EQ(read(xml), std::nullopt) << xml;
    EXPECT_EQ(read(std::string("bplist00\0", 9)), std::nullopt);
    EXPECT_TRUE(read(plist("")));
}

TEST(PlistDocument, NestingIsBoundedBeforeTheParserRecurses)
{
    const auto nested = [](int depth, const std::string& opening, const std::string& closing) {
        std::string body = "<key>k</key>";
        for (int i = 0; i < depth; ++i)
            body += opening;
        for (int i = 0; i < depth; ++i)
            body += closing;
        return plist(body);
    };
    EXPECT_TRUE(read(nested(127, "<array>", "</array>")));
    EXPECT_FALSE(read(nested(128, "<array>", "</array>")));
    EXPECT_FALSE(read(nested(1000000, "<array>", "</array>")));
    EXPECT_FALSE(read(nested(300000, "<dict><key>a</key>", "</dict>")));
    EXPECT_FALSE(read(nested(300000, "<array\t>", "</array >")));
    // An attribute could hide from the count whether the element is empty.
    EXPECT_FALSE(read(nested(300000, "<array a=\"/>", "")));
    EXPECT_FALSE(read(nested(300000, "<array>", "")));
}

TEST(PlistDocument, BinaryPropertyListsAreNotRead)
{
    EXPECT_EQ(read("bplist00\xd0\x08</plist>"), std::nullopt);
}

} // namespace
} // namespace zarn::linux_backend
