// Connections on this machine's loopback.
#pragma once

#include <cstddef>
#include <cstdint>

namespace brenta::test::sockets {

using Socket = std::intptr_t;  // below 0: none

/// A socket bound to a free port.
Socket Bind(int& port);
bool Listen(Socket listener);
Socket Accept(Socket listener);
Socket Connect(int port);
/// How many bytes went over: 0 or below if the other side has gone.
std::ptrdiff_t Receive(Socket connection, char* buffer, std::size_t size);
std::ptrdiff_t Send(Socket connection, const char* bytes, std::size_t size);
void Close(Socket socket);

}  // namespace brenta::test::sockets
