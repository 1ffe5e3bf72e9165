#pragma once

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace brenta::test::sockets {

using Native = int;
using Size = std::size_t;
using AddressSize = socklen_t;

inline Native New() {
    return socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
}
inline void CloseNative(Native socket) {
    close(socket);
}
inline constexpr int kNoSignal = MSG_NOSIGNAL;

}  // namespace brenta::test::sockets
