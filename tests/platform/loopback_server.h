// A web server on this machine's loopback that misbehaves as it is told.
#pragma once

#include <atomic>
#include <map>
#include <mutex>

#include "sockets.h"
#include "test_support.h"

namespace brenta::test {

/// What is sent for one path, and what follows it.
struct Reply {
    enum Then { Close, Drip, Flood };  // the end, a byte each tenth of a second, or bytes without end
    std::string bytes;
    Then then = Close;
    std::string wanted{};  ///< in the request's head; without it, a proxy's login is asked for
};

/// A good reply.
Reply Page(const std::string& body);

class LoopbackServer {
 public:
    /// Replies by path ("/name"), for a proxy by address; any other is not found.
    explicit LoopbackServer(std::map<std::string, Reply> replies);
    ~LoopbackServer();

    std::string Address() const { return "http://" + Server(); }
    std::string Server() const { return "127.0.0.1:" + std::to_string(m_port); }
    /// The heads of the requests so far.
    Texts Requests() const;

 private:
    void Serve();
    void Answer(sockets::Socket connection);

    const std::map<std::string, Reply> m_replies;
    sockets::Socket m_listener = -1;
    int m_port = 0;
    std::atomic<bool> m_stop{false};
    mutable std::mutex m_mutex;
    Texts m_requests;
    std::vector<std::thread> m_answers;  // one for each connection, of which some take long
    std::thread m_thread;
};

/// A port on which nobody listens.
int FreePort();

}  // namespace brenta::test
