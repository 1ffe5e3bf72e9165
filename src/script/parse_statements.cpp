// Branches, loops, jumps and the small statements.
#include "brenta/failure.h"
#include "script/parser.h"

namespace brenta {
namespace {

/// An expression in brackets, entered on the keyword before the `(` and left on the `)`. `complaint` is what
/// the construct adds when the expression fails.
///
/// bracketed := `(` expression `)`
std::unique_ptr<ExpressionStatement> ParseBracketed(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter,
                                                    const char* complaint) {
    const ScriptToken* const keyword = CurrentToken(iter);
    if (engine.Advance(iter, TOK_LPAREN) == nullptr || AdvanceToAny(engine, iter) == nullptr) return nullptr;
    std::unique_ptr<ExpressionStatement> expression(engine.ParseExpression(iter));
    if (expression == nullptr) {
        ReportConstruct(engine, keyword, complaint);
        return nullptr;
    }
    if (!engine.AssertToken(CurrentToken(iter), TOK_RPAREN)) return nullptr;
    return expression;
}

/// The statement behind the token on which the iterator stands: a branch or the body of a loop.
std::unique_ptr<Statement> ParseBranch(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter) {
    if (AdvanceToAny(engine, iter) == nullptr) return nullptr;
    return std::unique_ptr<Statement>(engine.ParseStatement(iter));
}

/// Steps to an `else` behind a branch, if there is one. It can only stand behind a closed branch or behind
/// the `;` of an open one; an open branch that ended elsewhere is for the caller to judge.
bool StepToElse(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter) {
    const ScriptToken* const last = CurrentToken(iter);
    if (engine.State().openStatement && (last == nullptr || last->id != TOK_SEMI)) return false;
    TIter<ScriptToken*> next = iter;
    next.Next();
    const ScriptToken* const token = CurrentToken(next);
    if (token == nullptr || token->id != TOK_ELSE) return false;
    iter = next;
    return true;
}

/// `if (condition) branch`, entered on the `if`.
std::unique_ptr<ConditionalStatement> ParseIf(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter) {
    auto condition = ParseBracketed(engine, iter, "Expection valid expression");
    if (condition == nullptr) return nullptr;
    auto branch = ParseBranch(engine, iter);
    if (branch == nullptr) return nullptr;
    std::unique_ptr<Statement> none;
    return MakeStatement<ConditionalStatement>(condition, branch, none);
}

}  // namespace

// conditional := `if` `(` expression `)` statement [ `else` statement ]
//
// Else-if chains are followed in a loop: the chain of a generated decision table is as long as the table.
ConditionalStatement* CCoreScriptEngine::ParseConditionalStatement(TIter<ScriptToken*>& iter) {
    if (!AssertToken(CurrentToken(iter), TOK_IF)) return nullptr;
    auto first = ParseIf(*this, iter);
    ConditionalStatement* last = first.get();
    while (last != nullptr && StepToElse(*this, iter)) {
        TIter<ScriptToken*> next = iter;
        next.Next();
        const ScriptToken* const token = CurrentToken(next);
        if (token == nullptr || token->id != TOK_IF) {
            last->m_pElse = ParseBranch(*this, iter).release();
            if (last->m_pElse == nullptr) return nullptr;
            break;
        }
        iter = next;
        ConditionalStatement* const link = ParseIf(*this, iter).release();
        last->m_pElse = link;
        last = link;
    }
    return last != nullptr ? first.release() : nullptr;
}

// ---------------------------------------------------------------------------------------------------------
// Loops

namespace {

/// A new loop that takes over its parts.
template <class... Parts>
std::unique_ptr<IterationStatement> MakeLoop(CCoreScriptEngine& engine, const ScriptToken* keyword,
                                             Parts*... parts) {
    std::unique_ptr<IterationStatement> loop(new IterationStatement(parts...));
    if (loop == nullptr) engine.Messages().Error(PositionOf(keyword), "Invalid iteration statement.");
    return loop;
}

/// A statement that is over at `;`, on which the iterator is left: the first part of a `for`.
std::unique_ptr<Statement> ParseInit(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter,
                                     const ScriptToken* keyword) {
    if (AdvanceToAny(engine, iter) == nullptr) return nullptr;
    std::unique_ptr<Statement> init(engine.ParseStatement(iter));
    if (init == nullptr) {
        ReportConstruct(engine, keyword, "Expection valid init statement.");
        return nullptr;
    }
    if (!engine.AssertToken(CurrentToken(iter), TOK_SEMI)) return nullptr;
    return init;
}

/// An expression behind the token on which the iterator stands, up to and on `closing`.
std::unique_ptr<ExpressionStatement> ParsePart(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter,
                                               const ScriptToken* keyword, TokId closing) {
    if (AdvanceToAny(engine, iter) == nullptr) return nullptr;
    std::unique_ptr<ExpressionStatement> part(engine.ParseExpression(iter));
    if (part == nullptr) {
        ReportConstruct(engine, keyword, "Expection valid expression.");
        return nullptr;
    }
    if (!engine.AssertToken(CurrentToken(iter), closing)) return nullptr;
    return part;
}

// for-head := `for` `(` statement `;` expression `;` expression `)`
std::unique_ptr<IterationStatement> ParseForHead(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter) {
    const ScriptToken* const keyword = CurrentToken(iter);
    if (engine.Advance(iter, TOK_LPAREN) == nullptr) return nullptr;
    auto init = ParseInit(engine, iter, keyword);
    if (init == nullptr) return nullptr;
    auto condition = ParsePart(engine, iter, keyword, TOK_SEMI);
    if (condition == nullptr) return nullptr;
    auto step = ParsePart(engine, iter, keyword, TOK_RPAREN);
    if (step == nullptr) return nullptr;
    auto loop = MakeLoop(engine, keyword, init.get(), condition.get(), step.get());
    if (loop == nullptr) return nullptr;
    static_cast<void>(init.release());
    static_cast<void>(condition.release());
    static_cast<void>(step.release());
    return loop;
}

// while-head := `while` `(` expression `)`
std::unique_ptr<IterationStatement> ParseWhileHead(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter) {
    const ScriptToken* const keyword = CurrentToken(iter);
    auto condition = ParseBracketed(engine, iter, "Expection valid expression.");
    if (condition == nullptr) return nullptr;
    auto loop = MakeLoop(engine, keyword, condition.get());
    if (loop != nullptr) static_cast<void>(condition.release());
    return loop;
}

// foreach-head := `foreach` `(` ID `in` expression `)`
//
// The variable is entered into the scope in which the loop stands, so that a second loop with the same
// variable in one block is found out here.
std::unique_ptr<IterationStatement> ParseForeachHead(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter) {
    const ScriptToken* const keyword = CurrentToken(iter);
    if (engine.Advance(iter, TOK_LPAREN) == nullptr) return nullptr;
    const ScriptToken* const token = engine.Advance(iter, ID);
    if (token == nullptr || !engine.AssertSymbolName(token, token->GetValue(), false)) return nullptr;
    const STRID name = token->GetValue();
    auto variable = MakeSymbol<ScriptSymbol>(name, Var(name), nullptr);
    if (engine.Advance(iter, TOK_IN) == nullptr) return nullptr;
    auto collection = ParsePart(engine, iter, keyword, TOK_RPAREN);
    if (collection == nullptr) return nullptr;
    auto loop = MakeLoop(engine, keyword, variable.get(), collection.get());
    if (loop == nullptr) return nullptr;
    static_cast<void>(collection.release());
    engine.AddSymbol(name, variable.get());
    engine.State().Own(variable.release());
    return loop;
}

/// The head of a loop up to its `)`. The dispatch lets no other keyword through.
std::unique_ptr<IterationStatement> ParseLoopHead(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter) {
    const ScriptToken* const keyword = CurrentToken(iter);
    switch (keyword != nullptr ? keyword->id : TOK_NONE) {
        case TOK_FOR:
            return ParseForHead(engine, iter);
        case TOK_FOREACH:
            return ParseForeachHead(engine, iter);
        case TOK_WHILE:
            return ParseWhileHead(engine, iter);
        default:
            ForcedCrash(0, "CoreScriptStatement", __LINE__, "Forced crash! \"Unknown iteration statement.\"");
            engine.Messages().Error(PositionOf(keyword), "Invalid iteration statement.");
            return nullptr;
    }
}

}  // namespace

// iteration := ( for-head | foreach-head | while-head ) statement
IterationStatement* CCoreScriptEngine::ParseIterationStatement(TIter<ScriptToken*>& iter) {
    auto loop = ParseLoopHead(*this, iter);
    if (loop == nullptr) return nullptr;
    if (loop->m_pVariable != nullptr) loop->m_pCell = &Cells().CellOf(loop->m_pVariable->GetName());
    auto body = ParseBranch(*this, iter);
    if (body == nullptr) return nullptr;
    loop->SetBody(body.release());
    return loop.release();
}

// ---------------------------------------------------------------------------------------------------------
// Jumps

// jump := `break` `;` | `continue` `;` | `return` expression
JumpStatement* CCoreScriptEngine::ParseJumpStatement(TIter<ScriptToken*>& iter) {
    const ScriptToken* const keyword = CurrentToken(iter);
    const TokId kind = keyword != nullptr ? keyword->id : TOK_NONE;
    std::unique_ptr<ExpressionStatement> result;
    switch (kind) {
        case TOK_BREAK:
        case TOK_CONTINUE:
            if (Advance(iter, TOK_SEMI) == nullptr) return nullptr;
            m_pState->openStatement = false;
            break;
        case TOK_RETURN:
            if (Advance(iter, TOK_NONE) == nullptr) return nullptr;
            result.reset(ParseExpression(iter));
            if (result == nullptr) {
                ReportConstruct(*this, keyword, "Expection valid expression.");
                return nullptr;
            }
            break;
        default:
            ForcedCrash(0, "CoreScriptStatement", __LINE__, "Forced crash! \"Unknown jump statement.\"");
            return nullptr;
    }
    auto* const jump = new JumpStatement(kind, result.get());
    if (jump == nullptr) throw std::bad_alloc();
    static_cast<void>(result.release());
    return jump;
}

// ---------------------------------------------------------------------------------------------------------
// The small statements

namespace {

// print := `print` bracketed    exec := `execute` bracketed
template <class T>
T* ParseOutput(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, TokId keyword) {
    if (!engine.AssertToken(CurrentToken(iter), keyword)) return nullptr;
    auto expression = ParseBracketed(engine, iter, "Expection valid expression");
    if (expression == nullptr) return nullptr;
    engine.State().openStatement = false;
    return MakeStatement<T>(expression).release();
}

}  // namespace

PrintStatement* CCoreScriptEngine::ParsePrintStatement(TIter<ScriptToken*>& iter) {
    return ParseOutput<PrintStatement>(*this, iter, TOK_PRINT);
}

ExecStatement* CCoreScriptEngine::ParseExecStatement(TIter<ScriptToken*>& iter) {
    return ParseOutput<ExecStatement>(*this, iter, TOK_EXECUTE);
}

HaltStatement* CCoreScriptEngine::ParseHaltStatement(TIter<ScriptToken*>& iter) {
    if (!AssertToken(CurrentToken(iter), TOK__HALT)) return nullptr;
    m_pState->openStatement = false;
    return MakeStatement<HaltStatement>().release();
}

}  // namespace brenta
