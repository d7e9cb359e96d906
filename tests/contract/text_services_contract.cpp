// SPDX-License-Identifier: MIT
#include "tests/contract/text_services_contract.h"

namespace zarn {
namespace {

using Words = std::vector<std::string>;

constexpr auto versionRow = R"((?<=<tr><td>Current Version<\/td><td>)[^<\/td>]+)";

/// Versions and other texts in ascending order, equal ones together: runs of digits compare by
/// value, all else by its bytes.
const std::vector<Words> numericOrder = {{""}, {" 1.0"}, {" 2.0"}, {"."}, {"0", "00", "000"},
    {"0.0.0"}, {"0.0.1"}, {"0.0.9"}, {"0.0.10"}, {"0.1.0"}, {"0.9"}, {"0.9.9"}, {"0.10"},
    {"0.10.0"}, {"0b1", "0b01"}, {"0b02"}, {"001", "1"}, {"1 2"}, {"1,2"}, {"1-2"}, {"1."},
    {"1.-1"}, {"1..0"}, {"1.0"}, {"1.0.0"}, {"1.0.0.0"}, {"1.0.0.1"}, {"1.0.1"}, {"1.0.2"},
    {"1.0.9"}, {"1.0.10"}, {"1.0.11"}, {"1.0.99"}, {"1.0.100"}, {"1.001", "1.01"},
    {"1.1.0", "1.01.0", "01.1.0", "1.1.00", "1.1.000"}, {"1.002", "1.2"}, {"1.2.0"},
    {"1.2.3", "0001.0002.0003"}, {"1.2.4"}, {"1.2.9"}, {"1.2.10"}, {"1.2.20"}, {"1.4.2"},
    {"1.4.12"}, {"1.5.0"}, {"1.5.0B3"}, {"1.5.0a9"}, {"1.5.0b"}, {"1.5.0b1"}, {"1.5.0b1.1"},
    {"1.5.0b2"}, {"1.5.0b3", "1.5.0b03"}, {"1.5.0b9"}, {"1.5.0b10"}, {"1.5.0b11"}, {"1.5.0b100"},
    {"1.5.0beta2"}, {"1.5.0beta10"}, {"1.5.0rc1"}, {"1.5.1"}, {"1.5.1b1"}, {"1.6.0"}, {"1.9"},
    {"1.9.0", "1.09.0"}, {"1.9.0\n"}, {"1.9.0+5"}, {"1.9.0-"}, {"1.9.0-5"}, {"1.9.0-12"},
    {"1.9.0~1"}, {"1.9.9"}, {"1.10"}, {"1.10.0", "1.010.0"}, {"1.10.1"}, {"1.11.0"},
    {"1.18.446744073709551615"}, {"1.99.99"}, {"1.100.0"}, {"1.2147483647.9"}, {"1.2147483648.0"},
    {"1.99999999999999998"}, {"1.99999999999999999"}, {"1.999999999999999998"},
    {"1.999999999999999999"}, {"1.9999999999999999998"}, {"1.9999999999999999999"},
    {"1.99999999999999999998"}, {"1.99999999999999999999"}, {"1.x.0"}, {"1.\303\2519"},
    {"1.\303\25110"}, {"1_2"}, {"1a"}, {"1b"}, {"2.0.0"}, {"2.0.1"}, {"2.9.9"}, {"2.10.0"}, {"2a"},
    {"3.9.18"}, {"3.11.4"}, {"5.6.5"}, {"5.50.5"}, {"7.7.7"}, {"7.7.70"}, {"8.99"}, {"8.100"},
    {"9"}, {"9.9.9"}, {"9.10.0"}, {"9b"}, {"10"}, {"10.0.0"}, {"10.0.9"}, {"10.0.10"}, {"10.9.0"},
    {"10.10.0"}, {"10.34.1"}, {"10.35.0"}, {"10a"}, {"11.0.0"}, {"19.0.0"}, {"20.0.0"}, {"99"},
    {"99.99.99"}, {"100"}, {"100.0.0"}, {"101.0.0"}, {"999.0.0"}, {"1000.0.0"}, {"2147483647"},
    {"2147483648"}, {"4294967295"}, {"4294967296"}, {"4294967297"}, {"9999999999999999"},
    {"10000000000000000"}, {"99999999999999999"}, {"100000000000000000"}, {"999999999999999999"},
    {"1000000000000000000"}, {"9223372036854775807"}, {"9223372036854775808"},
    {"9999999999999999999"}, {"10000000000000000000"}, {"18446744073709551615"},
    {"18446744073709551616"}, {"18446744073709551617"}, {"99999999999999999999"},
    {"100000000000000000000"}, {"999999999999999999999"},
    {"340282366920938463463374607431768211455"}, {"340282366920938463463374607431768211456"}, {"A"},
    {"B"}, {"a"}, {"a1"}, {"a2"}, {"a9"}, {"a10"}, {"a10b2"}, {"a10b2c"}, {"a10b10"}, {"abc"},
    {"abcd"}, {"abd"}, {"b"}, {"e"}, {"v1.0"}, {"v1.9"}, {"v1.10"}, {"x9y10"}, {"x10y9"},
    {"x10y10"}, {"\303\251"}, {"\303\252"}, {"\331\241.0"}, {"\346\227\245\346\234\2542"},
    {"\346\227\245\346\234\25410"}};

int sign(int value)
{
    return value < 0 ? -1 : value > 0 ? 1 : 0;
}

TEST_P(TextServicesContract, LettersGoBeforeTheirCase)
{
    EXPECT_LT(texts->localizedCompare("Alpha", "beta"), 0);
    EXPECT_LT(texts->localizedCompare("alpha", "Beta"), 0);
    EXPECT_GT(texts->localizedCompare("Zeta", "alpha"), 0);
    EXPECT_LT(texts->localizedCompare("alpha", "Alpha"), 0);
    EXPECT_EQ(texts->localizedCompare("Alpha", "Alpha"), 0);
}

TEST_P(TextServicesContract, BetaAlphaAndAlphaAreNotInByteOrder)
{
    EXPECT_EQ(sorted({"beta", "Alpha", "alpha"}), (Words{"alpha", "Alpha", "beta"}));
}

TEST_P(TextServicesContract, ATextGoesBehindWhatItBeginsWith)
{
    EXPECT_LT(texts->localizedCompare("server", "server 2"), 0);
    EXPECT_LT(texts->localizedCompare("", "a"), 0);
    EXPECT_EQ(texts->localizedCompare("", ""), 0);
}

TEST_P(TextServicesContract, SortingNothingOrOneTextIsAllowed)
{
    EXPECT_EQ(sorted({}), Words{});
    EXPECT_EQ(sorted({"b"}), Words{"b"});
}

TEST_P(TextServicesContract, EqualTextsAllStay)
{
    EXPECT_EQ(sorted({"b", "a", "b", "a"}), (Words{"a", "a", "b", "b"}));
}

TEST_P(TextServicesContract, NumbersCompareByValue)
{
    const int count = static_cast<int>(numericOrder.size());
    for (int i = 0; i < count; ++i) {
        for (int j = 0; j < count; ++j) {
            for (const auto& a : numericOrder[static_cast<std::size_t>(i)]) {
                for (const auto& b : numericOrder[static_cast<std::size_t>(j)])
                    EXPECT_EQ(sign(texts->numericCompare(a, b)), sign(i - j)) << a << " | " << b;
            }
        }
    }
}

TEST_P(TextServicesContract, RunsOfDigitsOfAnyLengthCompareByValue)
{
    for (std::size_t length = 1; length <= 2000; length += length < 50 ? 1 : 97) {
        const std::string nines(length, '9');
        const auto power = "1" + std::string(length, '0');
        const auto padded = std::string(length, '0') + nines;
        EXPECT_LT(texts->numericCompare(nines, power), 0) << length;
        EXPECT_GT(texts->numericCompare("1." + power + ".0", "1." + nines + ".9"), 0) << length;
        EXPECT_EQ(texts->numericCompare(padded, nines), 0) << length;
        EXPECT_LT(texts->numericCompare(padded + "1", nines + "2"), 0) << length;
    }
}

TEST_P(TextServicesContract, NumbersOfAMillionDigitsCompare)
{
    const std::string nines(1000000, '9');
    EXPECT_LT(texts->numericCompare(nines, "1" + std::string(1000000, '0')), 0);
    EXPECT_EQ(texts->numericCompare(nines, "0" + nines), 0);
}

TEST_P(TextServicesContract, ThePublishedVersionIsFoundInItsRow)
{
    EXPECT_EQ(texts->firstMatch(
                  versionRow, "<table><tr><td>Current Version</td><td>1.5.0</td></tr></table>"),
        "1.5.0");
}

TEST_P(TextServicesContract, AVersionEndsAtALetterOfTheClosingTag)
{
    EXPECT_EQ(texts->firstMatch(versionRow, "<tr><td>Current Version</td><td>1.5beta2"), "1.5be");
    EXPECT_EQ(texts->firstMatch(versionRow, "<tr><td>Current Version</td><td>1.5d2"), "1.5");
}

TEST_P(TextServicesContract, TheFirstRowThatHasAVersionCounts)
{
    EXPECT_EQ(texts->firstMatch(versionRow,
                  "<tr><td>Current Version</td><td></td>"
                  "<tr><td>Current Version</td><td>2</td><tr><td>Current Version</td><td>3"),
        "2");
}

TEST_P(TextServicesContract, ARowThatReadsOtherwiseDoesNotMatch)
{
    for (const char* page : {"", "<tr><td>Current version</td><td>1.5.0</td>",
             "<tr> <td>Current Version</td><td>1.5.0</td>", "<tr><td>Current Version</td><td>",
             "<tr><td>Current Version</td><td></td>"})
        EXPECT_EQ(texts->firstMatch(versionRow, page), std::nullopt) << page;
}

TEST_P(TextServicesContract, AMalformedPatternMatchesNothing)
{
    EXPECT_EQ(texts->firstMatch("(?<=", "anything"), std::nullopt);
    EXPECT_EQ(texts->firstMatch("[", "["), std::nullopt);
}

TEST_P(TextServicesContract, TextAroundTheMatchMayBeOfAnyScript)
{
    EXPECT_EQ(
        texts->firstMatch(versionRow, "größe 😀<tr><td>Current Version</td><td>1.5 für 日本</td>"),
        "1.5 für 日本");
}

} // namespace
} // namespace zarn
