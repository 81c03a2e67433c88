#include "Sender/ListeningSocket.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace velmora {

namespace {

/// As long as the system allows: a queue that overflows costs a television a second until it tries again.
constexpr int backlog = SOMAXCONN;

struct Address {
    sockaddr_storage storage{};
    socklen_t length = 0;
};

Address anyAddress(int family, quint16 port) {
    Address address;
    if (family == AF_INET6) {
        auto& ipv6 = reinterpret_cast<sockaddr_in6&>(address.storage);
        ipv6.sin6_family = AF_INET6;
        ipv6.sin6_addr = in6addr_any;
        ipv6.sin6_port = htons(port);
        address.length = sizeof(ipv6);
    } else {
        auto& ipv4 = reinterpret_cast<sockaddr_in&>(address.storage);
        ipv4.sin_family = AF_INET;
        ipv4.sin_addr.s_addr = htonl(INADDR_ANY);
        ipv4.sin_port = htons(port);
        address.length = sizeof(ipv4);
    }
    return address;
}

/// -1, with the reason in errno, when it cannot be had.
int listenOn(int family, quint16 port) {
    const int descriptor = ::socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0) return -1;
    const int yes = 1;
    const int no = 0;
    // Connections of an earlier run that linger do not keep the port from us.
    ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
    if (family == AF_INET6) ::setsockopt(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, &no, sizeof(no));
    const Address address = anyAddress(family, port);
    if (::bind(descriptor, reinterpret_cast<const sockaddr*>(&address.storage), address.length) == 0 &&
        ::listen(descriptor, backlog) == 0)
        return descriptor;
    const int reason = errno;
    ::close(descriptor);
    errno = reason;
    return -1;
}

}  // namespace

std::expected<ListeningSocket, QString> ListeningSocket::open(quint16 firstPort, quint16 lastPort) {
    int reason = 0;
    for (int port = firstPort; port <= lastPort; ++port) {
        int descriptor = listenOn(AF_INET6, quint16(port));
        if (descriptor < 0 && errno != EADDRINUSE) descriptor = listenOn(AF_INET, quint16(port));
        if (descriptor >= 0) return ListeningSocket(descriptor);
        reason = errno;
    }
    return std::unexpected(
        QStringLiteral("No port to serve the movie from could be opened: %1").arg(qt_error_string(reason)));
}

ListeningSocket::~ListeningSocket() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

ListeningSocket::ListeningSocket(ListeningSocket&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

ListeningSocket& ListeningSocket::operator=(ListeningSocket&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

quint16 ListeningSocket::port() const {
    sockaddr_storage storage{};
    socklen_t length = sizeof(storage);
    if (::getsockname(descriptor_, reinterpret_cast<sockaddr*>(&storage), &length) != 0) return 0;
    const bool isIPv6 = storage.ss_family == AF_INET6;
    return ntohs(isIPv6 ? reinterpret_cast<const sockaddr_in6&>(storage).sin6_port
                        : reinterpret_cast<const sockaddr_in&>(storage).sin_port);
}

}  // namespace velmora
