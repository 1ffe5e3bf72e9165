#include "http_reasons.h"

namespace brenta::test {

// Wine's client cuts long lines of the header, takes a line that is none for an answer of old, and does not
// tell a chunk that was cut.
const HttpReasons kHttpReasons = {
    "The answer ended too early",
    nullptr,
    "The answer came too slowly: less than 64 bytes a second for 1 seconds",
    "The server did not say how long its answer is",
    "The server did not say how long its answer is",
    "The server did not answer",
};

}  // namespace brenta::test
