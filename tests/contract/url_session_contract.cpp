// SPDX-License-Identifier: MIT
#include "tests/contract/url_session_contract.h"

#include <thread>

namespace zarn {

std::shared_ptr<UrlSession> UrlSessionContract::makeSession(const HttpHeaders& headers)
{
    return backend->sessions().makeSession(
        {UrlSessionConfiguration::Storage::Ephemeral, headers}, delegate);
}

std::optional<HttpResponse> UrlSessionContract::send(
    const UrlRequest& request, const HttpHeaders& headers)
{
    std::optional<HttpResponse> result;
    error.reset();
    bool done = false;
    makeSession(headers)->dataTask(request, [&](const UrlReply& reply) {
        if (reply)
            result = reply.value();
        else
            error = reply.error();
        done = true;
    });
    EXPECT_TRUE(backend->runUntil([&] { return done; }));
    return result;
}

TEST_F(UrlSessionContract, DeliversStatusAndBody)
{
    for (const int status : {200, 201, 299, 400, 401, 404, 500, 503}) {
        backend->willReply(status, "{\"status\":" + std::to_string(status) + "}");
        const auto response = send({backend->url("/status")});
        ASSERT_TRUE(response) << status;
        EXPECT_EQ(response->status, status);
        EXPECT_EQ(response->body, "{\"status\":" + std::to_string(status) + "}");
    }
}

TEST_F(UrlSessionContract, DeliversEveryByteOfABody)
{
    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes += static_cast<char>(i);
    bytes += "\r\n\r\n" + bytes;
    backend->willReply(200, bytes);
    const auto response = send({backend->url("/bytes")});
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, bytes);
}

TEST_F(UrlSessionContract, ABodyMayBeEmpty)
{
    for (const int status : {200, 204}) {
        backend->willReply(status, "");
        const auto response = send({backend->url("/empty")});
        ASSERT_TRUE(response);
        EXPECT_EQ(response->status, status);
        EXPECT_EQ(response->body, "");
    }
}

TEST_F(UrlSessionContract, WithoutAnHttpResponseTheCompletionGetsNothing)
{
    backend->willNotRespond();
    int calls = 0;
    bool hasResponse = true;
    makeSession()->dataTask({backend->url("/")}, [&](const UrlReply& reply) {
        ++calls;
        hasResponse = reply.ok();
    });
    ASSERT_TRUE(backend->runUntil([&] { return calls > 0; }));
    EXPECT_FALSE(hasResponse);
    EXPECT_EQ(calls, 1);
}

TEST_F(UrlSessionContract, EveryFailureHasItsCodeAndATextWithoutWhatWasSent)
{
    using enum UrlErrorCode;
    for (const auto code : {BadUrl, InsecureHttp, BadRequest, HostNotFound, ConnectionRefused,
             CannotConnect, ProxyFailed, TimedOut, UnknownAuthority, WrongName, CertificateExpired,
             CertificateNotYetValid, CertificateRefused, TlsFailed, ConnectionLost, BadReply,
             TooLarge}) {
        SCOPED_TRACE(static_cast<int>(code));
        const HttpHeaders headers{{"Authorization", code == BadRequest ? "s3cret\r\n" : "s3cret"}};
        EXPECT_FALSE(send(backend->failing(code), headers));
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, code) << static_cast<int>(error->code) << " " << error->text;
        EXPECT_NE(error->text, "");
        EXPECT_EQ(error->text.find("s3cret"), std::string::npos) << error->text;
        EXPECT_EQ(error->text.find('\n'), std::string::npos) << error->text;
    }
}

TEST_F(UrlSessionContract, ASessionThatAcceptsAnyCertificateSaysThatItWithholdsCredentials)
{
    struct Accepting final : UrlSessionDelegate {
        ServerTrust serverTrustDisposition() override { return ServerTrust::AcceptAny; }
    } accepting;
    std::optional<UrlErrorCode> code;
    const auto request = backend->failing(UrlErrorCode::CredentialsWithheld);
    backend->sessions()
        .makeSession(
            {UrlSessionConfiguration::Storage::Ephemeral, {{"Authorization", "s3cret"}}}, accepting)
        ->dataTask(request, [&](const UrlReply& reply) {
            code = reply ? UrlErrorCode::Other : reply.error().code;
        });
    ASSERT_TRUE(backend->runUntil([&] { return code.has_value(); }));
    EXPECT_EQ(code, UrlErrorCode::CredentialsWithheld);
}

