#include "platform/wininet_request.h"

#include <algorithm>
#include <memory>
#include <new>

#include "os/os.h"
#include "platform/proxy_list.h"
#include "platform/system_message_windows.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <wininet.h>

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// What the system's threads report

class RequestReport {
 public:
    RequestReport() = default;
    RequestReport(const RequestReport&) = delete;
    RequestReport& operator=(const RequestReport&) = delete;

    bool IsGood() const { return m_done != nullptr; }

    /// One side lets go; the last one deletes the report.
    void Release() {
        if (m_owners.fetch_sub(1) == 1) delete this;
    }
    /// The system takes its share: it will report the end of the request.
    void Share() { ++m_owners; }

    void Begin() {
        error = ERROR_SUCCESS;
        ResetEvent(m_done);
    }
    bool WaitUntilDone(DWORD milliseconds) const {
        return WaitForSingleObject(m_done, milliseconds) == WAIT_OBJECT_0;
    }

    static void CALLBACK OnStatus(HINTERNET, DWORD_PTR context, DWORD status, void* info, DWORD size) {
        if (context != 0) reinterpret_cast<RequestReport*>(context)->Take(status, info, size);
    }

    static constexpr DWORD kBufferSize = 65536;

    std::atomic<bool> isConnected{false};
    std::atomic<std::uint64_t> received{0};  ///< bytes of the answer, the header's among them
    std::atomic<DWORD> error{ERROR_SUCCESS};
    // The system writes here at any time until the request is closed.
    DWORD available = 0;
    DWORD count = 0;
    char buffer[kBufferSize];

 private:
    ~RequestReport() {
        if (m_done) CloseHandle(m_done);
    }

    void Take(DWORD status, const void* info, DWORD size) {
        switch (status) {
            case INTERNET_STATUS_CONNECTED_TO_SERVER:
            case INTERNET_STATUS_SENDING_REQUEST:
                isConnected = true;
                break;
            case INTERNET_STATUS_RESPONSE_RECEIVED:
                if (info && size >= sizeof(DWORD)) received += *static_cast<const DWORD*>(info);
                break;
            case INTERNET_STATUS_REQUEST_COMPLETE: {
                const auto& result = *static_cast<const INTERNET_ASYNC_RESULT*>(info);
                error = result.dwResult != 0 ? ERROR_SUCCESS : result.dwError;
                SetEvent(m_done);
                break;
            }
            case INTERNET_STATUS_HANDLE_CLOSING:
                Release();
                break;
            default:
                break;
        }
    }

    std::atomic<int> m_owners{1};
    const HANDLE m_done = CreateEventW(nullptr, FALSE, FALSE, nullptr);
};

// ---------------------------------------------------------------------------------------------------------
// Life

namespace {

constexpr std::int64_t kLeastBytesPerSecond = 64;

/// A limit of the system's, in milliseconds, that holds only where ours has failed.
DWORD Beyond(int seconds) {
    constexpr std::int64_t kMore = 5, kMost = 0x7fffffff;
    return static_cast<DWORD>(std::clamp<std::int64_t>((seconds + kMore) * 1000, 0, kMost));
}

/// The proxy as the system takes it: SOCKS by name, all others alone.
std::string ProxyForSystem(const std::string& proxy) {
    const ProxyEntry pieces = SplitProxyEntry(proxy);
    const std::string server = std::string(pieces.host) + std::string(pieces.after);
    return (pieces.before.starts_with("socks") ? "socks=" : "") + server;
}

/// The parts of an address; views into it.
struct Target {
    std::string_view host, user, password, path;
    INTERNET_PORT port = 0;
    bool isSecure = false;
};

bool Split(const std::string& url, Target& target) {
    URL_COMPONENTSA parts{};
    parts.dwStructSize = sizeof(parts);
    parts.dwHostNameLength = parts.dwUserNameLength = parts.dwPasswordLength = 1;
    parts.dwUrlPathLength = parts.dwExtraInfoLength = 1;
    if (!InternetCrackUrlA(url.c_str(), 0, 0, &parts) || !parts.lpszHostName) return false;
    const auto view = [](const char* text, DWORD length) {
        return text ? std::string_view(text, length) : std::string_view();
    };
    target.host = view(parts.lpszHostName, parts.dwHostNameLength);
    target.user = view(parts.lpszUserName, parts.dwUserNameLength);
    target.password = view(parts.lpszPassword, parts.dwPasswordLength);
    target.port = parts.nPort;
    target.isSecure = parts.nScheme == INTERNET_SCHEME_HTTPS;
    // What follows the host, without what is the reader's own business.
    const std::string_view end = target.host;
    const std::string_view whole(url);
    const std::size_t start =
        whole.find_first_of("/?#", static_cast<std::size_t>(end.data() + end.size() - url.data()));
    target.path = start == std::string_view::npos ? std::string_view() : whole.substr(start);
    target.path = target.path.substr(0, target.path.find('#'));
    return true;
}

bool SetOption(HINTERNET handle, DWORD option, DWORD value) {
    return InternetSetOptionA(handle, option, &value, sizeof(value)) != 0;
}

/// A text with its end; an empty one stays unset.
bool SetOption(HINTERNET handle, DWORD option, std::string text) {
    return text.empty() ||
           InternetSetOptionA(handle, option, text.data(), static_cast<DWORD>(text.size() + 1)) != 0;
}

}  // namespace

