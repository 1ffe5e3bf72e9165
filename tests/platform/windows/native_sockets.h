#pragma once

#include <winsock2.h>

namespace brenta::test::sockets {

using Native = SOCKET;
using Size = int;
using AddressSize = int;

inline Native New() {
    static WSADATA data;
    static const int started = WSAStartup(MAKEWORD(2, 2), &data);
    return started == 0 ? socket(AF_INET, SOCK_STREAM, 0) : INVALID_SOCKET;
}
inline void CloseNative(Native socket) {
    closesocket(socket);
}
inline constexpr int kNoSignal = 0;

}  // namespace brenta::test::sockets