TEST_F(UrlSessionContract, ARedirectThatIsNotFollowedIsTheResponseAndSaysWhy)
{
    using enum UrlErrorCode;
    for (const auto code : {RedirectElsewhere, RedirectToHttp, TooManyRedirects, BadRedirect}) {
        SCOPED_TRACE(static_cast<int>(code));
        const auto response = send(backend->redirecting(code));
        ASSERT_TRUE(response);
        EXPECT_EQ(response->status, 307);
        ASSERT_TRUE(response->refusedRedirect);
        EXPECT_EQ(response->refusedRedirect->code, code);
        EXPECT_EQ(response->refusedRedirect->text.find("s3cret"), std::string::npos);
    }
    const auto elsewhere = send(backend->redirecting(RedirectElsewhere));
    EXPECT_EQ(elsewhere.value().refusedRedirect.value().text, "https://other.example:8443");
    backend->willReply(302, "");
    const auto nowhere = send({backend->url("/")});
    EXPECT_FALSE(nowhere.value().refusedRedirect) << "no Location, no redirect";
}

TEST_F(UrlSessionContract, SendsMethodUrlHeadersInOrderAndBody)
{
    const HttpHeaders headers = {{"Content-Type", "application/x-www-form-urlencoded"},
        {"Accept", "application/json"}, {"User-Agent", "Zarn%20Actions/1.0"}};
    backend->willReply(200, "{}");
    const Url url = backend->url("/api/oauth/token?a=b");
    ASSERT_TRUE(send({url, "POST", "client_id=a&client_secret=b c\xC3\xA9"}, headers));
    const auto seen = backend->seen();
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].method, "POST");
    EXPECT_EQ(seen[0].url, url.text());
    EXPECT_EQ(seen[0].headers, headers);
    EXPECT_EQ(seen[0].body, "client_id=a&client_secret=b c\xC3\xA9");
}

TEST_F(UrlSessionContract, SendsEachMethodAsItIs)
{
    for (const char* method : {"GET", "POST", "PUT"}) {
        backend->willReply(200, "{}");
        ASSERT_TRUE(send({backend->url("/method"), method}));
        EXPECT_EQ(backend->seen().back().method, method);
        EXPECT_EQ(backend->seen().back().body, "");
    }
}

TEST_F(UrlSessionContract, TheCompletionRunsOnceOnTheMainThreadAndNeverWithinTheCall)
{
    backend->willReply(200, "{}");
    const auto session = makeSession();
    int calls = 0;
    std::thread::id thread;
    session->dataTask({backend->url("/")}, [&](const UrlReply&) {
        ++calls;
        thread = std::this_thread::get_id();
    });
    EXPECT_EQ(calls, 0);
    ASSERT_TRUE(backend->runUntil([&] { return calls > 0; }));
    EXPECT_EQ(thread, std::this_thread::get_id());
    // A second task's end shows that nothing of the first is still to come.
    backend->willReply(200, "{}");
    ASSERT_TRUE(send({backend->url("/")}));
    EXPECT_EQ(calls, 1);
}

TEST_F(UrlSessionContract, ACompletionMayStartAnotherTask)
{
    backend->willReply(200, "first");
    backend->willReply(200, "second");
    const auto session = makeSession();
    std::string bodies;
    session->dataTask({backend->url("/1")}, [&](const UrlReply& first) {
        bodies = first.value().body;
        session->dataTask({backend->url("/2")},
            [&](const UrlReply& second) { bodies += " " + second.value().body; });
    });
    ASSERT_TRUE(backend->runUntil([&] { return bodies.size() > 5; }));
    EXPECT_EQ(bodies, "first second");
}

