#include "sockets.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace brenta::test::sockets {

namespace {

sockaddr_in Loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

}  // namespace

Socket Bind(int& port) {
    const int number = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = Loopback(0);
    socklen_t size = sizeof(address);
    auto* const general = reinterpret_cast<sockaddr*>(&address);
    if (bind(number, general, size) != 0 || getsockname(number, general, &size) != 0) return -1;
    port = ntohs(address.sin_port);
    return number;
}

bool Listen(Socket listener) {
    return listen(static_cast<int>(listener), 16) == 0;
}

Socket Accept(Socket listener) {
    return accept(static_cast<int>(listener), nullptr, nullptr);
}

Socket Connect(int port) {
    const int number = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = Loopback(port);
    if (connect(number, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) return number;
    close(number);
    return -1;
}

std::ptrdiff_t Receive(Socket connection, char* buffer, std::size_t size) {
    return recv(static_cast<int>(connection), buffer, size, 0);
}

std::ptrdiff_t Send(Socket connection, const char* bytes, std::size_t size) {
    return send(static_cast<int>(connection), bytes, size, MSG_NOSIGNAL);
}

void Close(Socket socket) {
    close(static_cast<int>(socket));
}

}  // namespace brenta::test::sockets
