// SPDX-License-Identifier: MIT
#include "platform/linux/http/curl_transfer.h"

#include "platform/linux/http/curl_errors.h"
#include "platform/linux/http/curl_tls.h"

#include <curl/curl.h>

#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <memory>
#include <set>

namespace zarn::linux_backend {

namespace {

using Clock = std::chrono::steady_clock;

// libcurl copies a field anew for each line that continues it.
constexpr int maximumContinuationLines = 100;
using Multi = std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)>;
using Easy = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;
using List = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;

bool isLoopbackAddress(const curl_sockaddr& address)
{
    if (address.family == AF_INET) {
        const auto* v4 = reinterpret_cast<const sockaddr_in*>(&address.addr);
        return ntohl(v4->sin_addr.s_addr) >> 24U == 127;
    }
    const auto* v6 = reinterpret_cast<const sockaddr_in6*>(&address.addr);
    return address.family == AF_INET6 && IN6_IS_ADDR_LOOPBACK(&v6->sin6_addr);
}

// The list as libcurl wants it. A bare "Name:" takes away what it would add by itself; a header
// without a value is written "Name;".
List headerList(const HttpHeaders& headers)
{
    std::vector<std::string> lines;
    for (const auto& [name, value] : headers) {
        const auto trimmed = withoutOuterBlanks(value);
        lines.push_back(trimmed.empty() ? name + ";" : name + ": " + std::string(trimmed));
    }
    for (const char* name : {"Accept", "Accept-Encoding", "Content-Type", "Expect", "User-Agent"}) {
        if (!hasHeader(headers, name))
            lines.push_back(std::string(name) + ":");
    }
    List list(nullptr, curl_slist_free_all);
    for (const auto& line : lines) {
        curl_slist* longer = curl_slist_append(list.get(), line.c_str());
        if (!longer)
            return {nullptr, curl_slist_free_all};
        static_cast<void>(list.release());
        list.reset(longer);
    }
    return list;
}

/// One request and its reply.
class Transfer {
public:
    Transfer(const CurlJob& job, const HttpHop& hop, bool mayRedirect, Clock::time_point end)
        : m_job(job)
        , m_hop(hop)
        , m_mayRedirect(mayRedirect)
        , m_end(end)
        , m_easy(curl_easy_init(), curl_easy_cleanup)
        , m_headerList(headerList(job.headers))
    {
    }

    /// Runs to the end of the reply, or of its head when that leads elsewhere.
    bool run(CURLM* multi, const CurlCancellation& cancellation)
    {
        if (!m_easy || !m_headerList || !setUp())
            return false;
        if (curl_multi_add_handle(multi, m_easy.get()) != CURLM_OK)
            return false;
        const bool good = loop(multi, cancellation);
        curl_multi_remove_handle(multi, m_easy.get());
        return good;
    }

    const std::optional<HttpHop>& next() const { return m_redirect.next; }
    HttpResponse takeResponse() { return {m_status, std::move(m_body), m_redirect.refused}; }
    /// Why run() failed.
    const UrlError& error() const { return m_error; }

private:
    template <typename Value> bool set(CURLoption option, Value value)
    {
        return curl_easy_setopt(m_easy.get(), option, value) == CURLE_OK;
    }

    bool setUp()
    {
        return set(CURLOPT_ERRORBUFFER, m_detail.data())
            && set(CURLOPT_URL, m_hop.url.text().c_str())
            && set(CURLOPT_PROTOCOLS_STR, m_hop.url.https ? "https" : "http") && setUpRequest()
            && setUpCallbacks() && setUpConnection() && setUpTls(m_easy.get(), m_job.trust);
    }

