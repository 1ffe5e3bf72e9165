// What the parts of the parser share with one another, and with whoever parses texts of statements (the
// engine's commands, `execute`).
//
// The parser is CCoreScriptEngine's; see the notes in brenta/script.h for what each function is entered on
// and where it leaves the iterator. It lives in parser.cpp (modules, sequences of statements, the dispatch),
// parse_declarations.cpp, parse_statements.cpp and parse_expression.cpp.
#pragma once

#include <memory>
#include <new>
#include <utility>

#include "brenta/script.h"
#include "script/engine_state.h"
#include "script/name_cells.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Sequences of statements
//
// Where a statement ends. An expression ends before any of ; ) ] } and at the end of the text, and leaves the
// iterator there without taking the terminator. So there are two ways for a statement to be over:
//
//   closed   its last token is its own: the `)` of print and execute, the `}` of a block, a function or a
//            class, the `;` of break and continue, `_halt` itself. The iterator stands on that token and the
//            caller steps past it.
//   open     it ended before a terminator that is not its own: expressions, declarations, return, and every
//            `if` and loop whose last branch is open.
//
// After an open statement the terminator decides, by the kind of sequence: `;` is stepped over everywhere;
// `}` closes a block and is left for it, so `{ return 1 }` needs no `;`; `)` is skipped in a command, a
// leftover of texts cut out of a larger one; the end of the text is left for the loop to see. Anything else
// stands where no statement can begin, and is a syntax error - a loop that let it be would never move on, for
// the statement that "begins" there is an empty expression.
//
// Whether the statement parsed last is open is kept in EngineState::openStatement by the parse functions: an
// `if` has to know it of its branch before it may look for `else` behind it, and asking the tree instead
// would walk a long else-if chain once per enclosing statement.

enum class StatementSequence {
    Block,    ///< the body of a block or class, up to its `}`
    Text,     ///< a module or an executed text, up to the end marker
    Command,  ///< a command: a text in which stray `)` are skipped like `;`
};

/// Steps past the statement parsed last, see above. False after the error message.
bool FinishStatement(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, StatementSequence sequence);

/// Parses statements into `into` until the sequence ends, and leaves the iterator on the `}` or end marker
/// that ended it. False after the error message; `into` then keeps what was parsed before.
bool ParseSequence(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, StatementSequence sequence,
                   CompoundStatement& into);

/// A text of statements, and the symbols that it declares: what a command or `execute` parses and runs.
///
/// It must outlive the run of its statements. Symbols that are still bound when it goes (a command's global
/// variables) move to the engine, the others go with it: a text that is executed a million times must not
/// leave a million symbols behind.
class ParsedText {
 public:
    explicit ParsedText(CCoreScriptEngine& engine) : m_engine(engine) {}
    ~ParsedText();
    ParsedText(const ParsedText&) = delete;
    ParsedText& operator=(const ParsedText&) = delete;

    /// Parses all tokens from `iter` on, as Text or Command, in the current scope. What `foreach` enters into
    /// that scope while it is parsed is taken out again: a text that is parsed twice must not meet itself.
    /// False after the error message.
    bool Parse(TIter<ScriptToken*>& iter, StatementSequence sequence);

    const CompoundStatement& Statements() const { return *m_pStatements; }

 private:
    CCoreScriptEngine& m_engine;
    SymbolList m_symbols;
    std::unique_ptr<CompoundStatement> m_pStatements;
};

// ---------------------------------------------------------------------------------------------------------
// Tokens and messages

/// The token an iterator stands on, null behind the last one.
inline ScriptToken* CurrentToken(const TIter<ScriptToken*>& iter) {
    ScriptToken* const* const token = iter.Get();
    return token != nullptr ? *token : nullptr;
}

inline bool IsEnd(const ScriptToken* token) {
    return token == nullptr || token->id == TOK_END;
}

inline ScriptPosition PositionOf(const ScriptToken* token) {
    return token != nullptr ? ScriptPosition{token->file, token->line} : ScriptPosition{};
}

