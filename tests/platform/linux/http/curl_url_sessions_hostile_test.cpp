// SPDX-License-Identifier: MIT
// Servers that lie, trickle, flood and hang up: each request ends, within its limits and without
// growing. ZARN_LONG=1 runs the sizes and times of the program itself where the short form scales.
#include "tests/platform/linux/http/http_fixture.h"

#include <gtest/gtest.h>

#include <fstream>
#include <tuple>

namespace zarn::linux_backend {
namespace {

using namespace std::chrono_literals;
using demo::Reply;
using demo::Request;

/// Writes bits in the order that DEFLATE wants them.
class BitWriter {
public:
    void put(unsigned bits, unsigned count)
    {
        for (unsigned i = 0; i < count; ++i) {
            m_byte |= ((bits >> i) & 1U) << m_used;
            if (++m_used == 8)
                flush();
        }
    }
    // Huffman codes go in with their highest bit first.
    void putCode(unsigned code, unsigned count)
    {
        for (unsigned i = count; i > 0; --i)
            put((code >> (i - 1)) & 1U, 1);
    }
    void flush()
    {
        bytes += static_cast<char>(m_byte);
        m_byte = 0;
        m_used = 0;
    }
    std::string bytes;

private:
    unsigned m_byte = 0;
    unsigned m_used = 0;
};

// A gzip stream of `size` zeros, about a thousandth of that long: one literal and then matches of
// 258 bytes at distance 1, in one block of fixed Huffman codes.
std::string gzipBomb(std::size_t size)
{
    BitWriter writer;
    writer.bytes = std::string("\x1f\x8b\x08\0\0\0\0\0\0\x03", 10);
    writer.put(1, 1);
    writer.put(1, 2);
    writer.putCode(0x30, 8);
    for (std::size_t i = 0; i < size / 258; ++i) {
        writer.putCode(0xC5, 8);
        writer.putCode(0, 5);
    }
    return std::move(writer.bytes);
}

// Peak resident memory so far, in KiB.
long peakMemory()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:"))
            return std::stol(line.substr(6));
    }
    return -1;
}

class HttpHostile : public testing::Test {
protected:
    static HttpLimits scaledLimits()
    {
        HttpLimits scaled = HttpClient::patientLimits();
        scaled.idle = 30s;
        scaled.total = 2s;
        return scaled;
    }

    // Asks a server that always replies so; expects an end soon after the limits.
    std::optional<HttpResponse> ask(
        const Reply& reply, const HttpLimits& used = HttpClient::patientLimits())
    {
        LoopbackServer server([reply](const Request&) { return reply; });
        HttpClient client(used);
        const long before = peakMemory();
        const auto start = std::chrono::steady_clock::now();
        const auto response = client.get(server.https());
        m_taken = std::chrono::steady_clock::now() - start;
        m_grownKib = peakMemory() - before;
        EXPECT_LT(m_taken, 60s);
        return response;
    }

    static Reply raw(std::string head, std::string repeated = "")
    {
        Reply reply;
        reply.raw = std::move(head);
        reply.body = std::move(repeated);
        reply.endless = !reply.body.empty();
        return reply;
    }

    std::chrono::steady_clock::duration m_taken{};
    long m_grownKib = 0;
};

// The address sanitizer keeps back the last 256 MiB of what was freed, whatever the program needs.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long memoryFactor = 32;
#else
constexpr long memoryFactor = 1;
#endif

TEST_F(HttpHostile, AnEndlessBodyEndsAtSixteenMebibytes)
{
    Reply reply;
    reply.body = std::string(1000, 'x');
    reply.endless = true;
    EXPECT_FALSE(ask(reply));
    EXPECT_LT(m_grownKib, 64 * 1024 * memoryFactor);
}

TEST_F(HttpHostile, AnEndlessChunkedBodyEndsToo)
{
    EXPECT_FALSE(ask(raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n",
        "400\r\n" + std::string(1024, 'x') + "\r\n")));
    EXPECT_LT(m_grownKib, 64 * 1024 * memoryFactor);
}

TEST_F(HttpHostile, AHundredMegabytesOfJsonAreNoResponse)
{
    Reply reply;
    reply.bodyStart = "{\"token\":\"";
    reply.body = std::string(1024, 'x');
    reply.repeat = 100U * 1024;
    reply.bodyEnd = "\"}";
    EXPECT_FALSE(ask(reply));
    EXPECT_LT(m_grownKib, 64 * 1024 * memoryFactor);
}

