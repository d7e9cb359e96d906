// SPDX-License-Identifier: MIT
#include "app/connection_report.h"

#include <gtest/gtest.h>

namespace zarn {
namespace {

/// A probe that finds `facts` and remembers the address.
struct FakeProbe {
    ConnectionFacts operator()(const Url& url)
    {
        asked.push_back(url.text());
        return facts;
    }
    ConnectionFacts facts;
    std::vector<std::string> asked;
};

TEST(ConnectionReportTest, AServerThatIsTrustedHasItsFactsInTheirOrder)
{
    FakeProbe probe{
        {{{"server", "https://a.example"}, {"  issued by", "CN = B"}, {"as long as a column", "x"}},
            std::nullopt},
        {}};
    const auto report = reportConnection("https://a.example/", std::ref(probe));
    EXPECT_EQ(report.text,
        "server           https://a.example\n"
        "  issued by      CN = B\n"
        "as long as a column x\n"
        "result           the server is reached and trusted\n");
    EXPECT_TRUE(report.isWell);
}

TEST(ConnectionReportTest, ItConnectsToTheAddressThatIsAskedForAToken)
{
    FakeProbe probe;
    for (const auto* server :
        {"https://a.example:8443", "https://a.example/", "https://api.example"})
        (void)reportConnection(server, std::ref(probe));
    EXPECT_EQ(probe.asked,
        (std::vector<std::string>{"https://a.example:8443/api/oauth/token",
            "https://a.example/api/oauth/token", "https:/api.example/api/oauth/token"}));
}

TEST(ConnectionReportTest, ARefusalHasItsReasonAndTheSentenceOfTheStatusLine)
{
    FakeProbe probe{{{{"server", "https://a.example"}},
                        UrlError{UrlErrorCode::UnknownAuthority, "self-signed certificate"}},
        {}};
    const auto report = reportConnection("https://a.example:8443", std::ref(probe));
    EXPECT_EQ(report.text,
        "server           https://a.example\n"
        "reason           self-signed certificate\n"
        "result           PROBLEM: The certificate of a.example is from an unknown authority\n");
    EXPECT_FALSE(report.isWell);
}

TEST(ConnectionReportTest, ATextThatIsNoUrlIsNotProbed)
{
    FakeProbe probe;
    const auto report = reportConnection(" https://a.example", std::ref(probe));
    EXPECT_EQ(report.text, "result           PROBLEM: The server URL holds a blank\n");
    EXPECT_FALSE(report.isWell);
    EXPECT_TRUE(probe.asked.empty());
}

TEST(ConnectionReportTest, WhatAServerSaysCannotMisleadItsReader)
{
    FakeProbe probe{{{{"certificate", "CN = a\nresult           well\x1b[31m"}}, std::nullopt}, {}};
    const auto report = reportConnection("https://a.example", std::ref(probe));
    EXPECT_TRUE(report.text.starts_with(
        "certificate      CN = a\xEF\xBF\xBDresult           well\xEF\xBF\xBD[31m\n"));
}

} // namespace
} // namespace zarn
