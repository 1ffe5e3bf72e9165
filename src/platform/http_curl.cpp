// HTTP over libcurl: one handle for one exchange.
#include <curl/curl.h>

#include <algorithm>
#include <memory>

#include "os/os.h"
#include "platform/http_transfer.h"
#include "platform/http_url.h"

namespace brenta {

namespace {

using Text = std::string_view;

constexpr long kLeastBytesPerSecond = 64;

/// libcurl's global state. It goes when the library is unloaded; at the end of the process other threads may
/// be using it.
class CurlLibrary {
 public:
    CurlLibrary() : m_isReady(curl_global_init(CURL_GLOBAL_ALL) == CURLE_OK) {}
    ~CurlLibrary() {
        if (m_isReady && os::LibraryIsUnloading()) curl_global_cleanup();
    }
    CurlLibrary(const CurlLibrary&) = delete;
    CurlLibrary& operator=(const CurlLibrary&) = delete;

    bool IsReady() const { return m_isReady; }

 private:
    const bool m_isReady;
};

const CurlLibrary& Library() {
    static const CurlLibrary library;
    return library;
}

template <auto Function>
struct Call {
    template <class T>
    void operator()(T* object) const {
        Function(object);
    }
};
using Handle = std::unique_ptr<CURL, Call<curl_easy_cleanup>>;
using HeaderLines = std::unique_ptr<curl_slist, Call<curl_slist_free_all>>;
using Url = std::unique_ptr<CURLU, Call<curl_url_cleanup>>;
using UrlText = std::unique_ptr<char, Call<curl_free>>;

/// The value of a header line if it has that name; "" otherwise.
Text ValueOf(Text line, Text name) {
    const std::size_t colon = line.find(':');
    if (colon == Text::npos || !EqualIgnoringCase(line.substr(0, colon), name)) return {};
    constexpr Text kSpaces = " \t\r\n";
    const std::size_t start = line.find_first_not_of(kSpaces, colon + 1);
    if (start == Text::npos) return {};
    return line.substr(start, line.find_last_not_of(kSpaces) + 1 - start);
}

/// An address as seen from another one.
std::string Resolve(const std::string& base, const std::string& location) {
    const Url url(curl_url());
    char* whole = nullptr;
    if (!url || curl_url_set(url.get(), CURLUPART_URL, base.c_str(), 0) != CURLUE_OK ||
        curl_url_set(url.get(), CURLUPART_URL, location.c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK ||
        curl_url_get(url.get(), CURLUPART_URL, &whole, 0) != CURLUE_OK)
        return location;
    return UrlText(whole).get();
}

/// One exchange: sets the handle up, hears it, and tells the receiver.
class Transfer {
 public:
    Transfer(const HttpExchange& exchange, HttpReceiver& receiver, CURL* handle)
        : m_exchange(exchange), m_receiver(receiver), m_pHandle(handle) {}

    std::string Run() {
        char message[CURL_ERROR_SIZE] = "";
        if (!SetUp(message)) return "The request could not be prepared";
        const CURLcode code = curl_easy_perform(m_pHandle);
        if (m_pFailure) std::rethrow_exception(m_pFailure);
        if (m_isEnded) return "";
        if (IsStopped()) return "The request was stopped";
        if (m_headerBytes > m_exchange.request.limits.headerBytes || IsHeaderTooLong(code))
            return "The server's header is too long";
        long connectStatus = 0;
        curl_easy_getinfo(m_pHandle, CURLINFO_HTTP_CONNECTCODE, &connectStatus);
        if (code != CURLE_OK && connectStatus == kProxyWantsLogin) {
            HttpHead head;
            head.status = kProxyWantsLogin;
            m_receiver.TakeHead(head);
            return "";
        }
        if (code != CURLE_OK) return *message != 0 ? message : curl_easy_strerror(code);
        if (!m_isHeadTaken) TakeHead();
        return "";
    }

 private:
    static constexpr int kProxyWantsLogin = 407;

    template <class T>
    bool Set(CURLoption option, T value) {
        return curl_easy_setopt(m_pHandle, option, value) == CURLE_OK;
    }

    bool SetUp(char* message) {
        const HttpRequest& request = m_exchange.request;
        const HttpLimits& limits = request.limits;
        // Without an own list for the proxy and its exceptions the environment's would hold.
        return Set(CURLOPT_URL, m_exchange.url.c_str()) && Set(CURLOPT_PROTOCOLS_STR, "http,https") &&
               Set(CURLOPT_ERRORBUFFER, message) && Set(CURLOPT_NOSIGNAL, 1L) &&
               Set(CURLOPT_CONNECTTIMEOUT, static_cast<long>(limits.connectSeconds)) &&
               Set(CURLOPT_TIMEOUT, static_cast<long>(limits.totalSeconds)) &&
               Set(CURLOPT_LOW_SPEED_LIMIT, kLeastBytesPerSecond) &&
               Set(CURLOPT_LOW_SPEED_TIME, static_cast<long>(limits.stallSeconds)) &&
               Set(CURLOPT_PROXY, m_exchange.proxy.c_str()) && Set(CURLOPT_NOPROXY, "") &&
               SetCredentials(request.proxies) && SetHeaders(request) && SetListeners();
    }

    bool SetCredentials(const HttpProxies& proxies) {
        if (m_exchange.proxy.empty() || proxies.user.empty()) return true;
        return Set(CURLOPT_PROXYAUTH, CURLAUTH_ANY) && Set(CURLOPT_PROXYUSERNAME, proxies.user.c_str()) &&
               Set(CURLOPT_PROXYPASSWORD, proxies.password.c_str());
    }

    bool SetHeaders(const HttpRequest& request) {
        if (!request.userAgent.empty() && !Set(CURLOPT_USERAGENT, request.userAgent.c_str())) return false;
        if (!request.reload) return true;
        for (const char* line : {"Cache-Control: no-cache", "Pragma: no-cache"}) {
            curl_slist* longer = curl_slist_append(m_lines.get(), line);
            if (longer == nullptr) return false;
            static_cast<void>(m_lines.release());
            m_lines.reset(longer);
        }
        return Set(CURLOPT_HTTPHEADER, m_lines.get());
    }

    bool SetListeners() {
        return Set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L) &&
               Set(CURLOPT_HEADERFUNCTION, &Transfer::OnHeader) && Set(CURLOPT_HEADERDATA, this) &&
               Set(CURLOPT_WRITEFUNCTION, &Transfer::OnBody) && Set(CURLOPT_WRITEDATA, this) &&
               Set(CURLOPT_NOPROGRESS, 0L) && Set(CURLOPT_XFERINFOFUNCTION, &Transfer::OnProgress) &&
               Set(CURLOPT_XFERINFODATA, this);
    }

    // The callbacks. An exception must not pass through libcurl; it waits until the exchange has ended.

    static std::size_t OnHeader(char* bytes, std::size_t size, std::size_t count, void* self) {
        return static_cast<Transfer*>(self)->Guarded(&Transfer::HearHeader, Text(bytes, size * count));
    }

    static std::size_t OnBody(char* bytes, std::size_t size, std::size_t count, void* self) {
        return static_cast<Transfer*>(self)->Guarded(&Transfer::HearBody, Text(bytes, size * count));
    }

    static int OnProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
        return static_cast<Transfer*>(self)->IsStopped() ? 1 : 0;
    }

