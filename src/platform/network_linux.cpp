#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>
#include <system_error>

#include "platform/network_backend.h"
#include "platform/routes.h"

namespace brenta {

namespace {

using Clock = std::chrono::steady_clock;

struct FreeAddresses {
    void operator()(addrinfo* addresses) const { freeaddrinfo(addresses); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

Addresses FindAddresses(const std::string& host, int family) {
    addrinfo hints = {};
    hints.ai_family = family;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    return Addresses(getaddrinfo(host.c_str(), nullptr, &hints, &found) == 0 ? found : nullptr);
}

class Socket {
 public:
    explicit Socket(int family) : m_handle(socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {}
    ~Socket() {
        if (m_handle >= 0) close(m_handle);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    bool Connect(const sockaddr* address, socklen_t size, Clock::time_point end) const {
        if (connect(m_handle, address, size) == 0) return true;
        return errno == EINPROGRESS && WaitUntilWritable(end) && PendingError() == 0;
    }

 private:
    bool WaitUntilWritable(Clock::time_point end) const {
        while (true) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
            pollfd self = {m_handle, POLLOUT, 0};
            const int ready = poll(&self, 1, static_cast<int>(std::max<decltype(left)>(left, 0)));
            if (ready >= 0 || errno != EINTR) return ready > 0;
        }
    }

    int PendingError() const {
        int error = 0;
        socklen_t size = sizeof error;
        return getsockopt(m_handle, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
    }

    int m_handle;
};

bool CanConnectTo(const addrinfo& address, int port, Clock::time_point end) {
    sockaddr_storage storage = {};
    if (address.ai_addrlen > sizeof storage) return false;
    std::memcpy(&storage, address.ai_addr, address.ai_addrlen);
    const in_port_t networkPort = htons(static_cast<std::uint16_t>(port));
    if (address.ai_family == AF_INET)
        reinterpret_cast<sockaddr_in&>(storage).sin_port = networkPort;
    else if (address.ai_family == AF_INET6)
        reinterpret_cast<sockaddr_in6&>(storage).sin6_port = networkPort;
    return Socket(address.ai_family)
        .Connect(reinterpret_cast<const sockaddr*>(&storage), address.ai_addrlen, end);
}

/// A file of the system's that tells no size; "" if it cannot be read.
std::string ReadTable(const char* path) {
    std::string text;
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    char buffer[4096];
    for (ssize_t length = 0; file >= 0 && (length = read(file, buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<std::size_t>(length));
    if (file >= 0) close(file);
    return text;
}

}  // namespace

bool PlatformResolve(const std::string& host, std::string& address) {
    const Addresses addresses = FindAddresses(host, AF_INET);
    if (!addresses) return false;
    char text[INET_ADDRSTRLEN] = {};
    const auto* first = reinterpret_cast<const sockaddr_in*>(addresses->ai_addr);
    if (!inet_ntop(AF_INET, &first->sin_addr, text, sizeof text)) return false;
    address = text;
    return true;
}

bool PlatformCanConnect(const std::string& host, int port, int seconds) {
    const Addresses addresses = FindAddresses(host, AF_UNSPEC);
    const auto end = Clock::now() + std::chrono::seconds(seconds);
    for (const addrinfo* address = addresses.get(); address; address = address->ai_next) {
        if (CanConnectTo(*address, port, end)) return true;
    }
    return false;
}

const int kErrorNetworkUnreachable = ENETUNREACH;

std::string PlatformErrorText(int code) {
    const std::error_category& system = std::system_category();
    const bool isKnown = system.default_error_condition(code).category() == std::generic_category();
    return isKnown ? system.message(code) : std::string();
}

bool PlatformIsOnline() {
    return HasDefaultRoute(ReadTable("/proc/net/route")) ||
           HasDefaultRoute(ReadTable("/proc/net/ipv6_route"));
}

}  // namespace brenta
