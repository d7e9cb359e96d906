// SPDX-License-Identifier: MIT
// Where credentials go when a server redirects: a generated matrix.
#include "base/base64.h"
#include "tests/platform/linux/http/http_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>

namespace zarn::linux_backend {
namespace {

using demo::Reply;
using demo::Request;

const std::string user = "planted.user";
const std::string password = "planted/p\xC3\xA4ss+word=&%";
const std::string token = "planted.token/+=";

std::string percentEncoded(const std::string& text, const char* format)
{
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        char escape[4];
        std::snprintf(escape, sizeof escape, format, unsigned{byte});
        out += std::isalnum(byte) ? std::string(1, c) : std::string(escape);
    }
    return out;
}

/// What any Base64 of a text around the secret holds, whatever its alignment.
std::vector<std::string> base64Forms(const std::string& secret)
{
    std::vector<std::string> forms;
    for (const std::size_t before : {0U, 1U, 2U}) {
        auto whole = base64Encoded(std::string(before, '\0') + secret);
        whole.erase(whole.find_last_not_of('=') + 1);
        // Letters at the ends share bits with what stands around.
        whole.pop_back();
        forms.push_back(whole.substr(before == 0 ? 0 : before + 1));
    }
    return forms;
}

/// What must not be seen elsewhere: each secret, and each of its Base64 forms, raw and
/// percent-encoded.
std::set<std::string> needles()
{
    std::set<std::string> all;
    for (const std::string& secret : {user, password, token, user + ":" + password}) {
        auto forms = base64Forms(secret);
        forms.push_back(secret);
        for (const auto& form : forms)
            all.insert({form, percentEncoded(form, "%%%02X"), percentEncoded(form, "%%%02x")});
    }
    return all;
}

struct CredentialKind {
    const char* name;
    const char* method;
    std::string path;
    HttpHeaders headers;
    std::optional<std::string> body;
};

std::vector<CredentialKind> credentialKinds()
{
    return {{"token request with Basic header", "POST", "/api/v1/auth/token",
                {{"Authorization", "Basic " + base64Encoded(user + ":" + password)},
                    {"Content-Type", "application/json"}},
                std::nullopt},
        {"token request with form body", "POST", "/api/oauth/token",
            {{"Content-Type", "application/x-www-form-urlencoded"}},
            "grant_type=client_credentials&client_id=" + user + "&client_secret=" + password},
        {"version request with Bearer header", "GET", "/api/v1/zarn-pro-version",
            {{"Authorization", "Bearer " + token}, {"Content-Type", "application/json"}},
            std::nullopt}};
}

/// What a Location header says, and whether it stays within the origin.
struct Target {
    const char* name;
    std::optional<std::string> location;
    bool followed;
    /// Takes one redirect within the origin first.
    bool chain = false;
};

class RedirectMatrix : public testing::Test {
protected:
    Reply answer(const Request& request)
    {
        const std::lock_guard lock(m_mutex);
        Reply reply;
        if (request.path() == "/arrived") {
            reply.body = "arrived";
            return reply;
        }
        reply.status = m_status;
        reply.body = "redirect";
        const bool first = m_target->chain && request.path() != "/second";
        const auto location = first ? std::optional<std::string>("/second") : m_target->location;
        if (location)
            reply.headers = {{"Location", *location}};
        return reply;
    }

    void redirect(const Target& target, int status)
    {
        const std::lock_guard lock(m_mutex);
        m_target = &target;
        m_status = status;
    }

    std::vector<Target> targets(bool https) const
    {
        const auto at = [&](const LoopbackServer& where, const std::string& host) {
            return (https ? where.https(host) : where.http(host)) + "/arrived";
        };
        const auto without = [](std::string text) { return text.substr(text.find("//")); };
        const std::string own = at(server, "localhost");
        const std::string port = own.substr(own.rfind(':'));
        const std::string scheme = https ? "https" : "http";
        const std::string otherScheme
            = (https ? server.http("localhost") : server.https("localhost")) + "/arrived";
        return {{"same origin", own, true}, {"path", "/arrived", true},
            {"relative path", "../../../arrived", true},
            {"protocol-relative, same origin", without(own), true},
            {"host in other case", at(server, "LocalHost"), true},
            {"scheme in other case", (https ? "HTTPS" : "HTTP") + without(own).insert(0, ":"),
                true},
            {"chain of two within the origin", own, true, true},
            {"other port", at(other, "localhost"), false},
            {"default port", scheme + "://localhost/arrived", false},
            {"other host", at(server, "127.0.0.1"), false},
            {"other host, IPv6", at(server, "[::1]"), false},
            {"host with a trailing dot", at(server, "localhost."), false},
            {"other scheme", otherScheme, false},
            {"other scheme, same port", (https ? "http://localhost" : "https://localhost") + port,
                false},
            {"userinfo, same origin", scheme + "://u:p@localhost" + port, false},
            {"userinfo that looks like the origin",
                at(other, "localhost" + port.substr(0, port.find('/')) + "@127.0.0.1"), false},
            {"protocol-relative, other port", without(at(other, "localhost")), false},
            {"protocol-relative, other host", without(at(server, "127.0.0.1")), false},
            {"chain of two to another port", at(other, "localhost"), false, true},
            {"chain of two to another host", at(server, "127.0.0.1"), false, true},
            {"chain of two to another scheme", otherScheme, false, true},
            {"missing Location", std::nullopt, false}, {"empty Location", "", false},
            {"garbage Location", "%%%", false}, {"blank in Location", "/a b", false},
            {"backslashes", "\\\\127.0.0.1\\arrived", false},
            {"no host", scheme + ":///arrived", false}, {"one slash", scheme + ":/arrived", false},
            {"unknown scheme", "gopher" + without(own).insert(0, ":"), false},
            {"script", "javascript:alert(1)", false}, {"port zero", "//localhost:0/", false},
            {"control character", std::string("/a\x01rrived"), false}};
    }