    /// How much of the bytes was taken: all, or nothing to end the exchange.
    std::size_t Guarded(bool (Transfer::*hear)(Text), Text bytes) try {
        return (this->*hear)(bytes) ? bytes.size() : bytes.empty() ? 1 : 0;
    } catch (...) {
        m_pFailure = std::current_exception();
        return bytes.empty() ? 1 : 0;
    }

    bool HearHeader(Text line) {
        m_headerBytes += line.size();
        if (m_headerBytes > m_exchange.request.limits.headerBytes) return false;
        if (m_isHeadTaken) return true;  // lines behind the chunks
        if (line.starts_with("HTTP/")) {
            // One request may have several answers: "continue" first, or a proxy's demand for credentials.
            m_location.clear();
            m_isChunked = false;
        }
        if (const Text location = ValueOf(line, "Location"); !location.empty()) m_location = location;
        if (EqualIgnoringCase(ValueOf(line, "Transfer-Encoding"), "chunked")) m_isChunked = true;
        return true;
    }

    /// The first byte of a body that libcurl lets through shows which answer is the last one.
    bool HearBody(Text piece) {
        if (!m_isHeadTaken && !TakeHead()) return false;
        m_isEnded = !m_receiver.TakeBody(piece);
        return !m_isEnded;
    }

    bool TakeHead() {
        m_isHeadTaken = true;
        HttpHead head;
        head.status = static_cast<int>(Info(CURLINFO_RESPONSE_CODE));
        curl_off_t length = -1;
        curl_easy_getinfo(m_pHandle, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
        head.length = length;
        const bool hasNoBody = head.status == 204 || head.status == 304;
        head.endIsMarked =
            length >= 0 || m_isChunked || hasNoBody || Info(CURLINFO_HTTP_VERSION) >= CURL_HTTP_VERSION_2_0;
        std::string target;
        if (head.status / 100 == 3 && !m_location.empty()) target = Resolve(m_exchange.url, m_location);
        head.redirection = target;
        m_isEnded = !m_receiver.TakeHead(head);
        return !m_isEnded;
    }

    long Info(CURLINFO what) const {
        long value = 0;
        curl_easy_getinfo(m_pHandle, what, &value);
        return value;
    }

    bool IsStopped() const {
        const std::atomic<bool>* stop = m_exchange.request.pStop;
        return stop != nullptr && stop->load(std::memory_order_relaxed);
    }

    /// libcurl's own limit for one line shows as a lack of memory.
    bool IsHeaderTooLong(CURLcode code) const { return code == CURLE_OUT_OF_MEMORY && !m_isHeadTaken; }

    const HttpExchange& m_exchange;
    HttpReceiver& m_receiver;
    CURL* const m_pHandle;
    HeaderLines m_lines;
    std::string m_location;
    bool m_isChunked = false;
    bool m_isHeadTaken = false;
    bool m_isEnded = false;  ///< by the receiver
    std::size_t m_headerBytes = 0;
    std::exception_ptr m_pFailure;
};

}  // namespace

void PrepareHttp() {
    Library();
}

std::string Exchange(const HttpExchange& exchange, HttpReceiver& receiver) {
    const Handle handle(Library().IsReady() ? curl_easy_init() : nullptr);
    if (!handle) return "There is no memory";
    return Transfer(exchange, receiver, handle.get()).Run();
}

}  // namespace brenta
