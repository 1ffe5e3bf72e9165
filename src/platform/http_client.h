// Fetching one http(s) address, for everything in the library that reaches a web server.
//
//     HttpRequest request;
//     request.url = "http://host/proxy.pac";
//     request.limits.bodyBytes = 1 << 20;
//     std::string text;
//     const HttpResult result = HttpGetText(request, text);
//     if (!result.Ok()) Report(result.error);
//
// Every request stands for itself: there are no cookies, no cache, no kept connections, and nothing is taken
// from the environment. A call waits until the answer is there and may be made on any thread. A service of
// the host is never asked.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace brenta {

/// What an answer may cost before the request fails.
struct HttpLimits {
    std::int64_t bodyBytes = std::numeric_limits<std::int64_t>::max();
    std::size_t headerBytes = 65536;  ///< all header lines of one answer together
    int redirects = 5;
    int connectSeconds = 30;
    int stallSeconds = 60;  ///< without as much as 64 bytes a second, waiting for the first byte included
    int totalSeconds = 0;   ///< for one answer from first to last; 0: as long as it takes
};

/// The proxies that a request may use.
struct HttpProxies {
    std::string list;  ///< "host:port" or "scheme=host:port", separated by semicolons or blanks; "" for none.
                       ///< The scheme "socks" serves what no other entry does.
    std::string bypass;  ///< hosts reached without them, "*" for any text in them, "<local>" for names
                         ///< without a dot; separated by semicolons, commas or blanks
    std::string user;    ///< "" to give no credentials
    std::string password;
};

struct HttpRequest {
    std::string url;        ///< "http://" or "https://"; certificates are always verified
    std::string userAgent;  ///< "" to send none
    HttpProxies proxies;
    bool reload = false;       ///< no cache on the way may answer
    bool needsLength = false;  ///< an answer that could have been cut without a trace is a failure
    HttpLimits limits;
    const std::atomic<bool>* pStop = nullptr;  ///< once true, the request fails within about a second
};

struct HttpResult {
    int status = 0;     ///< of the last answer: 200, 404, 407 (proxy credentials), ...; 0 if there was none
    std::string error;  ///< what went wrong, as one line for a person; "" if nothing did

    bool Ok() const { return error.empty(); }
};

/// Takes the body of a good answer; that of an error or a redirect is never seen. Neither function may throw.
class HttpSink {
 public:
    HttpSink() = default;
    HttpSink(const HttpSink&) = delete;
    HttpSink& operator=(const HttpSink&) = delete;
    virtual ~HttpSink() = default;

    /// Comes once, before the body, if there is one; `length` is -1 where the server does not tell it.
    /// False ends the request.
    virtual bool Begin(std::int64_t length) = 0;
    /// The next piece of the body. False ends the request.
    virtual bool Write(std::string_view piece) = 0;
    /// Why one of them said false.
    virtual std::string Reason() const = 0;
};

/// Keeps the body in memory. Set limits.bodyBytes.
class TextSink : public HttpSink {
 public:
    bool Begin(std::int64_t) override { return true; }
    bool Write(std::string_view piece) override;
    std::string Reason() const override { return "There is no memory for the answer"; }

    std::string text;
};

/// Fetches an address, following redirects; one from https never leads to http. Any status but 2xx is a
/// failure, and so is a body that does not have the announced length.
HttpResult HttpGet(const HttpRequest& request, HttpSink& sink);

/// The same into a text; on failure it is as it was.
HttpResult HttpGetText(const HttpRequest& request, std::string& text);

/// Builds what the backend shares among all requests. The first request does it, too; an object that makes
/// requests until its destructor has run calls it in its constructor.
void PrepareHttp();

}  // namespace brenta