/// "Unexpected end-of-file." at `token`, or without a position when there is not even an end marker.
void ReportEnd(CCoreScriptEngine& engine, const ScriptToken* token);

/// Moves to the next token, which may be any but the end marker: else "Unexpected end-of-file." and null.
ScriptToken* AdvanceToAny(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter);

/// What a construct adds when a part of it failed, which has reported already: one message of its own, at the
/// token that began it. Nothing when the nesting was too deep, for then each of the thousand constructs
/// around would add one.
void ReportConstruct(CCoreScriptEngine& engine, const ScriptToken* token, const char* text);

/// Whether the native stack is nearly used up: a parse may begin deep in a running script, on a small thread.
bool IsStackLow(CCoreScriptEngine& engine);

/// Reports that a nesting limit is met, and silences the constructs around.
void ReportLimit(CCoreScriptEngine& engine, const ScriptToken* token, const char* text);

// ---------------------------------------------------------------------------------------------------------
// Symbols

/// Binds a symbol in the global scope, with its initial value, even when a module is loaded while scripts
/// run.
void EnterGlobal(CCoreScriptEngine& engine, CCoreSymbol& symbol);

// ---------------------------------------------------------------------------------------------------------
// Helpers

/// A scope for the time of a parse.
class ParseScope {
 public:
    explicit ParseScope(CCoreScriptEngine& engine) : m_cells(engine.Cells()), m_depth(m_cells.Depth()) {
        m_cells.PushScope();
    }
    ~ParseScope() { m_cells.PopTo(m_depth); }
    ParseScope(const ParseScope&) = delete;
    ParseScope& operator=(const ParseScope&) = delete;

 private:
    NameCells& m_cells;
    int m_depth;
};

/// Gives a variable another value for a while.
template <class T>
class Override {
 public:
    Override(T& variable, T value) : m_variable(variable), m_former(variable) { variable = value; }
    ~Override() { m_variable = m_former; }
    Override(const Override&) = delete;
    Override& operator=(const Override&) = delete;

 private:
    T& m_variable;
    T m_former;
};

/// The symbols of a function or a class while it is parsed. If that fails they go: nothing has run that could
/// have kept one.
class SymbolsOfPart {
 public:
    explicit SymbolsOfPart(EngineState& state) : m_state(state), m_owner(state.owner, &m_symbols) {}
    ~SymbolsOfPart() { m_state.symbolsOfTexts -= m_symbols.size(); }
    SymbolsOfPart(const SymbolsOfPart&) = delete;
    SymbolsOfPart& operator=(const SymbolsOfPart&) = delete;

    /// Gives them to the engine, which has room for them.
    void Keep() {
        for (std::unique_ptr<CCoreSymbol>& symbol : m_symbols)
            m_state.symbols.push_back(std::move(symbol));
    }

 private:
    EngineState& m_state;
    SymbolList m_symbols;
    const Override<SymbolList*> m_owner;
};

/// Counts one level of nesting while it lives.
class NestingLevel {
 public:
    explicit NestingLevel(int& level) : m_level(level) { ++m_level; }
    ~NestingLevel() { --m_level; }
    NestingLevel(const NestingLevel&) = delete;
    NestingLevel& operator=(const NestingLevel&) = delete;

 private:
    int& m_level;
};

/// A new symbol. The library's heap answers null when it is exhausted; parsing then ends like every other
/// lack of memory. So for statements.
template <class T, class... Args>
std::unique_ptr<T> MakeSymbol(Args&&... args) {
    std::unique_ptr<T> symbol(new T(std::forward<Args>(args)...));
    if (symbol == nullptr) throw std::bad_alloc();
    return symbol;
}

/// A new statement that takes over its parts.
template <class T, class... Parts>
std::unique_ptr<T> MakeStatement(std::unique_ptr<Parts>&... parts) {
    std::unique_ptr<T> statement(new T(parts.get()...));
    if (statement == nullptr) throw std::bad_alloc();
    (static_cast<void>(parts.release()), ...);
    return statement;
}

}  // namespace brenta