TEST_F(UrlSessionContract, SeveralTasksRunAtOnceAndEachEndsOnce)
{
    constexpr int count = 8;
    std::vector<int> calls(count, 0);
    const auto session = makeSession();
    for (int i = 0; i < count; ++i)
        backend->willReply(200, "{}");
    for (int i = 0; i < count; ++i)
        session->dataTask({backend->url("/many")},
            [&, i](const UrlReply&) { ++calls[static_cast<std::size_t>(i)]; });
    ASSERT_TRUE(backend->runUntil([&] { return calls == std::vector<int>(count, 1); }));
}

TEST_F(UrlSessionContract, ReleasingTheSessionLetsItsTaskFinish)
{
    backend->willReply(200, "finished");
    std::string body;
    makeSession()->dataTask(
        {backend->url("/")}, [&](const UrlReply& response) { body = response.value().body; });
    ASSERT_TRUE(backend->runUntil([&] { return !body.empty(); }));
    EXPECT_EQ(body, "finished");
}

TEST_F(UrlSessionContract, AnInvalidatedSessionFinishesItsTaskAndStartsNoOther)
{
    backend->willReply(200, "finished");
    const auto session = makeSession();
    std::string body;
    session->dataTask(
        {backend->url("/")}, [&](const UrlReply& response) { body = response.value().body; });
    session->finishTasksAndInvalidate();
    session->finishTasksAndInvalidate();
    const auto token = std::make_shared<int>(0);
    session->dataTask(
        {backend->url("/late")}, [token](const UrlReply&) { ADD_FAILURE() << "a late task ran"; });
    EXPECT_EQ(token.use_count(), 1) << "the completion of a refused task was kept";
    ASSERT_TRUE(backend->runUntil([&] { return !body.empty(); }));
    EXPECT_EQ(body, "finished");
    EXPECT_EQ(backend->seen().size(), 1U);
}

TEST_F(UrlSessionContract, ACompletionIsDestroyedAfterItRan)
{
    backend->willReply(200, "{}");
    const auto token = std::make_shared<int>(0);
    bool done = false;
    makeSession()->dataTask({backend->url("/")}, [token, &done](const UrlReply&) { done = true; });
    EXPECT_EQ(token.use_count(), 2);
    ASSERT_TRUE(backend->runUntil([&] { return done; }));
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(UrlSessionContract, DestroyingTheSessionsDestroysCompletionsWithoutCallingThem)
{
    backend->willReply(200, "{}");
    const auto token = std::make_shared<int>(0);
    makeSession()->dataTask({backend->url("/")},
        [token](const UrlReply&) { ADD_FAILURE() << "a cancelled task ended"; });
    backend->destroySessions();
    EXPECT_EQ(token.use_count(), 1);
    EXPECT_FALSE(backend->runUntil([] { return false; }));
}

TEST_F(UrlSessionContract, ASessionAsksItsDelegateForTrustOnceOnTheMainThread)
{
    struct Asked final : UrlSessionDelegate {
        ServerTrust serverTrustDisposition() override
        {
            ++times;
            thread = std::this_thread::get_id();
            return ServerTrust::Evaluate;
        }
        int times = 0;
        std::thread::id thread;
    } asked;
    backend->willReply(200, "{}");
    backend->willReply(200, "{}");
    const auto session = backend->sessions().makeSession({}, asked);
    int calls = 0;
    for (int i = 0; i < 2; ++i)
        session->dataTask({backend->url("/")}, [&](const UrlReply&) { ++calls; });
    ASSERT_TRUE(backend->runUntil([&] { return calls == 2; }));
    EXPECT_EQ(asked.times, 1);
    EXPECT_EQ(asked.thread, std::this_thread::get_id());
}

TEST_F(UrlSessionContract, NoReplyIsKeptForALaterRequest)
{
    backend->willReply(200, "old");
    ASSERT_TRUE(send({backend->url("/cached")}));
    backend->sessions().removeAllCachedResponses();
    backend->willReply(200, "new");
    const auto response = send({backend->url("/cached")});
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "new");
    EXPECT_EQ(backend->seen().size(), 2U);
}

} // namespace zarn
