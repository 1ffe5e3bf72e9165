// A scan within a scan.
#pragma once

#include "brenta/lexer.h"
#include "script/token_arena.h"

namespace brenta {

/// Gives a piece of work an input and a token list of its own, and puts the outer ones back when it is over,
/// however it ended.
///
/// A lexer has one input stack and one token list, but a script that is being loaded may run code that scans
/// another text, and a scan that fails leaves its input behind. Everything that scans on behalf of a host or
/// a script is therefore wrapped:
///
///     StreamGuard guard(*this);
///     if (!InjectScriptText("cmd:", text, true)) return false;       // no trace of `text` stays
///
/// The units-seen flag is the inner work's own too; read it before the guard goes. The tags of the last token
/// that was taken from the outer input stay. Entering and leaving allocates nothing.
class StreamGuard {
 public:
    explicit StreamGuard(CCoreScriptLexer& lexer);
    ~StreamGuard();
    StreamGuard(const StreamGuard&) = delete;
    StreamGuard& operator=(const StreamGuard&) = delete;

 private:
    void SwapState();

    CCoreScriptLexer& m_lexer;
    TStack<LexStream*> m_streams;
    LexStream* m_pStream = nullptr;
    TOrderedList<ScriptToken*> m_tokens;
    TokenArena::Mark m_arenaBase;
    bool m_unitsSeen = false;
};

}  // namespace brenta
