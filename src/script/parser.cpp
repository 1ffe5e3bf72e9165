// Modules, sequences of statements and the dispatch to the constructs; the helpers of all parse functions.
#include "script/parser.h"

#include "script/executor.h"
#include "script/symbol_access.h"
#include "script/value_limits.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Tokens and messages

CScriptMsgStream& CCoreScriptEngine::Messages() {
    if (m_pMessages == nullptr) {
        m_pMessages = new CScriptMsgStream;
        m_ownsMessages = true;
    }
    return *m_pMessages;
}

ScriptToken* CCoreScriptEngine::Advance(TIter<ScriptToken*>& iter, TokId expected) {
    if (!iter.Next()) {
        ReportEnd(*this, nullptr);
        return nullptr;
    }
    ScriptToken* const token = CurrentToken(iter);
    return expected == TOK_NONE || AssertToken(token, expected) ? token : nullptr;
}

bool CCoreScriptEngine::AssertToken(ScriptToken* token, TokId expected) {
    if (token == nullptr) {
        ReportEnd(*this, nullptr);
        return false;
    }
    if (token->id == expected) return true;
    Messages().Error(PositionOf(token), "Syntax error: expecting '%s', but found '%s'",
                     GetTokenErrorText(expected), GetTokenErrorText(token->id));
    return false;
}

// A module may be loaded while scripts run, from a host object that they called: its names still go to the
// global scope, and so it is there that they must be new.
bool CCoreScriptEngine::AssertSymbolName(const ScriptToken* at, STRID name, bool mustExist) {
    const NameCell* const cell = Cells().FindCell(name);
    const bool bound = cell != nullptr && cell->symbol != nullptr;
    if (mustExist) {
        if (bound) return true;
        Messages().Error(PositionOf(at), "Symbol '%s' not defined.", StrPtr(name));
        return false;
    }
    const bool global = Cells().Depth() == m_pState->moduleDepth;
    if (!bound || !(global ? Cells().IsGlobal(*cell) : Cells().IsInTopScope(*cell))) return true;
    Messages().Error(PositionOf(at), "Symbol '%s' already defined.", StrPtr(name));
    return false;
}

void ReportEnd(CCoreScriptEngine& engine, const ScriptToken* token) {
    static constexpr char kText[] = "Unexpected end-of-file.";
    if (token == nullptr) {
        engine.Messages().Error("", "%s", kText);
    } else {
        engine.Messages().Error(PositionOf(token), "%s", kText);
    }
}

ScriptToken* AdvanceToAny(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter) {
    ScriptToken* const token = engine.Advance(iter, TOK_NONE);
    if (token == nullptr || token->id != TOK_END) return token;
    ReportEnd(engine, token);
    return nullptr;
}

void ReportConstruct(CCoreScriptEngine& engine, const ScriptToken* token, const char* text) {
    if (!engine.State().limitReported) engine.Messages().Error(PositionOf(token), "%s", text);
}

void ReportLimit(CCoreScriptEngine& engine, const ScriptToken* token, const char* text) {
    engine.Messages().Error(PositionOf(token), "%s", text);
    engine.State().limitReported = true;
}

bool IsStackLow(CCoreScriptEngine& engine) {
    const Executor* const executor = engine.State().executor.get();
    return executor != nullptr && executor->StackIsLow();
}

// ---------------------------------------------------------------------------------------------------------
// Sequences of statements

bool FinishStatement(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, StatementSequence sequence) {
    ScriptToken* const token = CurrentToken(iter);
    if (!engine.State().openStatement) {
        iter.Next();
        return true;
    }
    if (IsEnd(token)) return true;
    if (sequence == StatementSequence::Block && token->id == TOK_RCURLY) return true;
    if (token->id == TOK_SEMI || (sequence == StatementSequence::Command && token->id == TOK_RPAREN)) {
        iter.Next();
        return true;
    }
    return engine.AssertToken(token, TOK_SEMI);
}

// { `;` | statement }
bool ParseSequence(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, StatementSequence sequence,
                   CompoundStatement& into) {
    for (;;) {
        const ScriptToken* const token = CurrentToken(iter);
        if (IsEnd(token)) {
            if (sequence != StatementSequence::Block) return true;
            ReportEnd(engine, token);
            return false;
        }
        if (sequence == StatementSequence::Block && token->id == TOK_RCURLY) return true;
        if (token->id == TOK_SEMI || (sequence == StatementSequence::Command && token->id == TOK_RPAREN)) {
            iter.Next();
            continue;
        }
        std::unique_ptr<Statement> statement(engine.ParseStatement(iter));
        if (statement == nullptr) return false;
        into.AddStatement(statement.get());
        static_cast<void>(statement.release());
        if (!FinishStatement(engine, iter, sequence)) return false;
    }
}

namespace {

/// Takes what was bound in the top scope meanwhile out of it again.
class BindingMark {
 public:
    explicit BindingMark(NameCells& cells) : m_cells(cells), m_mark(cells.Mark()) {}
    ~BindingMark() { m_cells.RollBackTo(m_mark); }
    BindingMark(const BindingMark&) = delete;
    BindingMark& operator=(const BindingMark&) = delete;