    void expectOutcome(const CredentialKind& kind, const Target& target, bool https,
        const std::optional<HttpResponse>& response)
    {
        ASSERT_TRUE(response);
        EXPECT_EQ(response->status, target.followed ? 200 : m_status);
        EXPECT_EQ(response->body, target.followed ? "arrived" : "redirect");
        const auto requests = newRequests(server, m_seen);
        const std::size_t hops = (target.chain ? 2U : 1U) + (target.followed ? 1U : 0U);
        ASSERT_EQ(requests.size(), hops);
        EXPECT_EQ(newRequests(other, m_seenOther).size(), 0U);
        const bool becomesGet = m_status < 304;
        for (std::size_t i = 0; i < requests.size(); ++i) {
            const Request& request = requests[i];
            EXPECT_EQ(request.tlsVersion.empty(), !https);
            EXPECT_TRUE(demo::equalsIgnoringCase(request.header("Host"),
                (https ? server.https("localhost").substr(8)
                       : server.http("localhost").substr(7))));
            const bool changed = i > 0 && becomesGet && std::string(kind.method) == "POST";
            EXPECT_EQ(request.method, changed ? "GET" : kind.method);
            EXPECT_EQ(request.body, changed ? "" : kind.body.value_or(""));
            for (const auto& [name, value] : kind.headers)
                EXPECT_EQ(request.header(name), value);
        }
    }

    std::vector<Request> newRequests(const LoopbackServer& from, std::size_t& seen)
    {
        const auto all = from.requests();
        const auto begin = all.begin() + static_cast<std::ptrdiff_t>(seen);
        seen = all.size();
        return {begin, all.end()};
    }

    // Secret bytes in requests to any other origin than the one that was asked.
    std::size_t secretBytesElsewhere() const
    {
        const auto texts = needles();
        const std::set<std::string> own
            = {server.https("localhost").substr(8), server.http("localhost").substr(7)};
        std::size_t bytes = 0;
        for (const LoopbackServer* where : {&server, &other}) {
            for (const auto& request : where->requests()) {
                std::string host = request.header("Host");
                std::transform(host.begin(), host.end(), host.begin(), ::tolower);
                if (where == &server && own.contains(host))
                    continue;
                for (const auto& needle : texts)
                    bytes += request.raw.find(needle) == std::string::npos ? 0 : needle.size();
            }
        }
        return bytes;
    }

    std::mutex m_mutex;
    HttpClient client;
    LoopbackServer other{[](const Request&) {
        Reply reply;
        reply.body = "arrived";
        return reply;
    }};
    LoopbackServer server{[this](const Request& request) { return answer(request); }};
    const Target* m_target = nullptr;
    int m_status = 0;
    std::size_t m_seen = 0;
    std::size_t m_seenOther = 0;
};

TEST_F(RedirectMatrix, NoSecretByteReachesAnotherOrigin)
{
    std::size_t cases = 0;
    for (const bool https : {true, false}) {
        const auto all = targets(https);
        for (const auto& kind : credentialKinds()) {
            for (const Target& target : all) {
                for (const int status : {301, 302, 303, 307, 308}) {
                    SCOPED_TRACE(std::string(kind.name) + ", " + target.name + ", "
                        + std::to_string(status) + (https ? ", https" : ", http"));
                    redirect(target, status);
                    const std::string start
                        = (https ? server.https("localhost") : server.http("localhost"))
                        + kind.path;
                    const auto response = client.send(
                        {*Url::fromText(start), kind.method, kind.body}, kind.headers);
                    expectOutcome(kind, target, https, response);
                    ++cases;
                }
            }
        }
    }
    EXPECT_GE(cases, 240U);
    EXPECT_EQ(secretBytesElsewhere(), 0U);
    EXPECT_EQ(other.traffic().connections, 0U);
    std::printf(
        "Redirects: %zu cases, %zu secret bytes at another origin, looked for in %zu forms\n",
        cases, secretBytesElsewhere(), needles().size());
}

TEST_F(RedirectMatrix, TheScanFindsASecretThatDidGoElsewhere)
{
    std::vector<std::string> sent;
    for (const auto& secret : {user, password, token}) {
        std::vector<std::string> texts{secret};
        for (std::size_t before = 0; before < 7; ++before)
            texts.push_back(base64Encoded(std::string(before, 'x') + secret + ":"));
        for (const auto& text : texts)
            for (const auto& form :
                {text, percentEncoded(text, "%%%02X"), percentEncoded(text, "%%%02x")})
                sent.push_back(form);
    }
    std::size_t found = 0;
    for (const auto& text : sent) {
        const auto before = secretBytesElsewhere();
        const Url url = *Url::fromText(other.https() + "/");
        ASSERT_TRUE(client.send({url, "POST", "a=" + text}, {}));
        EXPECT_GT(secretBytesElsewhere(), before) << text;
        found += secretBytesElsewhere() > before ? 1U : 0U;
    }
    std::printf("Redirects: the scan finds %zu of %zu planted texts\n", found, sent.size());
}

TEST_F(RedirectMatrix, WithoutCredentialsOtherOriginsAreReached)
{
    const Target target{"other port", other.https("localhost") + "/arrived", false};
    redirect(target, 307);
    const auto response = client.get(server.https("localhost") + "/start", {{"Accept", "*/*"}});
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "arrived");
    EXPECT_EQ(other.requests().size(), 1U);
}

} // namespace
} // namespace zarn::linux_backend
