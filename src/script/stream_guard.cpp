#include "script/stream_guard.h"

#include <utility>

namespace brenta {

StreamGuard::StreamGuard(CCoreScriptLexer& lexer) : m_lexer(lexer), m_arenaBase(lexer.m_pArena->Enter()) {
    SwapState();
}

// What is left of the inner work goes first: an inner text may be gone already, so it is dropped, never read.
StreamGuard::~StreamGuard() {
    m_lexer.FlushInput();
    m_lexer.FlushTokens();
    m_lexer.m_pArena->Leave(m_arenaBase);
    SwapState();
}

// The guard's own state is empty when it enters, and again when it leaves: one exchange serves both ways.
void StreamGuard::SwapState() {
    std::swap(m_streams, m_lexer.m_streams);
    std::swap(m_pStream, m_lexer.m_pStream);
    std::swap(m_tokens, m_lexer.m_tokenList);
    std::swap(m_unitsSeen, m_lexer.m_unitsSeen);
}

}  // namespace brenta
