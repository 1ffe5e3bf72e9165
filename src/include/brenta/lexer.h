/// @file
/// The pattern lexer (CCoreLexer), whose token kinds are patterns given at run time, and the script lexer
/// (CCoreScriptLexer), which defines the scripting language's tokens through it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "brenta/containers.h"
#include "brenta/export.h"
#include "brenta/heap.h"
#include "brenta/message_stream.h"
#include "brenta/names.h"
#include "brenta/string.h"
#include "brenta/symbols.h"
#include "brenta/var.h"

namespace brenta {

class PatternProgram;  // internal: the token kinds flattened for matching
class TokenArena;      // internal: where script tokens and their texts live
class StreamGuard;     // internal: restores input and tokens after a nested scan

/// A set of bytes, one entry per byte value, each 0 or 1.
struct RECharClass {
    std::uint8_t entries[256];
};

/// One node of a compiled pattern.
struct REAtom {
    enum Flags : std::uint8_t {
        kNegated = 1,
        kAlternative = 2,
        kRepeat = 4,
        kOptional = 8,
        kCharClass = 16,
        kOpenTag = 32,
        kCloseTag = 64,
    };
    REAtom* child = nullptr;
    REAtom* next = nullptr;
    std::uint8_t flags = 0;
    std::uintptr_t data = 0;
};

/// A token kind.
class BRENTA_API CREToken {
   public:
    CREToken(STRID name, int id, bool skip);
    CREToken(const CREToken&) = delete;
    CREToken& operator=(const CREToken&) = delete;
    virtual std::size_t SizeOf() const;
    virtual const char* GetClassName() const;
    virtual const char* GetBaseClassName() const;
    virtual ~CREToken();

    REAtom* pattern = nullptr;
    int id;
    STRID name;
    bool skip;
    const char* tagStarts[5] = {};
    const char* tagEnds[5] = {};
    CoreString error;

    BRENTA_HEAP_OPERATORS
};

/// An input text on the lexer's stack.
struct LexStream {
    bool ownsText;
    STRID name;
    int line;
    const char* text;
    const char* position;
};

/// What GetToken fills in.
struct LexToken {
    int id = 0;
    int line = 0;
    STRID file = kNoName;
    const char* name = "";
    int length = 0;
    const char* text = nullptr;
};

class BRENTA_API CCoreLexer : public CCoreSymbolTable {
   public:
    CCoreLexer();
    CCoreLexer(const CCoreLexer& other);
    CCoreLexer& operator=(const CCoreLexer& other);
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~CCoreLexer() override;

    bool DefineToken(const char* name, int id, const char* pattern, bool skip);
    /// The message of the last DefineToken that failed, "" if none did.
    const CoreString& GetPatternError() const { return m_patternError; }
    bool GetToken(LexToken& token);
    Var& GetTag(int n);
    void PushStream(const char* name, int line, const char* text, bool ownsText);
    bool SetPos(const char* name, int line, const char* position);
    bool GetPos(CoreString& name, int& line, const char*& position) const;
    void FlushInput();

    int GetScanCount() const { return m_scanCount; }
    int GetCleanScanCount() const { return m_cleanScanCount; }

   protected:
    void ComputeStarts();
    void ComputeStart(CREToken* token, REAtom* atom);
    RECharClass* AddCharClass(RECharClass& charClass);
    /// The tag's captured text of the last token, null and length 0 when absent; not copied, not terminated.
    const char* TagText(int n, std::size_t& length) const;
    LexStream* CurrentStream() const { return m_pStream; }