WinInetRequest::WinInetRequest(const HttpExchange& exchange) : m_exchange(exchange) {}

WinInetRequest::~WinInetRequest() {
    Close();
}

/// Closes what is open. The system's threads may report for a while yet.
void WinInetRequest::Close() {
    if (m_request) InternetCloseHandle(m_request);
    if (m_connection) InternetCloseHandle(m_connection);
    if (m_session) InternetCloseHandle(m_session);
    if (m_pReport) m_pReport->Release();
}

bool WinInetRequest::Fail(std::string why) {
    m_failure = std::move(why);
    return false;
}

bool WinInetRequest::FailBySystem(DWORD error) {
    const std::string text = SystemMessage(error, L"wininet.dll");
    return Fail(text.empty() ? "The request failed with error " + std::to_string(error) : text);
}

// ---------------------------------------------------------------------------------------------------------
// Preparing

bool WinInetRequest::Open() {
    // No event can tell when the system's last thread has left our code.
    os::KeepLoaded();
    std::unique_ptr<RequestReport, void (*)(RequestReport*)> report(new RequestReport,
                                                                    [](RequestReport* r) { r->Release(); });
    if (!report->IsGood()) return Fail("There is no memory");
    m_pReport = report.release();
    if (!OpenSession() || !OpenRequest() || !SetLimits() || !SetCredentials() || !AddHeaders())
        return FailBySystem(GetLastError());
    return true;
}

bool WinInetRequest::OpenSession() {
    const std::string& agent = m_exchange.request.userAgent;
    const std::string proxy = m_exchange.proxy.empty() ? "" : ProxyForSystem(m_exchange.proxy);
    // Which hosts are reached without the proxy is decided already, for those of this machine too.
    m_session = InternetOpenA(agent.empty() ? nullptr : agent.c_str(),
                              proxy.empty() ? INTERNET_OPEN_TYPE_DIRECT : INTERNET_OPEN_TYPE_PROXY,
                              proxy.empty() ? nullptr : proxy.c_str(),
                              proxy.empty() ? nullptr : "<-loopback>", INTERNET_FLAG_ASYNC);
    if (!m_session) return false;
    return InternetSetStatusCallbackA(m_session, &RequestReport::OnStatus) !=
           INTERNET_INVALID_STATUS_CALLBACK;
}

bool WinInetRequest::OpenRequest() {
    Target target;
    if (!Split(m_exchange.url, target)) return false;
    const std::string host(target.host), user(target.user), password(target.password);
    m_connection =
        InternetConnectA(m_session, host.c_str(), target.port, user.empty() ? nullptr : user.c_str(),
                         user.empty() ? nullptr : password.c_str(), INTERNET_SERVICE_HTTP, 0, 0);
    if (!m_connection) return false;
    DWORD flags = INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_NO_COOKIES |
                  INTERNET_FLAG_NO_AUTO_REDIRECT | INTERNET_FLAG_NO_UI;
    if (target.isSecure) flags |= INTERNET_FLAG_SECURE;
    // Without this the system offers the name of whoever has logged in.
    const bool logsIn = !m_exchange.request.proxies.user.empty() || !user.empty();
    // Some log-ins hold for one connection.
    flags |= logsIn ? INTERNET_FLAG_KEEP_CONNECTION : INTERNET_FLAG_NO_AUTH;
    const std::string path =
        target.path.starts_with('/') ? std::string(target.path) : "/" + std::string(target.path);
    const char* all[] = {"*/*", nullptr};
    m_request = HttpOpenRequestA(m_connection, "GET", path.c_str(), "HTTP/1.1", nullptr, all, flags,
                                 reinterpret_cast<DWORD_PTR>(m_pReport));
    if (m_request) m_pReport->Share();
    return m_request != nullptr;
}

bool WinInetRequest::SetLimits() const {
    const HttpLimits& limits = m_exchange.request.limits;
    const DWORD waiting = Beyond(limits.stallSeconds);
    return SetOption(m_request, INTERNET_OPTION_CONNECT_TIMEOUT, Beyond(limits.connectSeconds)) &&
           SetOption(m_request, INTERNET_OPTION_CONNECT_RETRIES, 1) &&
           SetOption(m_request, INTERNET_OPTION_SEND_TIMEOUT, waiting) &&
           SetOption(m_request, INTERNET_OPTION_RECEIVE_TIMEOUT, waiting);
}

