// The pattern lexer against the rules followed word by word: the first lines of the input define token kinds
// (a leading '%' makes one that is skipped), up to an empty line; what follows is the text.
#include <cstdlib>
#include <string>

#include "brenta/lexer.h"
#include "literal_matcher.h"

namespace {

using brenta::CCoreLexer;
using brenta::LexToken;
using brenta::fuzz::LiteralMatcher;

constexpr std::size_t kMaxInput = 512;
constexpr int kMaxKinds = 20;
constexpr long kMaxSteps = 100000;  // nested repetition of repetition is legal, and slow for every matcher

// Defines the kinds in both and returns the text behind them.
std::string Define(std::string input, CCoreLexer& lexer, LiteralMatcher& oracle) {
    for (int id = 1; id <= kMaxKinds && !input.empty(); ++id) {
        const std::size_t end = input.find('\n');
        std::string pattern = input.substr(0, end);
        input.erase(0, end == std::string::npos ? end : end + 1);
        if (pattern.empty()) break;
        const bool skip = pattern[0] == '%';
        if (skip) pattern.erase(0, 1);
        const bool defined = lexer.DefineToken("kind", id, pattern.c_str(), skip);
        if (defined != oracle.Define(id, pattern.c_str(), skip)) std::abort();
        if (!defined && lexer.GetPatternError().IsEmpty()) std::abort();
    }
    return input;
}

bool SameTags(CCoreLexer& lexer, const LiteralMatcher::Token& expected) {
    for (int n = 1; n <= 4; ++n) {
        const bool found = expected.starts[n] != nullptr && expected.ends[n] != nullptr &&
                           expected.starts[n] <= expected.ends[n];
        const brenta::Var& tag = lexer.GetTag(n);
        if ((tag.GetKind() != brenta::VarKind::Null) != found) return false;
        if (found && std::string(expected.starts[n], expected.ends[n]) != brenta::StrPtr(tag.GetString()))
            return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > kMaxInput) return 0;
    CCoreLexer lexer;
    LiteralMatcher oracle;
    oracle.GiveUpAfter(kMaxSteps);
    const std::string text =
        Define(std::string(reinterpret_cast<const char*>(data), size), lexer, oracle).c_str();
    lexer.PushStream("text", 1, text.c_str(), false);
    const char* at = text.c_str();
    for (;;) {
        LiteralMatcher::Token expected;
        do {
            expected = oracle.Next(at);
            at += expected.length;
            if (oracle.GaveUp()) return 0;
        } while (expected.skip && *at != 0);
        LexToken token;
        if (!lexer.GetToken(token)) {
            if (expected.id != 0) std::abort();
            return 0;
        }
        if (token.id == -1) {
            if (*at != 0) std::abort();
            return 0;
        }
        if (token.id != expected.id || static_cast<std::size_t>(token.length) != expected.length)
            std::abort();
        if (!SameTags(lexer, expected)) std::abort();
    }
}
