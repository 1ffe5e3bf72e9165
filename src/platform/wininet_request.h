// One request to the system's web client (WinINet), which works on threads of its own while this one waits.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/http_transfer.h"

namespace brenta {

/// What the system's threads report of a request. It lives until both sides have let go of it: a request that
/// is given up goes on there for a while.
class RequestReport;

/// A request from its start to its end. Every function but the constructor returns false once the request has
/// failed, and Failure() then tells why. All of them watch the limits and the stop flag.
class WinInetRequest {
 public:
    explicit WinInetRequest(const HttpExchange& exchange);
    ~WinInetRequest();
    WinInetRequest(const WinInetRequest&) = delete;
    WinInetRequest& operator=(const WinInetRequest&) = delete;

    /// Sends the request and waits for the header.
    bool Send();
    /// Waits for more of the body; "" at its end. The piece is valid until the next call.
    bool Read(std::string_view& piece);

    const std::string& Failure() const { return m_failure; }
    /// The answer's status; 0 without one.
    int Status() const;
    /// All lines of a header field together; "" if there is none. `field` is one of the system's numbers.
    std::string Header(unsigned long field) const;

 private:
    using Clock = std::chrono::steady_clock;

    bool Open();
    bool OpenSession();
    bool OpenRequest();
    bool SetLimits() const;
    bool SetCredentials() const;
    bool AddHeaders() const;
    bool Fail(std::string why);
    bool FailBySystem(unsigned long error);
    bool Await();
    bool AwaitPending();
    bool IsInTime();
    void NoteBytes(std::size_t count);
    void Close();

    const HttpExchange& m_exchange;
    RequestReport* m_pReport = nullptr;
    void* m_session = nullptr;
    void* m_connection = nullptr;
    void* m_request = nullptr;
    std::string m_failure;
    bool m_isHeadComplete = false;
    const Clock::time_point m_start = Clock::now();
    Clock::time_point m_paceStart = m_start;  ///< since when the pace is measured
    std::int64_t m_paceBytes = 0;             ///< taken since then
};

}  // namespace brenta
