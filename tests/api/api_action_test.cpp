// SPDX-License-Identifier: MIT
#include "tests/api/api_fixture.h"

namespace zarn {
namespace {

using Lines = std::vector<std::string>;

class ApiActionTest : public ApiFixture {
protected:
    void action(ApiCall call)
    {
        call.token = "tok";
        delegate->action(call, [this](const Value::Dictionary& result, const std::string& cause) {
            results.push_back(result);
            causes.push_back(cause);
        });
    }
    Value::Dictionary resultOf(int status, const std::string& body, const std::string& endpoint)
    {
        results.clear();
        sessions.reply(status, body);
        action({"https://zarn.example", endpoint, "", {}, "", "get"});
        sessions.deliverAll();
        EXPECT_EQ(results.size(), 1U);
        return results.empty() ? Value::Dictionary{} : results[0];
    }
    std::vector<Value::Dictionary> results;
    Lines causes;
};

TEST_F(ApiActionTest, TheIdIsAppendedAfterSlashesCollapsed)
{
    action({"https://zarn.example", "computers", "/api", {}, "", "get"});
    EXPECT_EQ(sessions.requests[0].url, "https://zarn.example/api/v2/computers//api");
}

TEST_F(ApiActionTest, MethodWordsInAnyCase)
{
    const struct {
        const char* word;
        const char* method;
    } rows[]
        = {{"get", "GET"}, {"GET", "GET"}, {"create", "POST"}, {"CREATE", "POST"}, {"Post", "POST"},
            {"POST", "POST"}, {"delete", "PUT"}, {"put", "PUT"}, {"created", "PUT"}, {"", "PUT"}};
    for (const auto& row : rows) {
        sessions.requests.clear();
        action({"https://zarn.example", "computers", "", {}, "", row.word});
        EXPECT_EQ(sessions.requests.at(0).method, row.method) << row.word;
    }
}

TEST_F(ApiActionTest, SkipSendsNothing)
{
    action({"https://zarn.example", "auth/invalidate-token", "", {}, "", "Skip"});
    action({"https://zarn.example", "computers", "", {}, "", "skip"});
    const Value::Dictionary noToken{{"ZPAPI_result", "no valid token"}, {"ZPAPI_response", 0}};
    const Value::Dictionary failed{{"ZPAPI_result", "failed"}, {"ZPAPI_response", 0}};
    EXPECT_EQ(results, (std::vector{noToken, failed}));
    EXPECT_TRUE(sessions.requests.empty());
    EXPECT_EQ(sessions.cacheClears, 0);
    EXPECT_TRUE(logLines().empty());
}

TEST_F(ApiActionTest, AnObjectTravelsPrettyPrinted)
{
    action({"https://zarn.example", "computers", "", {{"b", 1}, {"a", "x"}}, "", "post"});
    ASSERT_TRUE(sessions.requests[0].body);
    EXPECT_EQ(*sessions.requests[0].body, "{\n    \"a\": \"x\",\n    \"b\": 1\n}\n");
}

TEST_F(ApiActionTest, AnObjectTravelsWithEveryMethod)
{
    for (const char* word : {"get", "create", "post", "put", "delete"}) {
        action({"https://zarn.example", "computers", "", {{"a", 1}}, "", word});
        EXPECT_EQ(sessions.requests.back().body, "{\n    \"a\": 1\n}\n") << word;
    }
}

TEST_F(ApiActionTest, AnObjectThatJsonCannotHoldGoesWithoutABodyAndIsPrinted)
{
    action({"https://zarn.example", "computers", "", {{"d", Date{1}}}, "", "post"});
    EXPECT_EQ(sessions.requests.at(0).body, std::nullopt);
    EXPECT_EQ(console.lines, (Lines{"The value holds what JSON cannot."}));
    EXPECT_EQ(logLines(),
        (Lines{"[Zpapi.action] Attempting post on https://zarn.example/api/v2/computers."}));
}

TEST_F(ApiActionTest, TheHeaderIsAlwaysBearer)
{
    connection.authScheme = "Basic";
    action({"https://zarn.example", "computers", "", {}, "", "get"});
    const HttpHeaders expected{{"Authorization", "Bearer tok"},
        {"Content-Type", "application/json"}, {"Accept", "application/json"},
        {"User-Agent", "zarn%2Dactions/1.4.2"}};
    EXPECT_EQ(sessions.requests[0].headers, expected);
    EXPECT_EQ(sessions.requests[0].timeout, std::chrono::seconds(60));
}

TEST_F(ApiActionTest, AMissingResponseIsLoggedBeforeItsCompletion)
{
    std::vector<std::string> linesBefore;
    sessions.replyNothing();
    delegate->action({"https://zarn.example", "computers", "", {}, "", "get"},
        [&](const Value::Dictionary&, const auto&) { linesBefore = logLines(); });
    sessions.deliverAll();
    ASSERT_FALSE(linesBefore.empty());
    EXPECT_EQ(
        linesBefore.back(), "[TokenDelegate.getVersion] GET response error.  Verify url and port.");
}

TEST_F(ApiActionTest, NoResponseGivesAnEmptyObject)
{
    sessions.replyNothing();
    action({"https://zarn.example", "computers", "", {}, "", "get"});
    sessions.deliverAll();
    EXPECT_EQ(results, std::vector{Value::Dictionary{}});
    EXPECT_EQ(
        logLines().back(), "[TokenDelegate.getVersion] GET response error.  Verify url and port.");
    EXPECT_EQ(sessions.sessionsInvalidated, 1);
}

TEST_F(ApiActionTest, TheSessionIsInvalidatedBeforeItsReplyIsHandled)
{
    std::vector<int> invalidated;
    for (const int status : {0, 404, 204, 200}) {
        if (status == 0)
            sessions.replyNothing();
        else
            sessions.reply(status, "{}");
        delegate->action({"https://zarn.example", "computers", "", {}, "tok", "get"},
            [&](const auto&, const auto&) { invalidated.push_back(sessions.sessionsInvalidated); });
        sessions.deliverAll();
    }
    EXPECT_EQ(invalidated, (std::vector<int>{1, 2, 3, 4}));
}

TEST_F(ApiActionTest, AnErrorStatusGivesFiveKeys)
{
    const Value::Dictionary expected{{"ZPAPI_result", "failed"}, {"ZPAPI_method", "GET"},
        {"ZPAPI_response", 404}, {"ZPAPI_server", "https://zarn.example/api/v2/computers"},
        {"ZPAPI_token", "tok"}};
    EXPECT_EQ(resultOf(404, R"({"version":"10.40.0"})", "computers"), expected);
    EXPECT_EQ(logLines().back(), "[TokenDelegate.getVersion] Response error: 404.");
}

TEST_F(ApiActionTest, TheTwoHundredsEndBeforeThreeHundred)
{
    const Value::Dictionary reply{{"version", "10.40.0"}};
    const std::string body = R"({"version":"10.40.0"})";
    for (const int status : {200, 201, 299})
        EXPECT_EQ(resultOf(status, body, "computers"), reply) << status;
    for (const int status : {100, 199, 300, 302, 500}) {
        EXPECT_EQ(resultOf(status, body, "computers").at("ZPAPI_result"), Value("failed"));
        EXPECT_EQ(logLines().back(),
            "[TokenDelegate.getVersion] Response error: " + std::to_string(status) + ".");
    }
}

TEST_F(ApiActionTest, AnObjectIsHandedOverUnchanged)
{
    const Value::Dictionary expected{{"a", Value::Array{1, "x"}}};
    EXPECT_EQ(resultOf(200, R"({"a":[1,"x"]})", "computers"), expected);
    EXPECT_EQ(resultOf(204, R"({"a":[1,"x"]})", "auth/invalidate-token"), expected);
}

TEST_F(ApiActionTest, NoObjectInAnyOtherReplyFails)
{
    const auto failed = [](int status) {
        return Value::Dictionary{{"ZPAPI_result", "failed"}, {"ZPAPI_response", status}};
    };
    EXPECT_EQ(resultOf(200, "", "auth/invalidate-token"), failed(200));
    EXPECT_EQ(resultOf(200, "[1]", "computers"), failed(200));
}

using ApiActionDeathTest = ApiActionTest;

TEST_F(ApiActionDeathTest, AMalformedUrlStopsTheProcess)
{
    EXPECT_DEATH(action({"https://zarn example", "computers", "", {}, "", "get"}),
        "fatal: an API call with a malformed URL\n");
}

// --- Edge cases

class ApiActionEdgeCases : public ApiActionTest {
protected:
    std::string methodOf(const std::string& word)
    {
        action({"https://zarn.example", "computers", "", {}, "", word});
        return sessions.requests.back().method;
    }
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
    EXPECT_EQ(resultOf(204, "", "auth/invalidate-token"), terminated);
}

TEST_F(ApiActionEdgeCases, AnEmptyReplyOfAnyOtherEndpointFails)
{
    const Value::Dictionary failed{{"ZPAPI_result", "failed"}, {"ZPAPI_response", 204}};
    EXPECT_EQ(resultOf(204, "", "computers"), failed);
    EXPECT_EQ(resultOf(204, "", "auth/invalidate-token/"), failed);
}

TEST_F(ApiActionEdgeCases, AnEmptyDataObjectSendsNoBodyEvenForPost)
{
    action({"https://zarn.example", "computers", "", {}, "", "post"});
    EXPECT_EQ(sessions.requests[0].body, std::nullopt);
}

} // namespace
} // namespace zarn
