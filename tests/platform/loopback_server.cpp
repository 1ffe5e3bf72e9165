#include "loopback_server.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

namespace brenta::test {

namespace {

/// A socket bound to a free port of the loopback.
int BindLoopback(int& port) {
    const int number = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    EXPECT_EQ(bind(number, reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_EQ(getsockname(number, reinterpret_cast<sockaddr*>(&address), &size), 0);
    port = ntohs(address.sin_port);
    return number;
}

bool Send(int connection, const std::string& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = send(connection, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) return false;
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace

Reply Page(const std::string& body) {
    return {"HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body};
}

int FreePort() {
    int port = 0;
    close(BindLoopback(port));
    return port;
}

LoopbackServer::LoopbackServer(std::map<std::string, Reply> replies) : m_replies(std::move(replies)) {
    m_listener = BindLoopback(m_port);
    EXPECT_EQ(listen(m_listener, 16), 0);
    m_thread = std::thread([this] { Serve(); });
}

LoopbackServer::~LoopbackServer() {
    m_stop = true;
    shutdown(m_listener, SHUT_RDWR);
    m_thread.join();
    close(m_listener);
}

Texts LoopbackServer::Requests() const {
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

void LoopbackServer::Serve() {
    while (!m_stop) {
        const int connection = accept(m_listener, nullptr, nullptr);
        if (connection < 0) return;
        Answer(connection);
        close(connection);
    }
}

void LoopbackServer::Answer(int connection) {
    std::string head;
    char buffer[4096];
    while (head.find("\r\n\r\n") == std::string::npos) {
        const ssize_t count = recv(connection, buffer, sizeof(buffer), 0);
        if (count <= 0) return;
        head.append(buffer, static_cast<std::size_t>(count));
    }
    {
        const std::lock_guard lock(m_mutex);
        m_requests.push_back(head);
    }
    const std::size_t start = head.find(' ') + 1;
    const auto found = m_replies.find(head.substr(start, head.find(' ', start) - start));
    if (found == m_replies.end()) {
        Send(connection, "HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\nnone");
        return;
    }
    bool isTaken = Send(connection, found->second.bytes);
    while (isTaken && found->second.then != Reply::Close && !m_stop) {
        const bool isDrip = found->second.then == Reply::Drip;
        if (isDrip) std::this_thread::sleep_for(std::chrono::milliseconds(100));
        isTaken = Send(connection, std::string(isDrip ? 1 : 8192, 'x'));
    }
}

}  // namespace brenta::test
