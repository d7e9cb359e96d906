// SPDX-License-Identifier: MIT
#include "api/endpoint_url.h"

#include <gtest/gtest.h>

namespace zarn {
namespace {

TEST(EndpointUrl, EndpointsOfTheFirstVersionAreMatchedExactly)
{
    const struct {
        const char* endpoint;
        const char* prefix;
    } rows[] = {{"buildings", "v1/"}, {"csa/token", "v1/"}, {"icon", "v1/"},
        {"zarn-pro-version", "v1/"}, {"auth/invalidate-token", "v1/"}, {"Buildings", "v2/"},
        {"buildings/", "v2/"}, {"icons", "v2/"}, {"computers", "v2/"}, {"", "v2/"}};
    for (const auto& row : rows)
        EXPECT_EQ(apiPathPrefix(row.endpoint), row.prefix) << row.endpoint;
}

TEST(EndpointUrl, DoubledSlashesBeforeApiCollapse)
{
    EXPECT_EQ(collapseApiSlashes("https://h//api/v1"), "https://h/api/v1");
    EXPECT_EQ(collapseApiSlashes("https://api.h/api"), "https:/api.h/api");
    EXPECT_EQ(collapseApiSlashes("https://h///api"), "https://h//api");
    EXPECT_EQ(collapseApiSlashes("//api//api"), "/api/api");
    EXPECT_EQ(collapseApiSlashes("https://h/x"), "https://h/x");
    EXPECT_EQ(collapseApiSlashes("https://h//apt"), "https://h//apt");
}

TEST(EndpointUrl, MillionsOfDoubledSlashesCollapseInOnePass)
{
    constexpr std::size_t count = 2000000;
    std::string text;
    std::string expected;
    for (std::size_t i = 0; i < count; ++i) {
        text += "//api";
        expected += "/api";
    }
    EXPECT_TRUE(collapseApiSlashes(text) == expected);
}

TEST(EndpointUrl, AnEndpointStandsBehindItsVersion)
{
    EXPECT_EQ(apiUrlText("https://h:8443/", "buildings"), "https://h:8443/api/v1/buildings");
    EXPECT_EQ(apiUrlText("https://h", "computers/1"), "https://h/api/v2/computers/1");
}

} // namespace
} // namespace zarn