   private:
    friend class StreamGuard;
    // The owner of this header arranges the members behind these; order as documented.
    int m_scanCount = 0;
    int m_cleanScanCount = 0;
    TOrderedList<CREToken*> m_tokens;
    PatternProgram* m_pProgram = nullptr;  // start table and flattened patterns
    TOrderedList<RECharClass*> m_classes;
    TStack<LexStream*> m_streams;
    LexStream* m_pStream = nullptr;
    bool m_startsStale = true;
    STRID m_tagNames[5] = {};
    Var m_tagValues[5];
    const char* m_tagStarts[5] = {};
    const char* m_tagEnds[5] = {};
    CoreString m_patternError;
};

/// Identifiers of the script language's tokens. The values are fixed.
enum TokId : int {
    TOK_END = -1,
    TOK_NONE = 0,
    TOK_ASSIGN = 1, TOK_MUL_ASSIGN, TOK_DIV_ASSIGN, TOK_MOD_ASSIGN, TOK_ADD_ASSIGN, TOK_SUB_ASSIGN,
    TOK_SHL_ASSIGN, TOK_SHR_ASSIGN, TOK_AND_ASSIGN, TOK_XOR_ASSIGN, TOK_OR_ASSIGN,
    TOK_LOG_OR = 12, TOK_LOG_AND, TOK_OR, TOK_XOR, TOK_AND,
    TOK_EQ = 17, TOK_NOT_EQ, TOK_LESS, TOK_GREATER, TOK_LEQ, TOK_GEQ,
    TOK_SHL = 23, TOK_SHR, TOK_ADD, TOK_SUB, TOK_MUL, TOK_DIV, TOK_MOD,
    TOK_PRINT = 30, TOK_EXECUTE, TOK_INCLUDE, TOK_INTERFACE, TOK_FUNCTION, TOK_METHOD, TOK_IF, TOK_ELSE,
    TOK_FOR = 38, TOK_FOREACH, TOK_IN, TOK_WHILE, TOK_CONTINUE, TOK_BREAK, TOK_RETURN, TOK_VAR, TOK_AS,
    TOK_CLASS = 47, TOK_INHERITS, TOK_ENUM, TOK__HALT, TOK_TRUE, TOK_FALSE, TOK_NULL,
    TOK_LCURLY = 54, TOK_RCURLY, TOK_COMMA, TOK_SEMI, TOK_MEMBER, TOK_INV, TOK_NOT, TOK_INC, TOK_DEC,
    TOK_LBRACKET = 63, TOK_RBRACKET, TOK_LPAREN, TOK_RPAREN,
    CHAR_CONSTANT = 67, BINARY_CONSTANT, DEC_CONSTANT, HEX_CONSTANT, FLOAT_CONSTANT, SLITERAL, ID,
    BLOCK_COMMENT = 74, LINE_COMMENT, WS,
};

/// A token of a script. Its texts live as long as the token list it stands in.
///
/// The value is interned only when asked for: numbers carry their converted value beside their text.
struct BRENTA_API ScriptToken {
    TokId id = TOK_NONE;
    STRID file = kNoName;
    int line = 0;
    /// A DEC_CONSTANT or FLOAT_CONSTANT carried a unit suffix: `number` is in internal units.
    bool hasUnit = false;
    /// DEC_CONSTANT and FLOAT_CONSTANT: the number. 0 for all others.
    double number = 0;
    /// The value text (not an interned text, but terminated); "" when the token has none.
    const char* text = "";
    std::uint32_t length = 0;

    /// The value as an identifier: for ID the name, for the constants the text of tag 1 or the converted number.
    STRID GetValue() const;

   private:
    mutable STRID m_value = kNoName;
};

class BRENTA_API CCoreScriptLexer : public CCoreLexer {
   public:
    using Token = ScriptToken;

    CCoreScriptLexer(bool option, bool keepComments);
    CCoreScriptLexer(const CCoreScriptLexer& other);
    CCoreScriptLexer& operator=(const CCoreScriptLexer& other);
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~CCoreScriptLexer() override;
    virtual bool LoadScriptModule(const char* file);
    virtual bool InjectScriptText(const char* name, const char* text, bool scan);

    bool GetRawToken(LexToken& token);
    TIter<Token*> GetFirstToken();
    void FlushTokens();
    bool ExtractTokenInteger(const Token& token, int& value) const;
    static const char* GetTokenErrorText(TokId id);

   protected:
    friend class StreamGuard;
    int GetBinValue(const char* digits) const;
    int GetHexValue(const char* digits) const;
    bool ExtractEscSeq(const char* afterBackslash, int& value) const;

    bool IncludeScriptModule(const char* file);
    bool ScanInput();

    CScriptMsgStream* m_pMessages = nullptr;
    bool m_ownsMessages = false;
    bool m_unitsSeen = false;
    /// Where the scan stopped when ScanInput failed.
    ScriptPosition m_scanError;

   private:
    void DefineGrammar();

    bool m_option;
    bool m_keepComments;
    STRID m_tagName;
    TOrderedList<Token*> m_tokenList;
    TokenArena* m_pArena;
};

}  // namespace brenta
