#include "http_reasons.h"

namespace brenta::test {

const HttpReasons kHttpReasons = {
    "transfer closed with 7 bytes remaining to read",
    "transfer closed with outstanding read data remaining",
    "Operation too slow. Less than 64 bytes/sec transferred the last 1 seconds",
    "The server's header is too long",
    "Received HTTP/0.9 when not allowed",
    "Empty reply from server",
};

}  // namespace brenta::test
