// What the platform's web client says of answers that it could not read.
#pragma once

namespace brenta::test {

struct HttpReasons {
    const char* cutBody;   ///< 7 bytes before its announced end
    const char* cutChunk;  ///< null where the client does not notice
    const char* slow;
    const char* longHeader;
    const char* nonsense;
    const char* nothing;
};

extern const HttpReasons kHttpReasons;

}  // namespace brenta::test
