// SPDX-License-Identifier: MIT
#include "platform/linux/http/connection_probe.h"

#include "platform/linux/http/curl_errors.h"
#include "platform/linux/http/curl_tls.h"
#include "platform/linux/http/http_limits.h"
#include "platform/linux/http/http_rules.h"

#include <curl/curl.h>

#include <netdb.h>
#include <sys/socket.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace zarn::linux_backend {

namespace {

using Facts = std::vector<std::pair<std::string, std::string>>;

/// A connection without a request.
class Probe {
public:
    Probe(const HttpUrl& url, ServerTrust trust)
        : m_url(url)
        , m_easy(curl_easy_init(), curl_easy_cleanup)
    {
        m_good = m_easy && setUp(trust);
    }

    /// Why there is no connection; nothing when there is one.
    std::optional<UrlError> connect()
    {
        if (!m_good)
            return UrlError{UrlErrorCode::Other, "libcurl refuses a setting"};
        const auto result = curl_easy_perform(m_easy.get());
        if (result == CURLE_OK)
            return std::nullopt;
        return urlErrorOf(m_easy.get(), result, m_detail.data());
    }

    /// The proxy that was chosen, without credentials; "" for none.
    const std::string& proxy() const { return m_proxy; }
    /// Version and cipher; "" before there is TLS.
    const std::string& tls() const { return m_tls; }
    /// Address and port of what it was connected to, or "".
    std::string peer() const
    {
        const char* address = nullptr;
        long port = 0;
        curl_off_t connected = 0;
        curl_easy_getinfo(m_easy.get(), CURLINFO_PRIMARY_IP, &address);
        curl_easy_getinfo(m_easy.get(), CURLINFO_PRIMARY_PORT, &port);
        curl_easy_getinfo(m_easy.get(), CURLINFO_CONNECT_TIME_T, &connected);
        if (!address || !*address || connected == 0)
            return "";
        return std::string(address) + " port " + std::to_string(port);
    }
    void addCertificates(Facts& facts) const;

private:
    template <typename Value> bool set(CURLoption option, Value value)
    {
        return curl_easy_setopt(m_easy.get(), option, value) == CURLE_OK;
    }

    bool setUp(ServerTrust trust)
    {
        const auto limit = static_cast<long>(HttpLimits{}.connect.count());
        return set(CURLOPT_ERRORBUFFER, m_detail.data()) && set(CURLOPT_URL, m_url.origin().c_str())
            && set(CURLOPT_PROTOCOLS_STR, m_url.https ? "https" : "http")
            && set(CURLOPT_CONNECT_ONLY, 1L) && set(CURLOPT_NOSIGNAL, 1L)
            && set(CURLOPT_NETRC, long{CURL_NETRC_IGNORED}) && set(CURLOPT_TIMEOUT_MS, limit)
            && set(CURLOPT_CONNECTTIMEOUT_MS, limit) && set(CURLOPT_CERTINFO, 1L)
            && set(CURLOPT_DEBUGFUNCTION, onDebug) && set(CURLOPT_DEBUGDATA, this)
            && set(CURLOPT_VERBOSE, 1L) && (m_url.https || set(CURLOPT_PROXY, ""))
            && setUpTls(m_easy.get(), trust);
    }

    // The only way in which this version of libcurl says either.
    static int onDebug(CURL*, curl_infotype type, char* data, std::size_t size, void* self)
    {
        if (type == CURLINFO_TEXT)
            static_cast<Probe*>(self)->takeNote({data, size});
        return 0;
    }
    void takeNote(std::string_view note);

