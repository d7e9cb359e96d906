// SPDX-License-Identifier: MIT
#include "tests/support/demo_certificates.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <arpa/inet.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace zarn::demo {

namespace {

using Bio = std::unique_ptr<BIO, decltype(&BIO_free_all)>;
using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using X509Pointer = std::unique_ptr<X509, decltype(&X509_free)>;

template <typename T> T check(T result, const char* what)
{
    if (result)
        return result;
    std::fprintf(stderr, "demonstration certificate: %s failed\n", what);
    ERR_print_errors_fp(stderr);
    std::abort();
}

Key makeKey(KeyKind kind)
{
    EVP_PKEY* key = nullptr;
    if (kind == KeyKind::EcP256)
        key = EVP_EC_gen("P-256");
    else
        key = EVP_RSA_gen(kind == KeyKind::Rsa1024 ? 1024U : 2048U);
    return {check(key, "key generation"), EVP_PKEY_free};
}

std::string contents(const Bio& bio)
{
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &data);
    return {data, static_cast<std::size_t>(size)};
}

Bio reader(const std::string& text)
{
    return {BIO_new_mem_buf(text.data(), static_cast<int>(text.size())), BIO_free_all};
}

void setNames(X509* certificate, const CertificateOptions& options, X509* issuer)
{
    X509_NAME* name = X509_get_subject_name(certificate);
    const auto* text = reinterpret_cast<const unsigned char*>(options.commonName.c_str());
    check(X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, text, -1, -1, 0), "subject name");
    check(X509_set_issuer_name(certificate, issuer ? X509_get_subject_name(issuer) : name),
        "issuer name");
}

std::string alternativeNames(const std::vector<std::string>& names)
{
    std::string text;
    for (const auto& name : names) {
        unsigned char address[16];
        const bool isAddress = inet_pton(AF_INET, name.c_str(), address) == 1
            || inet_pton(AF_INET6, name.c_str(), address) == 1;
        text += (text.empty() ? "" : ",") + std::string(isAddress ? "IP:" : "DNS:") + name;
    }
    return text;
}

void addExtension(
    X509* certificate, X509* issuer, const std::string& name, const std::string& value)
{
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    X509V3_set_ctx_nodb(&context);
    X509_EXTENSION* extension
        = check(X509V3_EXT_nconf(nullptr, &context, name.c_str(), value.c_str()), name.c_str());
    check(X509_add_ext(certificate, extension, -1), "adding an extension");
    X509_EXTENSION_free(extension);
}

void setSerialNumber(X509* certificate)
{
    unsigned char bytes[8];
    check(RAND_bytes(bytes, sizeof bytes) == 1, "random bytes");
    std::uint64_t number = 0;
    for (const unsigned char byte : bytes)
        number = (number << 8U) | byte;
    check(ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), number >> 1U), "serial");
}

} // namespace

CertificateOptions authorityOptions(std::string commonName)
{
    CertificateOptions options;
    options.commonName = std::move(commonName);
    options.extensions = {{"basicConstraints", "critical,CA:TRUE"},
        {"keyUsage", "critical,keyCertSign,cRLSign"}, {"subjectKeyIdentifier", "hash"}};
    return options;
}

Certificate makeCertificate(const CertificateOptions& options, const Certificate* issuer)
{
    const Key key = makeKey(options.key);
    const X509Pointer certificate(check(X509_new(), "X509_new"), X509_free);
    X509Pointer issuerCertificate(nullptr, X509_free);
    Key issuerKey(nullptr, EVP_PKEY_free);
    if (issuer) {
        const Bio certificateBio = reader(issuer->certificatePem);
        const Bio keyBio = reader(issuer->keyPem);
        issuerCertificate.reset(
            check(PEM_read_bio_X509(certificateBio.get(), nullptr, nullptr, nullptr), "issuer"));
        issuerKey.reset(
            check(PEM_read_bio_PrivateKey(keyBio.get(), nullptr, nullptr, nullptr), "issuer key"));
    }
    X509* signer = issuer ? issuerCertificate.get() : certificate.get();

    X509_set_version(certificate.get(), X509_VERSION_3);
    setSerialNumber(certificate.get());
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), options.notBefore.count());
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), options.notAfter.count());
    X509_set_pubkey(certificate.get(), key.get());
    setNames(certificate.get(), options, issuerCertificate.get());
    if (!options.names.empty())
        addExtension(certificate.get(), signer, "subjectAltName", alternativeNames(options.names));
    for (const auto& [name, value] : options.extensions)
        addExtension(certificate.get(), signer, name, value);
    check(X509_sign(certificate.get(), issuer ? issuerKey.get() : key.get(),
              EVP_get_digestbyname(options.digest.c_str())),
        "signing");

    const Bio certificateOut(BIO_new(BIO_s_mem()), BIO_free_all);
    const Bio keyOut(BIO_new(BIO_s_mem()), BIO_free_all);
    check(PEM_write_bio_X509(certificateOut.get(), certificate.get()), "writing");
    check(PEM_write_bio_PrivateKey(keyOut.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr),
        "writing the key");
    return {contents(certificateOut), contents(keyOut)};
}

} // namespace zarn::demo
