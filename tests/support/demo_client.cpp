// SPDX-License-Identifier: MIT
#include "tests/support/demo_client.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/ssl.h>

#include <array>
#include <memory>

namespace zarn::demo {

std::optional<TlsAnswer> askTrustingEverybody(std::uint16_t port, const std::string& request)
{
    const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(
        SSL_CTX_new(TLS_client_method()), SSL_CTX_free);
    SSL_CTX_set_security_level(context.get(), 0);
    SSL_CTX_set_min_proto_version(context.get(), TLS1_VERSION);
    SSL_CTX_set_verify(context.get(), SSL_VERIFY_NONE, nullptr);
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> connection(
        BIO_new_ssl_connect(context.get()), BIO_free_all);
    const auto address = "127.0.0.1:" + std::to_string(port);
    BIO_set_conn_hostname(connection.get(), address.c_str());
    SSL* ssl = nullptr;
    BIO_get_ssl(connection.get(), &ssl);
    std::optional<TlsAnswer> answer;
    if (ssl && BIO_do_connect(connection.get()) == 1 && BIO_do_handshake(connection.get()) == 1
        && BIO_write(connection.get(), request.data(), static_cast<int>(request.size()))
            == static_cast<int>(request.size())) {
        answer = TlsAnswer{SSL_get_version(ssl), ""};
        std::array<char, 4096> buffer{};
        int count = 0;
        while ((count = BIO_read(connection.get(), buffer.data(), static_cast<int>(buffer.size())))
            > 0)
            answer->text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    ERR_clear_error();
    return answer;
}

} // namespace zarn::demo