    const HttpUrl& m_url;
    std::array<char, CURL_ERROR_SIZE> m_detail{};
    std::string m_proxy;
    std::string m_tls;
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> m_easy;
    bool m_good = false;
};

void Probe::takeNote(std::string_view note)
{
    constexpr std::string_view proxyNote = "Uses proxy env variable ";
    constexpr std::string_view tlsNote = "SSL connection using ";
    while (note.ends_with('\n'))
        note.remove_suffix(1);
    if (note.starts_with(tlsNote)) {
        m_tls = note.substr(tlsNote.size());
        return;
    }
    // NAME == 'VALUE'
    const auto value = note.find(" == '");
    if (!note.starts_with(proxyNote) || value == std::string_view::npos || !note.ends_with('\''))
        return;
    const auto name = note.substr(proxyNote.size(), value - proxyNote.size());
    if (name == "no_proxy" || name == "NO_PROXY")
        return;
    auto proxy = note.substr(value + 5);
    proxy.remove_suffix(1);
    // Its user name and password stand before the last "@".
    if (const auto at = proxy.rfind('@'); at != std::string_view::npos)
        proxy.remove_prefix(at + 1);
    else if (const auto scheme = proxy.find("://"); scheme != std::string_view::npos)
        proxy.remove_prefix(scheme + 3);
    m_proxy = std::string(proxy) + " (" + std::string(name) + ")";
}

void Probe::addCertificates(Facts& facts) const
{
    constexpr std::array<std::pair<std::string_view, const char*>, 5> wanted{{
        {"Subject:", "certificate"},
        {"Issuer:", "  issued by"},
        {"X509v3 Subject Alternative Name:", "  names"},
        {"Start date:", "  valid from"},
        {"Expire date:", "  valid until"},
    }};
    curl_certinfo* chain = nullptr;
    if (curl_easy_getinfo(m_easy.get(), CURLINFO_CERTINFO, &chain) != CURLE_OK || !chain)
        return;
    for (int i = 0; i < chain->num_of_certs; ++i) {
        for (const auto& [prefix, name] : wanted) {
            for (auto* entry = chain->certinfo[i]; entry; entry = entry->next) {
                const std::string_view text = entry->data;
                if (text.starts_with(prefix))
                    facts.emplace_back(name, text.substr(prefix.size()));
            }
        }
    }
}

std::string addressesOf(const std::string& host)
{
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* list = nullptr;
    if (const int problem = ::getaddrinfo(host.c_str(), nullptr, &hints, &list); problem != 0)
        return std::string("none: ") + ::gai_strerror(problem);
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(list, ::freeaddrinfo);
    std::string text;
    for (const auto* each = list; each; each = each->ai_next) {
        std::array<char, NI_MAXHOST> name{};
        if (::getnameinfo(each->ai_addr, each->ai_addrlen, name.data(), name.size(), nullptr, 0,
                NI_NUMERICHOST)
            == 0)
            text += (text.empty() ? "" : ", ") + std::string(name.data());
    }
    return text;
}

/// The places of the authorities that setUpTls chooses.
std::string authorities()
{
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy(
        curl_easy_init(), curl_easy_cleanup);
    const auto place = [&](CURLINFO info, const char* variable) {
        const char* chosen = secure_getenv(variable);
        if (chosen && *chosen)
            return std::string(chosen) + " (" + variable + ")";
        char* usual = nullptr;
        curl_easy_getinfo(easy.get(), info, &usual);
        return std::string(usual ? usual : "none");
    };
    return place(CURLINFO_CAINFO, "SSL_CERT_FILE") + ", " + place(CURLINFO_CAPATH, "SSL_CERT_DIR");
}

bool concernsTls(const UrlError& error)
{
    switch (error.code) {
    case UrlErrorCode::UnknownAuthority:
    case UrlErrorCode::WrongName:
    case UrlErrorCode::CertificateExpired:
    case UrlErrorCode::CertificateNotYetValid:
    case UrlErrorCode::CertificateRefused:
    case UrlErrorCode::TlsFailed:
        return true;
    default:
        return false;
    }
}

void addConnection(Facts& facts, const Probe& probe)
{
    if (const auto peer = probe.peer(); !peer.empty())
        facts.emplace_back("connected to", peer);
    if (!probe.tls().empty())
        facts.emplace_back("TLS", probe.tls());
    probe.addCertificates(facts);
}

} // namespace

ConnectionFacts probeConnection(const Url& url)
{
    const auto allowed = allowedAddress(url);
    if (!allowed)
        return {{}, allowed.error()};
    curl_global_init(CURL_GLOBAL_ALL);
    const auto& address = allowed.value();
    Probe probe(address, ServerTrust::Evaluate);
    ConnectionFacts facts;
    facts.refusal = probe.connect();
    facts.found
        = {{"server", address.origin()}, {"proxy", probe.proxy().empty() ? "none" : probe.proxy()},
            // The name goes to the proxy.
            {"addresses", probe.proxy().empty() ? addressesOf(address.host) : "left to the proxy"}};
    if (address.https)
        facts.found.emplace_back("authorities", authorities());
    if (!facts.refusal) {
        addConnection(facts.found, probe);
    } else if (concernsTls(*facts.refusal)) {
        Probe untrusting(address, ServerTrust::AcceptAny);
        (void)untrusting.connect();
        addConnection(facts.found, untrusting);
    }
    return facts;
}

} // namespace zarn::linux_backend
