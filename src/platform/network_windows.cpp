// What the system knows of the network: the internet's own settings for programs (WinINet) and Winsock.
#include <winsock2.h>
#include <ws2tcpip.h>

#include <wininet.h>

#include <memory>

#include "platform/network_backend.h"
#include "platform/system_message_windows.h"

namespace brenta {

namespace {

/// Winsock while it is needed; the system counts who needs it.
class Winsock {
 public:
    Winsock() : m_isReady(WSAStartup(MAKEWORD(2, 2), &m_data) == 0) {}
    ~Winsock() {
        if (m_isReady) WSACleanup();
    }
    Winsock(const Winsock&) = delete;
    Winsock& operator=(const Winsock&) = delete;

    bool IsReady() const { return m_isReady; }

 private:
    WSADATA m_data{};
    const bool m_isReady;
};

struct FreeAddresses {
    void operator()(addrinfo* addresses) const { freeaddrinfo(addresses); }
};

}  // namespace

bool PlatformResolve(const std::string& host, std::string& address) {
    const Winsock winsock;
    if (!winsock.IsReady()) return false;
    addrinfo hints = {};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) return false;
    const std::unique_ptr<addrinfo, FreeAddresses> addresses(found);
    char text[INET_ADDRSTRLEN] = {};
    const auto* first = reinterpret_cast<const sockaddr_in*>(addresses->ai_addr);
    if (!inet_ntop(AF_INET, &first->sin_addr, text, sizeof(text))) return false;
    address = text;
    return true;
}

bool PlatformIsOnline() {
    // The system also answers no where it knows of a way outward that it has not seen at work; the flags then
    // name the way.
    constexpr DWORD kWays = INTERNET_CONNECTION_LAN | INTERNET_CONNECTION_PROXY;
    DWORD state = 0;
    const bool isConnected = InternetGetConnectedState(&state, 0) || (state & kWays) != 0;
    return isConnected && (state & INTERNET_CONNECTION_OFFLINE) == 0;
}

bool PlatformCanConnect(const std::string& host, int port, int) {
    DWORD state = 0;
    static_cast<void>(InternetGetConnectedState(&state, 0));
    // Through a proxy there may be no connection to the server itself.
    if ((state & INTERNET_CONNECTION_PROXY) != 0) return true;
    if (InternetAttemptConnect(0) != ERROR_SUCCESS) return false;
    const bool isNumeric = host.find(':') != std::string::npos;
    const std::string url =
        "http://" + (isNumeric ? "[" + host + "]" : host) + ":" + std::to_string(port) + "/";
    return InternetCheckConnectionA(url.c_str(), FLAG_ICC_FORCE_CONNECTION, 0) != 0;
}

const int kErrorNetworkUnreachable = ERROR_NETWORK_UNREACHABLE;

std::string PlatformErrorText(int code) {
    return SystemMessage(static_cast<unsigned long>(code), L"winhttp.dll");
}

}  // namespace brenta