TEST_F(HttpHostile, DeepNestingAndBrokenUtf8AreDeliveredAsTheyAre)
{
    Reply deep;
    deep.body = "[";
    deep.repeat = 100'000;
    auto response = ask(deep);
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, std::string(100'000, '['));
    Reply broken;
    broken.body = "{\"token\":\"\xFF\xC0\x80\xED\xA0\x80\"}";
    response = ask(broken);
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, broken.body);
}

TEST_F(HttpHostile, ATrickleOfBodyOrHeadEndsAtTheTotalLimit)
{
    Reply body;
    body.body = "x";
    body.endless = true;
    body.byteInterval = 50ms;
    EXPECT_FALSE(ask(body, scaledLimits()));
    EXPECT_GE(m_taken, 2s);
    Reply head = raw("", "H");
    head.byteInterval = 50ms;
    EXPECT_FALSE(ask(head, scaledLimits()));
    EXPECT_GE(m_taken, 50ms);
}

TEST_F(HttpHostile, ACompressedBombEndsAtSixteenMebibytes)
{
    const std::size_t size = longTests() ? std::size_t{10} << 30U : std::size_t{256} << 20U;
    Reply reply;
    reply.headers = {{"Content-Encoding", "gzip"}};
    reply.body = gzipBomb(size);
    ASSERT_LT(reply.body.size(), size / 100);
    EXPECT_FALSE(ask(reply));
    EXPECT_LT(m_grownKib, (64 * 1024 + static_cast<long>(reply.body.size() / 256)) * memoryFactor);
}

TEST_F(HttpHostile, ASmallCompressedBodyOfTheSameKindIsUnderstood)
{
    // Were the bomb's kind of stream not understood, its end would prove nothing.
    Reply reply;
    reply.headers = {{"Content-Encoding", "gzip"}};
    BitWriter writer;
    writer.bytes = std::string("\x1f\x8b\x08\0\0\0\0\0\0\x03", 10);
    writer.put(1, 1);
    writer.put(1, 2);
    writer.putCode(0x30, 8);
    writer.putCode(0xC5, 8);
    writer.putCode(0, 5);
    writer.putCode(0, 7);
    writer.flush();
    // CRC-32 and length of 259 zeros.
    writer.bytes += std::string("\x68\xfc\x76\xc2\x03\x01\0\0", 8);
    reply.body = writer.bytes;
    const auto response = ask(reply);
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, std::string(259, '\0'));
}

TEST_F(HttpHostile, ManyLayersOfCompressionAreRefused)
{
    Reply reply;
    std::string encodings = "gzip";
    for (int i = 0; i < 1000; ++i)
        encodings += ", gzip";
    reply.headers = {{"Content-Encoding", encodings}};
    reply.body = "x";
    EXPECT_FALSE(ask(reply));
}

TEST_F(HttpHostile, AnEndlessRedirectEndsAfterSixteen)
{
    LoopbackServer server([](const Request&) {
        Reply reply;
        reply.status = 302;
        reply.headers = {{"Location", "/again"}};
        return reply;
    });
    HttpClient client;
    const auto response = client.get(server.https());
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 302);
    EXPECT_EQ(server.requests().size(), 17U);
}

TEST_F(HttpHostile, HeaderFloodsEnd)
{
    const std::string ok = "HTTP/1.1 200 OK\r\n";
    const std::pair<const char*, Reply> floods[]
        = {{"endless lines", raw(ok, "X-Flood: xxxxxxxxxxxxxxxxxxxxxxxxxxxx\r\n")},
            {"one endless line", raw(ok + "X-Flood: ", std::string(1000, 'x'))},
            {"endless name", raw(ok, std::string(1000, 'x'))},
            {"endless status line", raw("HTTP/1.1 200 ", std::string(1000, 'x'))},
            {"endless folded line", raw(ok + "X-Flood: x\r\n", " xxxxxxxxxxxxxxxxxxxxxxx\r\n")},
            {"endless interim replies", raw("", "HTTP/1.1 103 Early Hints\r\nLink: x\r\n\r\n")},
            {"endless 100", raw("", "HTTP/1.1 100 Continue\r\n\r\n")},
            {"endless blank lines", raw("", "\r\n")},
            {"endless NULs", raw("", std::string(1000, '\0'))},
            {"endless Locations", raw("HTTP/1.1 302 Found\r\n", "Location: /x\r\n")},
            {"endless trailers",
                raw(ok + "Transfer-Encoding: chunked\r\n\r\n2\r\nok\r\n0\r\n",
                    "X-Trailer: xxxxxxxx\r\n")},
            {"endless chunk size",
                raw(ok + "Transfer-Encoding: chunked\r\n\r\n", std::string(1000, '0'))},
            {"endless cookies", raw(ok, "Set-Cookie: a=b\r\n")}};
    for (const auto& [name, reply] : floods) {
        EXPECT_FALSE(ask(reply)) << name;
        EXPECT_LT(m_grownKib, 16 * 1024 * memoryFactor) << name;
    }
}

