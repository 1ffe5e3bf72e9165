#include "loopback_server.h"

#include <chrono>

#include "sockets.h"

namespace brenta::test {

namespace {

bool SendAll(sockets::Socket connection, const std::string& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const std::ptrdiff_t count = sockets::Send(connection, bytes.data() + sent, bytes.size() - sent);
        if (count <= 0) return false;
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace

Reply Page(const std::string& body) {
    return {"HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) +
            "\r\n\r\n" + body};
}

int FreePort() {
    int port = 0;
    sockets::Close(sockets::Bind(port));
    return port;
}

LoopbackServer::LoopbackServer(std::map<std::string, Reply> replies) : m_replies(std::move(replies)) {
    m_listener = sockets::Bind(m_port);
    EXPECT_TRUE(sockets::Listen(m_listener));
    m_thread = std::thread([this] { Serve(); });
}

LoopbackServer::~LoopbackServer() {
    m_stop = true;
    sockets::Close(sockets::Connect(m_port));  // ends the waiting for one
    m_thread.join();
    for (std::thread& answer : m_answers)
        answer.join();
    sockets::Close(m_listener);
}

Texts LoopbackServer::Requests() const {
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

void LoopbackServer::Serve() {
    while (!m_stop) {
        const sockets::Socket connection = sockets::Accept(m_listener);
        if (connection < 0) return;
        m_answers.emplace_back([this, connection] {
            if (!m_stop) Answer(connection);
            sockets::Close(connection);
        });
    }
}

void LoopbackServer::Answer(sockets::Socket connection) {
    std::string head;
    char buffer[4096];
    while (head.find("\r\n\r\n") == std::string::npos) {
        const std::ptrdiff_t count = sockets::Receive(connection, buffer, sizeof(buffer));
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
        SendAll(connection, "HTTP/1.1 404 Not Found\r\nConnection: close\r\nContent-Length: 4\r\n\r\nnone");
        return;
    }
    if (head.find(found->second.wanted) == std::string::npos) {
        SendAll(connection,
                "HTTP/1.1 407 Login\r\nProxy-Authenticate: Basic realm=\"x\"\r\n"
                "Connection: close\r\nContent-Length: 0\r\n\r\n");
        return;
    }
    bool isTaken = SendAll(connection, found->second.bytes);
    while (isTaken && found->second.then != Reply::Close && !m_stop) {
        const bool isDrip = found->second.then == Reply::Drip;
        if (isDrip) std::this_thread::sleep_for(std::chrono::milliseconds(100));
        isTaken = SendAll(connection, std::string(isDrip ? 1 : 8192, 'x'));
    }
}

}  // namespace brenta::test
