#include "sockets.h"

#include <winsock2.h>

namespace brenta::test::sockets {

namespace {

sockaddr_in Loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

Socket New() {
    static WSADATA data;
    static const int started = WSAStartup(MAKEWORD(2, 2), &data);
    return started == 0 ? static_cast<Socket>(socket(AF_INET, SOCK_STREAM, 0)) : -1;
}

SOCKET Native(Socket socket) {
    return static_cast<SOCKET>(socket);
}

}  // namespace

Socket Bind(int& port) {
    const Socket number = New();
    sockaddr_in address = Loopback(0);
    int size = sizeof(address);
    auto* const general = reinterpret_cast<sockaddr*>(&address);
    if (bind(Native(number), general, size) != 0 || getsockname(Native(number), general, &size) != 0)
        return -1;
    port = ntohs(address.sin_port);
    return number;
}

bool Listen(Socket listener) {
    return listen(Native(listener), 16) == 0;
}

Socket Accept(Socket listener) {
    return static_cast<Socket>(accept(Native(listener), nullptr, nullptr));
}

Socket Connect(int port) {
    const Socket number = New();
    const sockaddr_in address = Loopback(port);
    if (connect(Native(number), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0)
        return number;
    Close(number);
    return -1;
}

std::ptrdiff_t Receive(Socket connection, char* buffer, std::size_t size) {
    return recv(Native(connection), buffer, static_cast<int>(size), 0);
}

std::ptrdiff_t Send(Socket connection, const char* bytes, std::size_t size) {
    return send(Native(connection), bytes, static_cast<int>(size), 0);
}

void Close(Socket socket) {
    closesocket(Native(socket));
}

}  // namespace brenta::test::sockets
