// SPDX-License-Identifier: MIT
#include "api/failure_cause.h"

#include <algorithm>

namespace zarn {

namespace {

std::string_view authorityOf(std::string_view serverUrl)
{
    if (const auto scheme = serverUrl.find("://"); scheme != std::string_view::npos)
        serverUrl.remove_prefix(scheme + 3);
    serverUrl = serverUrl.substr(0, serverUrl.find_first_of("/?#\\"));
    // A user name and a password may precede the host.
    if (const auto at = serverUrl.rfind('@'); at != std::string_view::npos)
        serverUrl.remove_prefix(at + 1);
    return serverUrl;
}

std::size_t lengthOfHost(std::string_view authority)
{
    const auto bracket = authority.starts_with('[') ? authority.find(']') : std::string_view::npos;
    return bracket == std::string_view::npos ? std::min(authority.find(':'), authority.size())
                                             : bracket + 1;
}

// Not within a character of several bytes.
std::size_t boundaryBefore(std::string_view text, std::size_t at)
{
    while (at > 0 && (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U)
        --at;
    return at;
}

std::string bounded(std::string_view text, std::size_t longest)
{
    if (text.size() <= longest)
        return std::string(text);
    const auto head = text.substr(0, boundaryBefore(text, longest / 2));
    const auto tail = text.substr(boundaryBefore(text, text.size() - longest / 2));
    return std::string(head) + "\xE2\x80\xA6" + std::string(tail);
}

std::string portName(std::string_view serverUrl)
{
    const auto authority = authorityOf(serverUrl);
    const auto rest = authority.substr(lengthOfHost(authority));
    if (rest.size() > 1)
        return std::string(rest.substr(1));
    return serverUrl.starts_with("http:") ? "80" : "443";
}

std::string causeOfRedirect(const UrlError& refused, const std::string& peer)
{
    switch (refused.code) {
    case UrlErrorCode::RedirectElsewhere:
        return peer + " redirects to " + bounded(refused.text, 60)
            + ", where credentials are not sent";
    case UrlErrorCode::RedirectToHttp:
        return peer + " redirects to http, which is not secure";
    case UrlErrorCode::TooManyRedirects:
        return peer + " redirects too many times";
    default:
        return peer + " redirects to an address that cannot be used";
    }
}

} // namespace

std::string peerName(std::string_view serverUrl)
{
    constexpr std::size_t longest = 40;
    const auto authority = authorityOf(serverUrl);
    const auto host = authority.substr(0, lengthOfHost(authority));
    return host.empty() ? "the server" : bounded(host, longest);
}

std::string causeOfMalformedUrl(std::string_view endpoint)
{
    return "The server URL holds " + Url::problemIn(endpoint).value_or("what no URL can hold");
}

std::string causeOfError(const UrlError& error, std::string_view serverUrl)
{
    const auto peer = peerName(serverUrl);
    switch (error.code) {
    case UrlErrorCode::BadUrl:
        // The endpoint's text loses a slash there.
        if (serverUrl.find("//api") != std::string_view::npos)
            return "A server whose name begins with \"api\" cannot be reached by that name";
        return "The server URL must have the form https://host:port";
    case UrlErrorCode::InsecureHttp:
        return "http is only for servers on this computer; use https for " + peer;
    case UrlErrorCode::HostNotFound:
        return "The name " + peer + " was not found; check its spelling and the network";
    case UrlErrorCode::ConnectionRefused:
        return peer + " refused the connection on port " + portName(serverUrl);
    case UrlErrorCode::CannotConnect:
        return peer + " cannot be reached from here: " + error.text;
    case UrlErrorCode::ProxyFailed:
        return "The proxy did not connect to " + peer + ": " + error.text;
    case UrlErrorCode::TimedOut:
        return peer + " did not answer in time";
    case UrlErrorCode::UnknownAuthority:
        return "The certificate of " + peer + " is from an unknown authority";
    case UrlErrorCode::WrongName:
        return "The certificate of " + peer + " is for another name";
    case UrlErrorCode::CertificateExpired:
        return "The certificate of " + peer + " has expired";
    case UrlErrorCode::CertificateNotYetValid:
        return "The certificate of " + peer + " is not valid yet; check the clock";
    case UrlErrorCode::CertificateRefused:
        return "The certificate of " + peer + " is not trusted: " + error.text;
    case UrlErrorCode::TlsFailed:
        return "No secure connection to " + peer + ": " + error.text;
    case UrlErrorCode::ConnectionLost:
        return peer + " ended the connection before its reply was complete";
    case UrlErrorCode::BadReply:
        return peer + " did not reply in HTTP; check the port";
    case UrlErrorCode::TooLarge:
        return "The reply of " + peer + " is too large";
    default:
        return "No request to " + peer + ": " + error.text;
    }
}

std::string causeOfStatus(const HttpResponse& response, std::string_view serverUrl)
{
    const auto peer = peerName(serverUrl);
    if (response.refusedRedirect)
        return causeOfRedirect(*response.refusedRedirect, peer);
    const auto status = " (HTTP " + std::to_string(response.status) + ")";
    if (response.status == 404)
        return peer + " has no Zarn Pro service at this address" + status;
    if (response.status >= 500)
        return peer + " has a problem of its own" + status;
    return peer + " did not grant the request" + status;
}

std::string causeOfTokenStatus(const HttpResponse& response, std::string_view serverUrl)
{
    if (response.status == 401)
        return peerName(serverUrl) + " does not accept these credentials (HTTP 401)";
    return causeOfStatus(response, serverUrl);
}

std::string causeOfBadJson(std::string_view serverUrl)
{
    return "The reply of " + peerName(serverUrl) + " is not JSON; check the address and port";
}

std::string causeOfMissingVersion(std::string_view serverUrl)
{
    return peerName(serverUrl) + " did not report its version";
}

std::string causeOfBadVersion(std::string_view version, std::string_view serverUrl)
{
    if (version.empty())
        return peerName(serverUrl) + " reported an empty version";
    return "The version \"" + bounded(version, 30) + "\" of " + peerName(serverUrl)
        + " was not understood";
}

} // namespace zarn
