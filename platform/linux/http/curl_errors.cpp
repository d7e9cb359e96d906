// SPDX-License-Identifier: MIT
#include "platform/linux/http/curl_errors.h"

#include <openssl/x509_vfy.h>

#include <cerrno>

namespace zarn::linux_backend {

namespace {

long longInfo(CURL* handle, CURLINFO which)
{
    long value = 0;
    curl_easy_getinfo(handle, which, &value);
    return value;
}

UrlErrorCode connectErrorOf(CURL* handle)
{
    switch (longInfo(handle, CURLINFO_OS_ERRNO)) {
    case ECONNREFUSED:
        return UrlErrorCode::ConnectionRefused;
    case ETIMEDOUT:
        return UrlErrorCode::TimedOut;
    default:
        return UrlErrorCode::CannotConnect;
    }
}

UrlErrorCode codeOf(CURL* handle, CURLcode result)
{
    // A proxy that answers "CONNECT" with anything but 200.
    const long connectStatus = longInfo(handle, CURLINFO_HTTP_CONNECTCODE);
    if (connectStatus != 0 && connectStatus != 200)
        return UrlErrorCode::ProxyFailed;
    switch (result) {
    case CURLE_COULDNT_RESOLVE_HOST:
        return UrlErrorCode::HostNotFound;
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_PROXY:
        return UrlErrorCode::ProxyFailed;
    case CURLE_COULDNT_CONNECT:
        return connectErrorOf(handle);
    case CURLE_OPERATION_TIMEDOUT:
        return UrlErrorCode::TimedOut;
    case CURLE_PEER_FAILED_VERIFICATION:
        return certificateErrorOf(longInfo(handle, CURLINFO_SSL_VERIFYRESULT));
    case CURLE_SSL_CACERT_BADFILE:
        return UrlErrorCode::UnknownAuthority;
    case CURLE_SSL_CONNECT_ERROR:
        return UrlErrorCode::TlsFailed;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
        return UrlErrorCode::ConnectionLost;
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
        return UrlErrorCode::BadReply;
    default:
        return UrlErrorCode::Other;
    }
}

} // namespace

UrlErrorCode certificateErrorOf(long reason)
{
    switch (reason) {
    // libcurl compares names itself and leaves the reason unspecified.
    case X509_V_ERR_UNSPECIFIED:
    case X509_V_ERR_HOSTNAME_MISMATCH:
    case X509_V_ERR_IP_ADDRESS_MISMATCH:
        return UrlErrorCode::WrongName;
    case X509_V_ERR_CERT_HAS_EXPIRED:
        return UrlErrorCode::CertificateExpired;
    case X509_V_ERR_CERT_NOT_YET_VALID:
        return UrlErrorCode::CertificateNotYetValid;
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
    case X509_V_ERR_CERT_UNTRUSTED:
    // An authority of that name is trusted, and has another key.
    case X509_V_ERR_CERT_SIGNATURE_FAILURE:
        return UrlErrorCode::UnknownAuthority;
    default:
        return UrlErrorCode::CertificateRefused;
    }
}

UrlError urlErrorOf(CURL* handle, CURLcode result, const char* detail)
{
    return {codeOf(handle, result), *detail ? detail : curl_easy_strerror(result)};
}

} // namespace zarn::linux_backend