// It is skipped as it comes, so that only time ends it.
TEST_F(HttpHostile, AnEndlessChunkExtensionEndsAtTheTotalLimit)
{
    EXPECT_FALSE(
        ask(raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2;", std::string(1000, 'x')),
            scaledLimits()));
    EXPECT_GE(m_taken, 2s);
    EXPECT_LT(m_grownKib, 16 * 1024 * memoryFactor);
}

TEST_F(HttpHostile, ManyHeadersWithinReasonAreFine)
{
    Reply reply;
    for (int i = 0; i < 1000; ++i)
        reply.headers.emplace_back("X-Header-" + std::to_string(i), std::string(100, 'x'));
    reply.body = "ok";
    const auto response = ask(reply);
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "ok");
}

TEST_F(HttpHostile, AConnectionLostAtAnyByteOfAReplyIsNoResponse)
{
    Reply reply;
    reply.headers = {{"Content-Type", "application/json"}};
    reply.body = "{\"token\":\"0123456789\",\"expires\":\"2030-01-01T00:00:00.000Z\"}";
    const std::size_t size = demo::replyHead(reply).size() + reply.body.size();
    std::mutex mutex;
    Reply next;
    LoopbackServer server([&](const Request&) {
        const std::lock_guard lock(mutex);
        return next;
    });
    HttpClient client;
    std::size_t cases = 0;
    for (const bool quietly : {false, true}) {
        for (std::size_t at = 0; at < size; ++at) {
            for (const std::string& url : {server.https(), server.http()}) {
                {
                    const std::lock_guard lock(mutex);
                    next = reply;
                    next.dropAfter = at;
                    next.dropQuietly = quietly;
                }
                EXPECT_FALSE(client.get(url)) << at << " of " << size << " " << url << quietly;
                ++cases;
            }
        }
    }
    std::printf("Lost connections: %zu cases, none taken for a reply\n", cases);
}

// Such a reply cannot be told from one that was cut in order; what was cut is no whole JSON then.
TEST_F(HttpHostile, AReplyWithoutALengthEndsWithItsConnectionButNotWithAReset)
{
    Reply reply;
    reply.withoutLength = true;
    reply.body = "{\"token\":\"0123456789\"}";
    auto response = ask(reply);
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, reply.body);
    reply.dropAfter = demo::replyHead(reply).size() + 10;
    EXPECT_FALSE(ask(reply));
    reply.dropQuietly = true;
    response = ask(reply);
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, reply.body.substr(0, 10));
}

TEST_F(HttpHostile, ContradictingLengthsNeverLeaveAConnectionBehind)
{
    for (const char* head : {"Content-Length: 2\r\nContent-Length: 5\r\n",
             "Content-Length: 2\r\nTransfer-Encoding: chunked\r\n",
             "Content-Length: 99999999999999999999999\r\n", "Content-Length: 2x\r\n",
             "Content-Length: 18446744073709551615\r\n",
             "Content-Length: 9223372036854775807\r\n"}) {
        ask(raw("HTTP/1.1 200 OK\r\n" + std::string(head) + "\r\nok"));
        EXPECT_LT(m_taken, 30s) << head;
    }
}

TEST_F(HttpHostile, OneByteASecondAndSilenceEndAtTheirLimits)
{
    const bool real = longTests();
    const HttpLimits used = real ? HttpLimits{} : scaledLimits();
    HttpLimits usedForSilence = used;
    usedForSilence.idle = real ? used.idle : 500ms;
    Reply trickle;
    trickle.body = "x";
    trickle.endless = true;
    trickle.byteInterval = real ? 1000ms : 20ms;
    Reply silent = raw("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc");
    silent.stall = true;
    for (const auto& [reply, limits, expected] :
        {std::tuple(trickle, used, used.total), {silent, usedForSilence, usedForSilence.idle}}) {
        LoopbackServer server([reply = reply](const Request&) { return reply; });
        TestMainQueue queue;
        CurlUrlSessions sessions(queue, limits);
        UrlSessionDelegate delegate;
        bool done = false;
        const auto start = std::chrono::steady_clock::now();
        sessions.makeSession({}, delegate)
            ->dataTask({*Url::fromText(server.https())}, [&](const UrlReply& response) {
                EXPECT_FALSE(response);
                done = true;
            });
        ASSERT_TRUE(queue.runUntil([&] { return done; }, expected + 90s));
        const auto taken = std::chrono::steady_clock::now() - start;
        EXPECT_GE(taken, expected);
        EXPECT_LT(taken, expected + 60s);
    }
}

} // namespace
} // namespace zarn::linux_backend
