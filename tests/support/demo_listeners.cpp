// SPDX-License-Identifier: MIT
#include "tests/support/demo_listeners.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace zarn::demo {

namespace {

struct Address {
    sockaddr_storage storage{};
    socklen_t length = 0;
};

// Nothing for a text that is not a loopback address.
Address loopbackAddress(const std::string& text, std::uint16_t port)
{
    Address address;
    auto* v4 = reinterpret_cast<sockaddr_in*>(&address.storage);
    auto* v6 = reinterpret_cast<sockaddr_in6*>(&address.storage);
    if (inet_pton(AF_INET, text.c_str(), &v4->sin_addr) == 1) {
        if (ntohl(v4->sin_addr.s_addr) >> 24U != 127)
            return {};
        v4->sin_family = AF_INET;
        v4->sin_port = htons(port);
        address.length = sizeof(sockaddr_in);
    } else if (inet_pton(AF_INET6, text.c_str(), &v6->sin6_addr) == 1) {
        if (!IN6_IS_ADDR_LOOPBACK(&v6->sin6_addr))
            return {};
        v6->sin6_family = AF_INET6;
        v6->sin6_port = htons(port);
        address.length = sizeof(sockaddr_in6);
    }
    return address;
}

std::uint16_t boundPort(int socket)
{
    sockaddr_storage storage{};
    socklen_t length = sizeof storage;
    getsockname(socket, reinterpret_cast<sockaddr*>(&storage), &length);
    return ntohs(storage.ss_family == AF_INET
            ? reinterpret_cast<sockaddr_in*>(&storage)->sin_port
            : reinterpret_cast<sockaddr_in6*>(&storage)->sin6_port);
}

// A listening socket, or -1 with errno.
int listenOn(const Address& address)
{
    const int family = address.storage.ss_family;
    const int descriptor = socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        return -1;
    const int on = 1;
    setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (family == AF_INET6)
        setsockopt(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof on);
    const auto* name = reinterpret_cast<const sockaddr*>(&address.storage);
    if (bind(descriptor, name, address.length) == 0 && listen(descriptor, 64) == 0)
        return descriptor;
    const int reason = errno;
    ::close(descriptor);
    errno = reason;
    return -1;
}

} // namespace

void closeListeners(std::vector<Listener>& listeners)
{
    for (const auto& listener : listeners)
        ::close(listener.socket);
    listeners.clear();
}

bool listenOnAll(const std::vector<std::string>& addresses, std::uint16_t wanted, bool tls,
    std::vector<Listener>& listeners, std::string& error)
{
    for (int attempt = 0; attempt < 16; ++attempt) {
        std::vector<Listener> made;
        std::uint16_t port = wanted;
        bool clash = false;
        for (const auto& text : addresses) {
            const Address address = loopbackAddress(text, port);
            if (address.length == 0) {
                error = text + " is not a loopback address";
                closeListeners(made);
                return false;
            }
            const int socket = listenOn(address);
            const bool noSuchFamily = errno == EADDRNOTAVAIL || errno == EAFNOSUPPORT;
            if (socket < 0 && noSuchFamily && !made.empty())
                continue;
            if (socket < 0) {
                error = text + " port " + std::to_string(port) + ": " + std::strerror(errno);
                clash = true;
                break;
            }
            port = boundPort(socket);
            made.push_back({socket, port, tls});
        }
        if (!clash) {
            listeners.insert(listeners.end(), made.begin(), made.end());
            return true;
        }
        closeListeners(made);
        if (wanted != 0)
            return false;
    }
    return false;
}

} // namespace zarn::demo