    bool setUpRequest()
    {
        const bool isPost = m_hop.method == "POST" || m_hop.method == "PUT" || m_hop.body;
        bool good = set(CURLOPT_HTTPHEADER, m_headerList.get()) && set(CURLOPT_PATH_AS_IS, 1L)
            && set(CURLOPT_FOLLOWLOCATION, 0L) && set(CURLOPT_DISALLOW_USERNAME_IN_URL, 1L)
            && set(CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1})
            && set(CURLOPT_HTTP09_ALLOWED, 0L)
            // Not requested (see headerList), but decoded when a server compresses anyway.
            && set(CURLOPT_ACCEPT_ENCODING, "gzip, deflate")
            && set(CURLOPT_NETRC, long{CURL_NETRC_IGNORED});
        if (isPost) {
            const std::string_view body = m_hop.body ? std::string_view(*m_hop.body) : "";
            good = good && set(CURLOPT_POST, 1L)
                && set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()))
                && set(CURLOPT_POSTFIELDS, body.data());
        }
        if (m_hop.method == "HEAD")
            return good && set(CURLOPT_NOBODY, 1L);
        return good && set(CURLOPT_CUSTOMREQUEST, m_hop.method.c_str());
    }

    bool setUpCallbacks()
    {
        return set(CURLOPT_HEADERFUNCTION, onHeader) && set(CURLOPT_HEADERDATA, this)
            && set(CURLOPT_WRITEFUNCTION, onBody) && set(CURLOPT_WRITEDATA, this)
            && set(CURLOPT_OPENSOCKETFUNCTION, onOpenSocket) && set(CURLOPT_OPENSOCKETDATA, this)
            && set(CURLOPT_CLOSESOCKETFUNCTION, onCloseSocket)
            && set(CURLOPT_CLOSESOCKETDATA, this);
    }

    bool setUpConnection()
    {
        return set(CURLOPT_NOSIGNAL, 1L) && set(CURLOPT_FRESH_CONNECT, 1L)
            && set(CURLOPT_FORBID_REUSE, 1L)
            // A look-up that hangs is left behind instead of waited for.
            && set(CURLOPT_QUICK_EXIT, 1L)
            // The request's own headers are for its server, never for a proxy on the way.
            && set(CURLOPT_HEADEROPT, long{CURLHEADER_SEPARATE})
            && set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L)
            // http stays on this machine: a proxy could read all of it.
            && (m_hop.url.https || set(CURLOPT_PROXY, ""));
    }

    bool loop(CURLM* multi, const CurlCancellation& cancellation)
    {
        m_start = Clock::now();
        for (int running = 1;;) {
            if (curl_multi_perform(multi, &running) != CURLM_OK)
                return false;
            if (m_redirect.next)
                return true;
            if (running == 0)
                return finished(multi);
            const auto left = timeLeft();
            if (left.count() <= 0)
                return fail(UrlErrorCode::TimedOut, "the server did not answer in time");
            if (cancellation.isCancelled())
                return false;
            const auto wait = std::min<std::int64_t>(left.count(), 60'000);
            if (curl_multi_poll(multi, nullptr, 0, static_cast<int>(wait), nullptr) != CURLM_OK)
                return false;
        }
    }

    bool finished(CURLM* multi)
    {
        int left = 0;
        const CURLMsg* message = curl_multi_info_read(multi, &left);
        if (!message || message->msg != CURLMSG_DONE)
            return false;
        if (message->data.result == CURLE_OK)
            return m_headComplete || fail(UrlErrorCode::BadReply, "what came is not HTTP");
        // The reason for which a callback refused is more precise than libcurl's error.
        if (!m_hasFailed)
            m_error = urlErrorOf(m_easy.get(), message->data.result, m_detail.data());
        return false;
    }

    /// Records the error and returns false.
    bool fail(UrlErrorCode code, const char* text)
    {
        m_hasFailed = true;
        m_error = {code, text};
        return false;
    }

    // Until the nearest limit; rounded up, so that a wait does not end just before it.
    std::chrono::milliseconds timeLeft()
    {
        const auto now = Clock::now();
        curl_off_t sinceConnect = 0;
        curl_easy_getinfo(m_easy.get(), CURLINFO_PRETRANSFER_TIME_T, &sinceConnect);
        auto end = m_start + m_job.limits.connect;
        if (sinceConnect > 0) {
            const auto bytes = bytesOnTheWire();
            if (!m_connected || bytes != m_bytesSeen) {
                m_connected = true;
                m_bytesSeen = bytes;
                m_lastActivity = now;
            }
            end = m_lastActivity + m_job.limits.idle;
        }
        end = std::min(end, m_end);
        return std::chrono::ceil<std::chrono::milliseconds>(end - now);
    }

    // Counted by the system: libcurl reports a header only when its line is complete.
    std::uint64_t bytesOnTheWire() const
    {
        std::uint64_t sum = 0;
        for (const int socket : m_sockets) {
            tcp_info info{};
            socklen_t length = sizeof info;
            if (getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &length) == 0)
                sum += info.tcpi_bytes_received + info.tcpi_bytes_acked;
        }
        return sum;
    }

    bool takeHeaderLine(std::string_view line)
    {
        m_headerBytes += line.size();
        if (m_headerBytes > m_job.limits.headerBytes)
            return fail(UrlErrorCode::TooLarge, "the head of the reply is too large");
        if (m_headComplete)
            return true;
        if (line.starts_with("HTTP/")) {
            const auto status = statusOfLine(line);
            m_status = status.value_or(0);
            m_locations.clear();
            return status || fail(UrlErrorCode::BadReply, "what came is not HTTP");
        }
        if ((line.starts_with(' ') || line.starts_with('\t'))
            && ++m_continuationLines > maximumContinuationLines)
            return fail(UrlErrorCode::BadReply, "a header has too many lines");
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
            line.remove_suffix(1);
        if (line.empty()) {
            m_headComplete = m_status >= 200;
            if (m_headComplete)
                m_redirect = redirect();
            // No upgrade was requested, so what follows a 101 is not a reply.
            return m_status != 101 || fail(UrlErrorCode::BadReply, "the server changes protocol");
        }
        const auto colon = line.find(':');
        if (colon != std::string_view::npos && sameHeaderName(line.substr(0, colon), "Location"))
            m_locations.emplace_back(withoutOuterBlanks(line.substr(colon + 1)));
        return true;
    }

    Redirect redirect() const
    {
        auto found = nextHop(
            m_hop, m_status, m_locations, carriesCredentials(m_job.headers, m_job.first.body));
        if (!m_mayRedirect && found.next)
            return {{}, UrlError{UrlErrorCode::TooManyRedirects, "the server redirects too often"}};
        return found;
    }

    bool addBody(std::string_view bytes)
    {
        // A reply that leads elsewhere is not read any further.
        if (m_redirect.next)
            return false;
        if (bytes.size() > m_job.limits.bodyBytes - m_body.size())
            return fail(UrlErrorCode::TooLarge, "the reply is too large");
        m_body.append(bytes);
        return true;
    }

    static std::size_t onHeader(char* data, std::size_t, std::size_t size, void* self)
    {
        return static_cast<Transfer*>(self)->takeHeaderLine({data, size}) ? size : 0;
    }

    static std::size_t onBody(char* data, std::size_t, std::size_t size, void* self)
    {
        if (size == 0)
            return 0;
        return static_cast<Transfer*>(self)->addBody({data, size}) ? size : 0;
    }

    static curl_socket_t onOpenSocket(void* self, curlsocktype, curl_sockaddr* address)
    {
        auto* transfer = static_cast<Transfer*>(self);
        // Unencrypted requests never leave this machine, whatever the name resolves to.
        if (!transfer->m_hop.url.https && !isLoopbackAddress(*address)) {
            transfer->fail(UrlErrorCode::InsecureHttp, "http is allowed to this computer only");
            return CURL_SOCKET_BAD;
        }
        const int descriptor
            = ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
        if (descriptor >= 0)
            transfer->m_sockets.insert(descriptor);
        return descriptor;
    }

    static int onCloseSocket(void* self, curl_socket_t descriptor)
    {
        static_cast<Transfer*>(self)->m_sockets.erase(descriptor);
        return ::close(descriptor);
    }

    const CurlJob& m_job;
    const HttpHop& m_hop;
    const bool m_mayRedirect;
    const Clock::time_point m_end;
    std::set<int> m_sockets;
    int m_status = 0;
    bool m_headComplete = false;
    std::size_t m_headerBytes = 0;
    int m_continuationLines = 0;
    std::vector<std::string> m_locations;
    Redirect m_redirect;
    std::string m_body;
    bool m_hasFailed = false;
    UrlError m_error;
    std::array<char, CURL_ERROR_SIZE> m_detail{};
    bool m_connected = false;
    std::uint64_t m_bytesSeen = 0;
    Clock::time_point m_start;
    Clock::time_point m_lastActivity;
    Easy m_easy;
    List m_headerList;
};

} // namespace

void CurlCancellation::cancel()
{
    const std::lock_guard lock(m_mutex);
    m_cancelled = true;
    if (m_multi)
        curl_multi_wakeup(m_multi);
}

void CurlCancellation::watch(void* multi)
{
    const std::lock_guard lock(m_mutex);
    m_multi = multi;
}

UrlReply performHttp(const CurlJob& job, CurlCancellation& cancellation)
{
    const auto end = Clock::now() + job.limits.total;
    HttpHop hop = job.first;
    for (int redirects = 0;; ++redirects) {
        // The multi handle closes its connections through the transfer: it goes first.
        Transfer transfer(job, hop, redirects < maximumRedirects, end);
        const Multi multi(curl_multi_init(), curl_multi_cleanup);
        if (!multi)
            return UrlError{};
        cancellation.watch(multi.get());
        const bool good = transfer.run(multi.get(), cancellation);
        cancellation.watch(nullptr);
        if (!good || cancellation.isCancelled())
            return transfer.error();
        if (!transfer.next())
            return transfer.takeResponse();
        HttpHop next = *transfer.next();
        hop = std::move(next);
    }
}

} // namespace zarn::linux_backend
