#include "sockets.h"

#include <native_sockets.h>

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
    const Native number = New();
    sockaddr_in address = Loopback(0);
    AddressSize size = sizeof(address);
    auto* const general = reinterpret_cast<sockaddr*>(&address);
    if (bind(number, general, size) != 0 || getsockname(number, general, &size) != 0) return -1;
    port = ntohs(address.sin_port);
    return static_cast<Socket>(number);
}

bool Listen(Socket listener) {
    return listen(static_cast<Native>(listener), 16) == 0;
}

Socket Accept(Socket listener) {
    return static_cast<Socket>(accept(static_cast<Native>(listener), nullptr, nullptr));
}

Socket Connect(int port) {
    const Native number = New();
    const sockaddr_in address = Loopback(port);
    const auto socket = static_cast<Socket>(number);
    if (connect(number, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) return socket;
    Close(socket);
    return -1;
}

std::ptrdiff_t Receive(Socket connection, char* buffer, std::size_t size) {
    return recv(static_cast<Native>(connection), buffer, static_cast<Size>(size), 0);
}

std::ptrdiff_t Send(Socket connection, const char* bytes, std::size_t size) {
    return send(static_cast<Native>(connection), bytes, static_cast<Size>(size), kNoSignal);
}

void Close(Socket socket) {
    CloseNative(static_cast<Native>(socket));
}

}  // namespace brenta::test::sockets
