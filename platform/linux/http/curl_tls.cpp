// SPDX-License-Identifier: MIT
#include "platform/linux/http/curl_tls.h"

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <cstdlib>

namespace zarn::linux_backend {

namespace {

// Keys of at least 2048 bits (RSA) or 224 (elliptic curves), no SHA-1.
constexpr int securityLevel = 2;

bool hasAlternativeName(X509* certificate)
{
    auto* names = static_cast<GENERAL_NAMES*>(
        X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr));
    bool found = false;
    for (int i = 0; i < sk_GENERAL_NAME_num(names); ++i) {
        const int type = sk_GENERAL_NAME_value(names, i)->type;
        found = found || type == GEN_DNS || type == GEN_IPADD;
    }
    GENERAL_NAMES_free(names);
    return found;
}

// libcurl falls back to the common name of a certificate without alternative names. That name is
// not subject to the name constraints of an authority, so modern clients ignore it.
int verifyHasName(int good, X509_STORE_CTX* store)
{
    if (!good) {
        // libcurl reports the oldest error. A signature that another key made leaves one of the
        // signature's own, which says nothing about the certificate.
        ERR_clear_error();
        return 0;
    }
    if (X509_STORE_CTX_get_error_depth(store) != 0)
        return good;
    if (hasAlternativeName(X509_STORE_CTX_get_current_cert(store)))
        return 1;
    X509_STORE_CTX_set_error(store, X509_V_ERR_HOSTNAME_MISMATCH);
    return 0;
}

void tighten(SSL_CTX* context)
{
    // libcurl writes the keys of every connection to the file that SSLKEYLOGFILE names.
    SSL_CTX_set_keylog_callback(context, nullptr);
    SSL_CTX_set_options(context, SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION);
}

CURLcode tightenVerified(CURL*, void* context, void*)
{
    auto* tls = static_cast<SSL_CTX*>(context);
    tighten(tls);
    SSL_CTX_set_security_level(tls, securityLevel);
    SSL_CTX_set_verify(tls, SSL_VERIFY_PEER, verifyHasName);
    return CURLE_OK;
}

CURLcode tightenUnverified(CURL*, void* context, void*)
{
    tighten(static_cast<SSL_CTX*>(context));
    return CURLE_OK;
}

bool setUpStore(CURL* handle)
{
    const char* file = secure_getenv("SSL_CERT_FILE");
    const char* folder = secure_getenv("SSL_CERT_DIR");
    bool good = true;
    if (file && *file)
        good = curl_easy_setopt(handle, CURLOPT_CAINFO, file) == CURLE_OK
            && curl_easy_setopt(handle, CURLOPT_PROXY_CAINFO, file) == CURLE_OK;
    if (folder && *folder)
        good = good && curl_easy_setopt(handle, CURLOPT_CAPATH, folder) == CURLE_OK
            && curl_easy_setopt(handle, CURLOPT_PROXY_CAPATH, folder) == CURLE_OK;
    return good;
}

} // namespace

bool setUpTls(CURL* handle, ServerTrust trust)
{
    const long version = CURL_SSLVERSION_TLSv1_2;
    const bool verify = trust == ServerTrust::Evaluate;
    return curl_easy_setopt(handle, CURLOPT_SSLVERSION, version) == CURLE_OK
        && curl_easy_setopt(handle, CURLOPT_PROXY_SSLVERSION, version) == CURLE_OK
        && curl_easy_setopt(handle, CURLOPT_SSL_SESSIONID_CACHE, 0L) == CURLE_OK
        && curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, verify ? 1L : 0L) == CURLE_OK
        && curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, verify ? 2L : 0L) == CURLE_OK
        && curl_easy_setopt(
               handle, CURLOPT_SSL_CTX_FUNCTION, verify ? tightenVerified : tightenUnverified)
        == CURLE_OK
        && setUpStore(handle);
}

} // namespace zarn::linux_backend
