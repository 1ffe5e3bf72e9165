// Functions, classes and variables.
#include <algorithm>

#include "script/created_objects.h"
#include "script/expression_nodes.h"
#include "script/parser.h"
#include "script/symbol_access.h"
#include "script/token_classes.h"
#include "script/value_limits.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Functions

namespace {

// parameters := `(` [ ID { `,` ID } ] `)`
bool ParseParameters(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, FuncSymbol& function) {
    ScriptToken* token = engine.Advance(iter, TOK_LPAREN);
    if (token == nullptr || (token = engine.Advance(iter, TOK_NONE)) == nullptr) return false;
    if (token->id == TOK_RPAREN) return true;
    for (;;) {
        if (!engine.AssertToken(token, ID)) return false;
        const STRID name = token->GetValue();
        if (!engine.AssertSymbolName(token, name, false)) return false;
        if (!function.AddParam(token, &engine.Messages(), name)) return false;
        if ((token = engine.Advance(iter, TOK_NONE)) == nullptr) return false;
        if (token->id != TOK_COMMA) return engine.AssertToken(token, TOK_RPAREN);
        if ((token = engine.Advance(iter, TOK_NONE)) == nullptr) return false;
    }
}

// The parameters stand in a scope around the body's own names, as they will when it is called.
bool ParseBody(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, FuncSymbol& function) {
    const ParseScope scope(engine);
    for (TIter<ScriptSymbol*> param = function.GetFirstParam(); param.Get() != nullptr; param.Next()) {
        engine.AddSymbol((*param.Get())->GetName(), *param.Get());
    }
    CompoundStatement* const body = engine.ParseCompoundStatement(iter);
    function.SetBody(body);
    return body != nullptr;
}

}  // namespace

// function := `function` ID parameters compound
FuncSymbol* CCoreScriptEngine::ParseFunction(TIter<ScriptToken*>& iter) {
    ScriptToken* const name = Advance(iter, ID);
    if (name == nullptr || !AssertSymbolName(name, name->GetValue(), false)) return nullptr;
    auto function = MakeSymbol<FuncSymbol>(name->GetValue());
    SymbolAccess::SetHome(*function, Cells());
    if (!ParseParameters(*this, iter, *function)) return nullptr;
    if (AdvanceToAny(*this, iter) == nullptr || !ParseBody(*this, iter, *function)) return nullptr;
    return function.release();
}

// ---------------------------------------------------------------------------------------------------------
// Classes

namespace {

/// The class that a name means; null when it means nothing or something else.
ClassSymbol* FindClass(const CCoreScriptEngine& engine, STRID name) {
    CCoreSymbol* const symbol = engine.GetSymbol(name, false);
    if (symbol == nullptr || symbol->GetKind() != SymbolKind::Class) return nullptr;
    return static_cast<ClassSymbol*>(symbol);
}

void ReportNoClass(CCoreScriptEngine& engine, const ScriptToken* at) {
    engine.Messages().Error(PositionOf(at), "Class '%s' not defined.", StrPtr(at->GetValue()));
}

// base := `inherits` ID
ClassSymbol* ParseBase(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter) {
    const ScriptToken* const name = engine.Advance(iter, ID);
    if (name == nullptr || !engine.AssertSymbolName(name, name->GetValue(), true)) return nullptr;
    ClassSymbol* const base = FindClass(engine, name->GetValue());
    if (base == nullptr) ReportNoClass(engine, name);
    return base;
}

/// The position in front of a message: "file(line): ".
CoreString LocationText(const ScriptToken& token) {
    CoreString text;
    text.Format("%s(%d): ", StrPtr(token.file), token.line);
    return text;
}

bool ParseMember(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, ClassSymbol& cls) {
    const CoreString where = LocationText(*CurrentToken(iter));
    std::unique_ptr<DeclarationStatement> member(engine.ParseDeclaration(iter, false));
    if (member == nullptr || !cls.AddMember(where, &engine.Messages(), member.get())) return false;
    member.release();
    return true;
}

bool ParseMethod(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, ClassSymbol& cls) {
    const CoreString where = LocationText(*CurrentToken(iter));
    std::unique_ptr<FuncSymbol> method(engine.ParseFunction(iter));
    if (method == nullptr || !cls.AddFunction(where, &engine.Messages(), method.get())) return false;
    method.release();
    return true;
}

// members := { declaration | function | any other token } up to `}`
bool ParseMembers(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, ClassSymbol& cls) {
    for (;;) {
        const ScriptToken* const token = CurrentToken(iter);
        if (IsEnd(token)) {
            ReportEnd(engine, token);
            return false;
        }
        if (token->id == TOK_RCURLY) return true;
        if (token->id != TOK_VAR && token->id != TOK_FUNCTION) {
            iter.Next();
            continue;
        }
        const bool parsed =
            token->id == TOK_VAR ? ParseMember(engine, iter, cls) : ParseMethod(engine, iter, cls);
        if (!parsed || !FinishStatement(engine, iter, StatementSequence::Block)) return false;
    }
}

}  // namespace