bool WinInetRequest::SetCredentials() const {
    const HttpProxies& proxies = m_exchange.request.proxies;
    if (m_exchange.proxy.empty() || proxies.user.empty()) return true;
    return SetOption(m_request, INTERNET_OPTION_PROXY_USERNAME, proxies.user) &&
           SetOption(m_request, INTERNET_OPTION_PROXY_PASSWORD, proxies.password);
}

bool WinInetRequest::AddHeaders() const {
    constexpr char kNoCache[] = "Cache-Control: no-cache\r\nPragma: no-cache\r\n";
    return !m_exchange.request.reload ||
           HttpAddRequestHeadersA(m_request, kNoCache, sizeof(kNoCache) - 1,
                                  HTTP_ADDREQ_FLAG_ADD | HTTP_ADDREQ_FLAG_REPLACE);
}

// ---------------------------------------------------------------------------------------------------------
// Waiting

bool WinInetRequest::Send() {
    if (!Open()) return false;
    m_pReport->Begin();
    const bool isSent = HttpSendRequestA(m_request, nullptr, 0, nullptr, 0) || AwaitPending();
    m_isHeadComplete = true;
    return isSent;
}

bool WinInetRequest::Read(std::string_view& piece) {
    if (!IsInTime()) return false;
    RequestReport& report = *m_pReport;
    // Asked to read at once, the system would wait until the buffer is full.
    report.Begin();
    report.available = report.count = 0;
    if (!InternetQueryDataAvailable(m_request, &report.available, 0, 0) && !AwaitPending()) return false;
    if (report.available > 0) {
        report.Begin();
        const DWORD wanted = std::min(report.available, RequestReport::kBufferSize);
        if (!InternetReadFile(m_request, report.buffer, wanted, &report.count) && !AwaitPending())
            return false;
    }
    NoteBytes(report.count);
    piece = {report.buffer, report.count};
    return true;
}

/// After a call that failed: waits, if it only goes on elsewhere.
bool WinInetRequest::AwaitPending() {
    const DWORD error = GetLastError();
    return error == ERROR_IO_PENDING ? Await() : FailBySystem(error);
}

/// Waits for the system to end what it was asked for.
bool WinInetRequest::Await() {
    constexpr DWORD kLook = 100;  // milliseconds
    while (!m_pReport->WaitUntilDone(kLook)) {
        if (!IsInTime()) return false;
    }
    const DWORD error = m_pReport->error;
    return error == ERROR_SUCCESS || FailBySystem(error);
}

bool WinInetRequest::IsInTime() {
    const HttpRequest& request = m_exchange.request;
    const HttpLimits& limits = request.limits;
    if (request.pStop && request.pStop->load(std::memory_order_relaxed))
        return Fail("The request was stopped");
    // What is read along with the header's end belongs to the body.
    if (!m_isHeadComplete && m_pReport->received > limits.headerBytes + RequestReport::kBufferSize)
        return Fail("The server's header is too long");
    const Clock::time_point now = Clock::now();
    using std::chrono::seconds;
    if (limits.totalSeconds > 0 && now - m_start > seconds(limits.totalSeconds))
        return Fail("The answer took longer than " + std::to_string(limits.totalSeconds) + " seconds");
    if (!m_pReport->isConnected) {
        if (now - m_start > seconds(limits.connectSeconds))
            return Fail("There was no connection within " + std::to_string(limits.connectSeconds) +
                        " seconds");
        m_paceStart = now;
    }
    if (now - m_paceStart > seconds(limits.stallSeconds))
        return Fail("The answer came too slowly: less than " + std::to_string(kLeastBytesPerSecond) +
                    " bytes a second for " + std::to_string(limits.stallSeconds) + " seconds");
    return true;
}

/// The pace is measured anew whenever it was good enough since it was measured last.
void WinInetRequest::NoteBytes(std::size_t count) {
    const Clock::time_point now = Clock::now();
    m_paceBytes += static_cast<std::int64_t>(count);
    const auto passed = std::chrono::ceil<std::chrono::seconds>(now - m_paceStart).count();
    if (m_paceBytes < kLeastBytesPerSecond * std::max<std::int64_t>(passed, 1)) return;
    m_paceStart = now;
    m_paceBytes = 0;
}

// ---------------------------------------------------------------------------------------------------------
// The header

int WinInetRequest::Status() const {
    DWORD status = 0, size = sizeof(status);
    const bool known =
        HttpQueryInfoA(m_request, HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &status, &size, nullptr);
    return known ? static_cast<int>(status) : 0;
}

std::string WinInetRequest::Header(unsigned long field) const {
    std::string text(256, '\0');
    for (;;) {
        auto size = static_cast<DWORD>(text.size());
        if (HttpQueryInfoA(m_request, field, text.data(), &size, nullptr)) {
            text.resize(size);
            return text;
        }
        if (GetLastError() != ERROR_INSUFFICIENT_BUFFER || size <= text.size()) return {};
        text.resize(size);
    }
}

}  // namespace brenta
