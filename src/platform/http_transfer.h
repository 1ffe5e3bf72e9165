// The backend's share of an HTTP request: one exchange with one server. http_curl.cpp implements it.
// Redirects, the choice of the proxy and what counts as a failure are decided above it, in http_client.cpp.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/http_client.h"

namespace brenta {

/// What is asked for in one exchange; the request's own url and proxy list do not count.
struct HttpExchange {
    const HttpRequest& request;
    std::string url;
    std::string proxy;  ///< "host:port", also with a scheme in front; "" to go directly
};

struct HttpHead {
    int status = 0;
    std::int64_t length = -1;      ///< announced length of the body; -1 if unknown
    bool endIsMarked = false;      ///< by the length, by chunks or by frames
    std::string_view redirection;  ///< the absolute address of a redirect; "" if it is none
};

/// Follows one exchange. Returning false ends it.
class HttpReceiver {
 public:
    HttpReceiver() = default;
    HttpReceiver(const HttpReceiver&) = delete;
    HttpReceiver& operator=(const HttpReceiver&) = delete;
    virtual ~HttpReceiver() = default;

    /// The header is complete. Comes once, also for an answer without a body.
    virtual bool TakeHead(const HttpHead& head) = 0;
    virtual bool TakeBody(std::string_view piece) = 0;
};

/// Makes one exchange. Returns "" if the receiver ended it or got a whole answer, else what went wrong. On a
/// refusal by the proxy itself the head's status is 407 too.
std::string Exchange(const HttpExchange& exchange, HttpReceiver& receiver);

}  // namespace brenta