// class := `class` ID [ base ] `{` members `}`
//
// The class is not known before its `}`: a member cannot be of the class that it is a part of.
bool CCoreScriptEngine::ParseClass(TIter<ScriptToken*>& iter) {
    const ScriptToken* const name = Advance(iter, ID);
    if (name == nullptr || !AssertSymbolName(name, name->GetValue(), false)) return false;
    if (AdvanceToAny(*this, iter) == nullptr) return false;
    ClassSymbol* base = nullptr;
    if (CurrentToken(iter)->id == TOK_INHERITS) {
        base = ParseBase(*this, iter);
        if (base == nullptr || AdvanceToAny(*this, iter) == nullptr) return false;
    }
    if (!AssertToken(CurrentToken(iter), TOK_LCURLY)) return false;
    iter.Next();
    auto cls = MakeSymbol<ClassSymbol>(name->GetValue(), base);
    {
        SymbolsOfPart symbols(*m_pState);
        if (!ParseMembers(*this, iter, *cls)) return false;
        symbols.Keep();
    }
    ClassSymbol& entered = *cls;
    m_pState->Own(cls.release());
    EnterGlobal(*this, entered);
    m_pState->openStatement = false;
    return true;
}

// ---------------------------------------------------------------------------------------------------------
// Variables

namespace {

/// What stands between the name and the initialiser of a declaration.
struct DeclaredType {
    int arraySize = 0;           ///< 0: no array
    ClassSymbol* cls = nullptr;  ///< the script's class behind `as`
    STRID scriptable = kNoName;  ///< or the name of the registered one
    Var prototype;               ///< the value of one element, unless it is an object of `cls`
};

bool IsConstant(const ExpressionStatement::SubExpr& node) {
    return node.IsLeaf() && node.kind != ID && IsOperandKind(node.kind);
}

/// The value of an array size. What a check of the source may not run counts as 1.
bool EvaluateSize(CCoreScriptEngine& engine, ExpressionStatement& size, Var& value) {
    if (engine.State().checkOnly && !size.IsEmpty() && !IsConstant(*size.GetRoot())) {
        value = 1;
        return true;
    }
    return size.EvalExpression(engine, value);
}

// size := `[` expression `]`
bool ParseArraySize(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, int& size) {
    const ScriptToken* const bracket = CurrentToken(iter);
    if (AdvanceToAny(engine, iter) == nullptr) return false;
    const std::unique_ptr<ExpressionStatement> expression(engine.ParseExpression(iter));
    if (expression == nullptr || !engine.AssertToken(CurrentToken(iter), TOK_RBRACKET)) return false;
    Var value;
    if (!EvaluateSize(engine, *expression, value)) return false;
    if (value.GetKind() == VarKind::Null && !expression->IsEmpty()) {
        engine.Messages().Error(PositionOf(bracket), "Unknown var type.");
        return false;
    }
    size = value.GetKind() == VarKind::Null ? 0 : value.GetInt();
    if (size < 1) {
        engine.Messages().Error(PositionOf(bracket), "Invalid subscript.");
        return false;
    }
    return engine.Advance(iter, TOK_NONE) != nullptr;
}

// type := `as` ID
bool ParseClassName(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, DeclaredType& type) {
    const ScriptToken* const name = engine.Advance(iter, ID);
    if (name == nullptr) return false;
    type.cls = FindClass(engine, name->GetValue());
    if (type.cls != nullptr) return true;
    type.scriptable = name->GetValue();
    if (!IsScriptableClass(type.scriptable)) {
        ReportNoClass(engine, name);
        return false;
    }
    const bool create = !engine.State().checkOnly;
    type.prototype = Var(create ? TrackCreated(CreateScriptableObject(type.scriptable)) : nullptr, kNoName);
    return true;
}

/// An array or object must not exceed what a script may build; a few lines could ask for all memory.
bool FitsLimits(CCoreScriptEngine& engine, const ScriptToken* at, const DeclaredType& type) {
    const std::uint64_t count = type.arraySize > 0 ? static_cast<std::uint64_t>(type.arraySize) : 1;
    const std::uint64_t members = type.cls != nullptr ? type.cls->GetInstanceWeight() : 0;
    const std::uint64_t weight = std::min(members, kMaxListWeight) + 1;
    const std::uint32_t depth = type.cls != nullptr ? type.cls->GetInstanceDepth() : 0;
    const char* text = nullptr;
    if (weight > kMaxListWeight / count) text = "List too large.";
    if (depth + (type.arraySize > 0 ? 1 : 0) > kMaxListDepth) text = "List nested too deeply.";
    if (text != nullptr) engine.Messages().Error(PositionOf(at), "%s", text);
    return text == nullptr;
}

std::unique_ptr<ScriptSymbol> MakeVariable(STRID name, const DeclaredType& type) {
    if (type.arraySize == 0) {
        Var value = type.prototype;
        value.SetName(name);
        return MakeSymbol<ScriptSymbol>(name, value, type.cls);
    }
    if (type.cls != nullptr) return MakeSymbol<ScriptSymbol>(name, type.cls, type.arraySize);
    return MakeSymbol<ScriptSymbol>(name, type.prototype, type.arraySize);
}

/// An initialiser is `name = value` in any form of assignment, or says no more than what is declared: the
/// name, for an array with its subscript. Anything else would never be evaluated.
bool IsInitialiser(const ExpressionStatement& expression) {
    const ExpressionStatement::SubExpr* const root = expression.GetRoot();
    if (root == nullptr) return false;
    return IsAssignmentKind(root->kind) || root->kind == kSubscriptNode ||
           (root->kind == ID && root->IsLeaf());
}

/// Runs a global declaration and puts the name into the global scope, which is not the top one when a host
/// object that a script has called loads a module. Nothing is bound if it fails.
bool EnterVariable(CCoreScriptEngine& engine, DeclarationStatement& declaration) {
    if (engine.State().checkOnly) {
        EnterGlobal(engine, *declaration.GetSymbol());
        return true;
    }
    NameCell& cell = *declaration.GetCell();
    Value value;
    {
        const ParseScope scope(engine);
        Var scratch;
        if (declaration.Execute(engine, scratch) != EXEC_OK) return false;
        value = cell.value;
    }
    engine.Cells().BindGlobal(cell, declaration.GetSymbol(), std::move(value));
    return true;
}

}  // namespace