 private:
    NameCells& m_cells;
    std::size_t m_mark;
};

bool IsBound(const NameCells& cells, const CCoreSymbol& symbol) {
    const NameCell* const cell = cells.FindCell(symbol.GetName());
    if (cell == nullptr || cell->symbol == nullptr) return false;
    return cell->symbol == &symbol || cells.IsBound(symbol);
}

}  // namespace

bool ParsedText::Parse(TIter<ScriptToken*>& iter, StatementSequence sequence) {
    const BindingMark mark(m_engine.Cells());
    const Override owner(m_engine.State().owner, &m_symbols);
    m_pStatements = MakeStatement<CompoundStatement>();
    return ParseSequence(m_engine, iter, sequence, *m_pStatements);
}

ParsedText::~ParsedText() {
    EngineState& state = m_engine.State();
    for (std::unique_ptr<CCoreSymbol>& symbol : m_symbols) {
        --state.symbolsOfTexts;
        if (IsBound(m_engine.Cells(), *symbol)) state.symbols.push_back(std::move(symbol));
    }
}

// compound := `{` { `;` | statement } `}`
CompoundStatement* CCoreScriptEngine::ParseCompoundStatement(TIter<ScriptToken*>& iter) {
    if (!AssertToken(CurrentToken(iter), TOK_LCURLY)) return nullptr;
    iter.Next();
    auto block = MakeStatement<CompoundStatement>();
    if (!ParseSequence(*this, iter, StatementSequence::Block, *block)) return nullptr;
    m_pState->openStatement = false;
    return block.release();
}

// ---------------------------------------------------------------------------------------------------------
// Statements

// statement := { `;` } ( print | execute | if | for | foreach | while | break | continue | return
//                      | declaration | `_halt` | compound | expression )
Statement* CCoreScriptEngine::ParseStatement(TIter<ScriptToken*>& iter) {
    EngineState& state = *m_pState;
    if (state.statementDepth == 0) state.limitReported = false;
    const NestingLevel level(state.statementDepth);
    const ScriptToken* token = CurrentToken(iter);
    while (token != nullptr && token->id == TOK_SEMI) {
        iter.Next();
        token = CurrentToken(iter);
    }
    if (IsEnd(token)) {
        ReportEnd(*this, token);
        return nullptr;
    }
    if (state.statementDepth > kMaxStatementDepth || IsStackLow(*this)) {
        ReportLimit(*this, token, "Statement nested too deeply.");
        return nullptr;
    }
    switch (token->id) {
        case TOK_PRINT:
            return ParsePrintStatement(iter);
        case TOK_EXECUTE:
            return ParseExecStatement(iter);
        case TOK_IF:
            return ParseConditionalStatement(iter);
        case TOK_FOR:
        case TOK_FOREACH:
        case TOK_WHILE:
            return ParseIterationStatement(iter);
        case TOK_BREAK:
        case TOK_CONTINUE:
        case TOK_RETURN:
            return ParseJumpStatement(iter);
        case TOK_VAR:
            return ParseDeclaration(iter, false);
        case TOK__HALT:
            return ParseHaltStatement(iter);
        case TOK_LCURLY: {
            const ParseScope scope(*this);
            return ParseCompoundStatement(iter);
        }
        default:
            return ParseExpression(iter);
    }
}

// ---------------------------------------------------------------------------------------------------------
// Modules

void EnterGlobal(CCoreScriptEngine& engine, CCoreSymbol& symbol) {
    NameCells& cells = engine.Cells();
    cells.BindGlobal(cells.CellOf(symbol.GetName()), &symbol, SymbolAccess::StartValue(symbol));
}

namespace {

bool ParseGlobalFunction(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter) {
    FuncSymbol* function = nullptr;
    {
        SymbolsOfPart symbols(engine.State());
        function = engine.ParseFunction(iter);
        if (function == nullptr) return false;
        symbols.Keep();
    }
    engine.State().Own(function);
    EnterGlobal(engine, *function);
    return true;
}

// item := `function` function-def | `var` declaration | `class` class-def
bool ParseModuleItem(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter) {
    const ScriptToken* const token = CurrentToken(iter);
    switch (token->id) {
        case TOK_FUNCTION:
            return ParseGlobalFunction(engine, iter);
        case TOK_VAR:
            return std::unique_ptr<DeclarationStatement>(engine.ParseDeclaration(iter, true)) != nullptr;
        case TOK_CLASS:
            return engine.ParseClass(iter);
        default:
            engine.Messages().Error(PositionOf(token), "Syntax error.");
            return false;
    }
}

// script := { item | `;` } end
bool ParseModule(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter) {
    for (;;) {
        const ScriptToken* const token = CurrentToken(iter);
        if (IsEnd(token)) return true;
        if (token->id == TOK_SEMI) {
            iter.Next();
            continue;
        }
        if (!ParseModuleItem(engine, iter)) return false;
        if (!FinishStatement(engine, iter, StatementSequence::Text)) return false;
    }
}

}  // namespace

bool CCoreScriptEngine::ParseScript() {
    Messages();
    TIter<ScriptToken*> iter = GetFirstToken();
    EngineState& state = *m_pState;
    if (state.inspectTokens != nullptr) state.inspectTokens(iter, state.inspectContext);
    state.limitReported = false;
    const Override level(state.moduleDepth, Cells().Depth());
    const Override owner(state.owner, &state.symbols);
    const bool parsed = ParseModule(*this, iter);
    FlushTokens();
    return parsed;
}

}  // namespace brenta
