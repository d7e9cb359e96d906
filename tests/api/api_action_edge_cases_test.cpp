// SPDX-License-Identifier: MIT
#include "tests/api/api_fixture.h"

namespace zarn {
namespace {

class ApiActionEdgeCases : public ApiFixture {
protected:
    void action(ApiCall call)
    {
        call.token = "tok";
        delegate->action(
            call, [this](const Value::Dictionary& result) { results.push_back(result); });
    }
    Value::Dictionary resultOf(int status, const std::string& endpoint)
    {
        results.clear();
        sessions.reply(status, "");
        action({"https://zarn.example", endpoint, "", {}, "", "get"});
        sessions.deliverAll();
        EXPECT_EQ(results.size(), 1U);
        return results.empty() ? Value::Dictionary{} : results[0];
    }
    std::string methodOf(const std::string& word)
    {
        action({"https://zarn.example", "computers", "", {}, "", word});
        return sessions.requests.back().method;
    }
    std::vector<Value::Dictionary> results;
};

TEST_F(ApiActionEdgeCases, TheVersionEndpointOnAServerUrlEndingInASlash)
{
    action({"https://zarn.example/", "zarn-pro-version", "", {}, "", "GET"});
    EXPECT_EQ(sessions.requests.at(0).url, "https://zarn.example/api/v1/zarn-pro-version");
}

TEST_F(ApiActionEdgeCases, AnEndpointOfTheSecondVersionTakesItsIdUnlessItIsEmptyOrZero)
{
    for (const char* id : {"", "0", "17", "00"})
        action({"https://zarn.example", "computers", id, {}, "", "get"});
    EXPECT_EQ(sessions.requests[0].url, "https://zarn.example/api/v2/computers");
    EXPECT_EQ(sessions.requests[1].url, "https://zarn.example/api/v2/computers");
    EXPECT_EQ(sessions.requests[2].url, "https://zarn.example/api/v2/computers/17");
    EXPECT_EQ(sessions.requests[3].url, "https://zarn.example/api/v2/computers/00");
}

TEST_F(ApiActionEdgeCases, TheMethodWordInCapitalsIsTheSame)
{
    EXPECT_EQ(methodOf("GET"), "GET");
    EXPECT_EQ(methodOf("get"), "GET");
    EXPECT_EQ(logLines().front(),
        "[Zpapi.action] Attempting GET on https://zarn.example/api/v2/computers.");
    EXPECT_EQ(logLines().back(),
        "[Zpapi.action] Attempting get on https://zarn.example/api/v2/computers.");
}

TEST_F(ApiActionEdgeCases, AWordSuchAsDeleteSendsPut)
{
    EXPECT_EQ(methodOf("delete"), "PUT");
}

TEST_F(ApiActionEdgeCases, AnEmptyReplyToAnInvalidationTerminatesTheToken)
{
    const Value::Dictionary terminated{
        {"ZPAPI_result", "token terminated"}, {"ZPAPI_response", 204}};
    EXPECT_EQ(resultOf(204, "auth/invalidate-token"), terminated);
}

TEST_F(ApiActionEdgeCases, AnEmptyReplyOfAnyOtherEndpointFails)
{
    const Value::Dictionary failed{{"ZPAPI_result", "failed"}, {"ZPAPI_response", 204}};
    EXPECT_EQ(resultOf(204, "computers"), failed);
    EXPECT_EQ(resultOf(204, "auth/invalidate-token/"), failed);
}

TEST_F(ApiActionEdgeCases, AnEmptyDataObjectSendsNoBodyEvenForPost)
{
    action({"https://zarn.example", "computers", "", {}, "", "post"});
    EXPECT_EQ(sessions.requests[0].body, std::nullopt);
}

} // namespace
} // namespace zarn