// declaration := `var` ID [ size ] [ type ] initialiser
//
// The initialiser is an expression that begins with the name once more: of `var x = 5;` it is `x = 5`, of
// `var x;` it is `x`, and in `var a[2] as T;` the subscript and the type belong to it too, the type being
// skipped there.
DeclarationStatement* CCoreScriptEngine::ParseDeclaration(TIter<ScriptToken*>& iter, bool global) {
    if (!AssertToken(CurrentToken(iter), TOK_VAR)) return nullptr;
    const ScriptToken* const name = Advance(iter, ID);
    if (name == nullptr || !AssertSymbolName(name, name->GetValue(), false)) return nullptr;
    TIter<ScriptToken*> initialiser = iter;
    if (Advance(iter, TOK_NONE) == nullptr) return nullptr;
    DeclaredType type;
    if (CurrentToken(iter)->id == TOK_LBRACKET && !ParseArraySize(*this, iter, type.arraySize))
        return nullptr;
    if (CurrentToken(iter)->id == TOK_AS && !ParseClassName(*this, iter, type)) return nullptr;
    if (!FitsLimits(*this, name, type)) return nullptr;

    // The name is not bound while its initialiser is parsed: only the running expression looks it up.
    std::unique_ptr<ExpressionStatement> expression(ParseExpression(initialiser));
    if (expression == nullptr || !IsInitialiser(*expression)) {
        ReportConstruct(*this, name, "Missing r-value.");
        return nullptr;
    }
    iter = initialiser;
    ScriptSymbol* const symbol = MakeVariable(name->GetValue(), type).release();
    m_pState->Own(symbol);
    std::unique_ptr<DeclarationStatement> declaration(
        new DeclarationStatement(symbol, expression.get(), type.scriptable));
    if (declaration == nullptr) throw std::bad_alloc();
    static_cast<void>(expression.release());
    declaration->m_pCell = &Cells().CellOf(name->GetValue());
    declaration->m_arraySize = type.arraySize;
    if (global && !EnterVariable(*this, *declaration)) return nullptr;
    m_pState->openStatement = true;
    return declaration.release();
}

}  // namespace brenta
