// HTTP over the system's web client: one request, with a session of its own, for one exchange.
#include <charconv>
#include <cstdint>

#include "platform/http_transfer.h"
#include "platform/http_url.h"
#include "platform/wininet_request.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <wininet.h>

namespace brenta {

namespace {

/// An address as seen from another one.
std::string Resolve(const std::string& base, const std::string& location) {
    DWORD size = 0;
    InternetCombineUrlA(base.c_str(), location.c_str(), nullptr, &size, ICU_BROWSER_MODE);
    std::string whole(size, '\0');
    if (size == 0 ||
        !InternetCombineUrlA(base.c_str(), location.c_str(), whole.data(), &size, ICU_BROWSER_MODE))
        return location;
    whole.resize(size);
    return whole;
}

std::int64_t LengthOf(const std::string& text) {
    std::int64_t length = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    const bool isGood = error == std::errc() && end == text.data() + text.size() && length >= 0;
    return isGood ? length : -1;
}

/// Hands the header to the receiver; false if that has enough.
bool TakeHead(const HttpExchange& exchange, const WinInetRequest& request, HttpReceiver& receiver) {
    HttpHead head;
    head.status = request.Status();
    const bool isChunked = EqualIgnoringCase(request.Header(HTTP_QUERY_TRANSFER_ENCODING), "chunked");
    if (!isChunked) head.length = LengthOf(request.Header(HTTP_QUERY_CONTENT_LENGTH));
    // Not every version of the system's client tells that a chunk was cut; nothing else does.
    head.endIsMarked = isChunked || head.length >= 0 || head.status == 204 || head.status == 304;
    std::string target;
    if (head.status / 100 == 3) target = request.Header(HTTP_QUERY_LOCATION);
    if (!target.empty()) target = Resolve(exchange.url, target);
    head.redirection = target;
    return receiver.TakeHead(head);
}

}  // namespace

void PrepareHttp() {}

std::string Exchange(const HttpExchange& exchange, HttpReceiver& receiver) {
    WinInetRequest request(exchange);
    if (!request.Send()) return request.Failure();
    if (request.Status() == 0) return "The server did not answer";
    if (request.Header(HTTP_QUERY_RAW_HEADERS_CRLF).size() > exchange.request.limits.headerBytes)
        return "The server's header is too long";
    if (!TakeHead(exchange, request, receiver)) return "";
    for (;;) {
        std::string_view piece;
        if (!request.Read(piece)) return request.Failure();
        if (piece.empty() || !receiver.TakeBody(piece)) return "";
    }
}

}  // namespace brenta
