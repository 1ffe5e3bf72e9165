/// @file
/// The pattern lexer (CCoreLexer), whose token kinds are patterns given at run time, and the script lexer
/// (CCoreScriptLexer), which defines the scripting language's tokens through it.
///
/// A host meets the script lexer through the engine built on it (brenta/script.h). Use CCoreLexer itself
/// where a small language has to be read: define the kinds once, then push texts and take tokens.
///
///     CCoreLexer lexer;
///     lexer.DefineToken("NUMBER", 1, "<1>[0-9]+</1><2>(mil|mm)?</2>", false);
///     lexer.DefineToken("SPACE", 2, "[ \t\r\n]+", true);                          // consumed silently
///     lexer.PushStream("input", 1, "12mil 7", false);
///     LexToken token;
///     while (lexer.GetToken(token) && token.id != -1) {
///         Use(lexer.GetTag(1), lexer.GetTag(2));                                  // 12 mil, then 7 null
///     }
///
/// Patterns
/// --------
/// A pattern is a chain of atoms, matched one after another:
///
///     abc           a literal run: exactly these characters. It goes on up to one of | ) < ? + * ( [ > !
///     \x            in a run or a set: \r, \n and \t are the control characters, else the character x itself
///     (chain)       a group, one atom
///     [a-z_]        a set: one byte of it. [!a-z] is every byte that is not in the set
///     <1> </1>      begin and end of tag 1 (to 4): what stands between is handed out by GetTag
///     x* x+ x?      the atom before it any number of times, at least once, at most once
///     x|y           the neighbouring atoms are alternatives; x|y|z is a list of them
///     !x            accepted, without effect
///
/// White space before an atom, and around the operator behind it, is ignored; inside a run and inside a set
/// it counts. A quantifier takes the whole atom before it, so ab+ repeats ab, and "|" takes only its
/// neighbours: (x)a|b is x followed by a or b. There is no atom for "any character", and "." is a dot.
///
/// Matching
/// --------
/// There is no going back. Repetition takes what it can, the first alternative that matches wins (with
/// (in|ins) the text "ins" gives "in"), and nothing is tried a second way afterwards. A pattern whose chain
/// fails half-way still matches what it has taken until then: 0x[0-9a-f]+ takes the "0x" of "0xZ". A group is
/// all or nothing.
///
/// Of all kinds that can start with the byte at the position, the longest match is the token, and among
/// equally long ones the kind defined first. Keywords are therefore defined before the identifiers: "in" is
/// then the keyword and "inx" the identifier. Bytes of 128 and more start no token but may stand inside one.
///
/// Cost
/// ----
/// Patterns are compiled by DefineToken and laid out for matching at the next GetToken. Scanning takes about
/// 10 to 50 ns per token; nothing is allocated, and nothing interned but what tags capture.
///
/// Threads: a lexer is used by one thread at a time; different lexers share nothing but the names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "brenta/containers.h"
#include "brenta/detail/class_name.h"
#include "brenta/export.h"
#include "brenta/heap.h"
#include "brenta/message_stream.h"
#include "brenta/names.h"
#include "brenta/string.h"
#include "brenta/symbols.h"
#include "brenta/var.h"

namespace brenta {

class PatternProgram;  // internal: the token kinds laid out for matching
class TokenArena;      // internal: where script tokens and their texts live
class StreamGuard;     // internal: restores input and tokens after a nested scan

// ---------------------------------------------------------------------------------------------------------------------
// A compiled pattern

/// A set of bytes: entry b is 1 if byte b belongs to it, else 0. Entry 0 is always 0.
struct RECharClass {
    std::uint8_t entries[256];
};

/// One atom of a compiled pattern. Atoms form chains through `next`; a group's enclosed chain starts at
/// `child`.
struct REAtom {
    enum Flags : std::uint8_t {
        kNegated = 1,      ///< "!" stood before it; never read
        kAlternative = 2,  ///< "|" follows
        kRepeat = 4,       ///< "+" or "*" follows
        kOptional = 8,     ///< "?" or "*" follows
        kCharClass = 16,   ///< a set; `data` points to it
        kOpenTag = 32,     ///< "<n>"; `data` is n
        kCloseTag = 64,    ///< "</n>"; `data` is n
    };

    REAtom* child = nullptr;  ///< null for everything but a group
    REAtom* next = nullptr;   ///< null at the end of the chain
    std::uint8_t flags = 0;   ///< Flags, combined
    /// A tag: its number. A set: its RECharClass*, owned by the lexer. A literal run: its text as a STRID. 0
    /// for an empty atom, which matches without taking anything.
    std::uintptr_t data = 0;
};

/// A token kind: what DefineToken was told, and the captures of the match that was tried last.
///
/// The lexer owns its kinds; they stand here for classes derived from it. A kind owns its atoms, not the sets
/// that they refer to, which are the lexer's.
class BRENTA_API CREToken {
 public:
    /// A kind without a pattern; `name` and `id` are handed back with each token, kinds with `skip` set are
    /// consumed silently.
    CREToken(STRID name, int id, bool skip);
    CREToken(const CREToken&) = delete;
    CREToken& operator=(const CREToken&) = delete;

    virtual std::size_t SizeOf() const;
    virtual const char* GetClassName() const;      ///< "CREToken"
    virtual const char* GetBaseClassName() const;  ///< "none"
    virtual ~CREToken();                           ///< frees the atoms

    REAtom* pattern = nullptr;  ///< the first atom; owned
    int id;                     ///< what LexToken::id says
    STRID name;                 ///< what LexToken::name says; kNoName for none
    bool skip;                  ///< GetToken passes over tokens of this kind
    /// Where each tag's capture starts and ends in the match tried last, null where the match did not come
    /// by.
    const char* tagStarts[5] = {};
    const char* tagEnds[5] = {};
    CoreString error;  ///< why the pattern did not compile, else ""

    BRENTA_HEAP_OPERATORS
};

// ---------------------------------------------------------------------------------------------------------------------
// Input and output of a scan

/// A text on the lexer's stack of inputs. Its record is the lexer's; the text is too, if `ownsText` says so,
/// and otherwise has to stay until the stream has ended.
struct LexStream {
    bool ownsText;         ///< the text is given back, with delete[], when the stream ends
    STRID name;            ///< a file name for files
    int line;              ///< of the next character
    const char* text;      ///< the first character; terminated
    const char* position;  ///< the next character
};

/// A token as GetToken fills it in.
struct LexToken {
    int id = 0;                  ///< the kind's; -1 at the end of all input, 0 when no kind matches
    int line = 0;                ///< of the first character
    STRID file = kNoName;        ///< the name of the stream, kNoName if it has none
    const char* name = "";       ///< the kind's, "" if it has none; interned
    int length = 0;              ///< in bytes
    const char* text = nullptr;  ///< the first character inside the stream's text: not a copy, not terminated
};

// ---------------------------------------------------------------------------------------------------------------------
// The pattern lexer

/// Splits texts into tokens of kinds defined at run time; see the head of this file.
///
/// Input is a stack of texts: one that is pushed while another is being read is read first, as for an
/// include, and the outer one goes on where it stood. The lexer is also a symbol table (its scopes are the
/// script engine's); it uses none of it itself.
class BRENTA_API CCoreLexer : public CCoreSymbolTable {
 public:
    /// No kinds and no input; the symbol table's global scope is open.
    CCoreLexer();
    /// Copies the kinds, the tag values and the counters. The copy has no input: streams stay where they are.
    CCoreLexer(const CCoreLexer& other);
    /// The same; this lexer's own kinds and input are given up first. Assigning a lexer to itself changes
    /// nothing.
    CCoreLexer& operator=(const CCoreLexer& other);

    std::size_t SizeOf() const override;            ///< in bytes
    const char* GetClassName() const override;      ///< "CCoreLexer"
    const char* GetBaseClassName() const override;  ///< "CCoreSymbolTable"
    /// Drops all input, as FlushInput does, and the kinds with their patterns.
    ~CCoreLexer() override;

    // --- token kinds

    /// Defines a token kind behind those defined before. Kinds may also be added between tokens. False, with
    /// nothing defined and the reason in GetPatternError, if the pattern is not well formed. A null pattern
    /// is the empty one, which is accepted and never matches. `id` should be positive: 0 and -1 have meanings
    /// of their own.
    bool DefineToken(const char* name, int id, const char* pattern, bool skip);
    /// Why the last DefineToken that failed did so, "" if none has:
    ///
    ///     Tag specifier out of range. Use 1 to 8.     no digit from 1 to 4 (!) behind "<" or "</"
    ///     Missing closing '>' in tag.                 the digit is not followed by ">"
    ///     Missing closing ')'.
    ///     Missing closing ']'.                        also for a range without its end, as in [a-]
    ///     Already in a range specification.           two "-" in a row inside a set
    ///     Missing start character in range.           a set's "-" without a character before it
    ///     Unexpected ')'.  Unexpected '>'.            one that closes nothing
    ///     Missing character after '\'.                the pattern ends behind a backslash
    ///     Groups nested too deeply.                   more than 100 levels
    const CoreString& GetPatternError() const { return m_patternError; }

    // --- tokens

    /// Takes the next token that is not of a skipped kind.
    ///
    /// True with id -1 (text null, length 0, file and line as they were) when the last text ends; from then
    /// on, and while there is no input, false with the record untouched. False with id 0, and file, line and
    /// text of the place, when no kind matches there: the position stays, and asking again gives the same
    /// answer. When an inner text ends and the text beneath it is at its end too, the answer is that false
    /// instead of the -1.
    bool GetToken(LexToken& token);

    /// What tag n, 1 to 4, of the last token captured: a string Var named "$n", or a null Var if the token's
    /// match did not pass both ends of the tag. Tag 0 is always null, and any other n gives tag 0.
    ///
    /// The reference stays good until the lexer goes, its value until the next token.
    Var& GetTag(int n);

    /// Tokens scanned so far, skipped ones included; and how many of these scans met no longer match after a
    /// shorter one. Statistics only.
    int GetScanCount() const { return static_cast<int>(m_scanCount); }
    int GetCleanScanCount() const { return static_cast<int>(m_cleanScanCount); }

    // --- input

    /// Makes a text the current input, on top of what there is; `line` is the number of its first line. The
    /// text is not copied and has to stay until its last token has been taken, or FlushInput. With `ownsText`
    /// the lexer frees it then: it must come from new char[]. A null text counts as "", a null name as none.
    void PushStream(const char* name, int line, const char* text, bool ownsText);
    /// Moves the current input: its name, line, and position, which must point into a terminated text that
    /// lives long enough, usually one got from GetPos. False, without effect, if there is no input or no
    /// position.
    bool SetPos(const char* name, int line, const char* position);
    /// Where the current input stands: the next character's position and line, and the input's name, "" if it
    /// has none. False, with the arguments untouched, if there is no input.
    bool GetPos(CoreString& name, int& line, const char*& position) const;
    /// Drops all input, freeing the texts that the lexer owns.
    void FlushInput();

 protected:
    /// Builds, from all kinds, the table of the kinds that can start with each byte. Called when needed.
    void ComputeStarts();
    /// Enters `token` in the table under every byte that the chain from `atom` on can start with.
    void ComputeStart(CREToken* token, REAtom* atom);
    /// Gives the lexer's own set with these entries, adding a copy if it has none.
    RECharClass* AddCharClass(RECharClass& charClass);
    /// The text that the next token comes from, null without input.
    LexStream* CurrentStream() const { return m_pStream; }

    /// GetToken, with the tags that GetTag hands out left as they are: `kind` is the kind of the token, null
    /// at the end and where no kind matches.
    bool ScanToken(LexToken& token, const CREToken*& kind);
    /// What tag n, 1 to 4, captured in the token of this kind that was scanned last: a part of the input,
    /// good until the next scan. Its data is null when the tag is absent.
    static std::string_view TagText(const CREToken& kind, int n);
    /// Texts being read, the current one included.
    int GetStreamDepth() const { return m_streams.GetCount(); }

 private:
    friend class StreamGuard;
    friend class PatternCompiler;

    void CopyKinds(const CCoreLexer& other);
    void FreeKinds();
    bool ScanAny(LexToken& token, const CREToken*& kind);
    const CREToken* TakeToken(LexToken& token);
    void StoreTags(const CREToken& kind);
    void EndStream();

    std::uint32_t m_scanCount = 0;
    std::uint32_t m_cleanScanCount = 0;
    TOrderedList<CREToken*> m_tokens;  // in the order of definition
    PatternProgram* m_pProgram;        // the start table and the patterns, laid out for matching
    TOrderedList<RECharClass*> m_classes;
    TStack<LexStream*> m_streams;
    LexStream* m_pStream = nullptr;
    bool m_startsStale = true;
    STRID m_tagNames[5];  // "$1" to "$4" at 1 to 4
    Var m_tagValues[5];
    CoreString m_patternError;
    STRID m_streamName = kNoName;         // of the stream pushed last
    LexStream* m_pSpareStream = nullptr;  // a finished stream's record, for the next one
};

// ---------------------------------------------------------------------------------------------------------------------
// The script lexer

/// Identifiers of the script language's tokens. The numbers are fixed.
///
/// The texts: assignments and operators as in C; the keywords are the lower-case names; constants are 'c',
/// 0b101, 12, 0x1F, 1.5 and "text", the decimal ones with an optional unit directly behind: in, cm, mil, mm.
enum TokId : int {
    TOK_END = -1,  ///< the end of the text
    TOK_NONE = 0,

    TOK_ASSIGN = 1,
    TOK_MUL_ASSIGN = 2,
    TOK_DIV_ASSIGN = 3,
    TOK_MOD_ASSIGN = 4,
    TOK_ADD_ASSIGN = 5,
    TOK_SUB_ASSIGN = 6,
    TOK_SHL_ASSIGN = 7,
    TOK_SHR_ASSIGN = 8,
    TOK_AND_ASSIGN = 9,
    TOK_XOR_ASSIGN = 10,
    TOK_OR_ASSIGN = 11,

    TOK_LOG_OR = 12,
    TOK_LOG_AND = 13,
    TOK_OR = 14,
    TOK_XOR = 15,
    TOK_AND = 16,
    TOK_EQ = 17,
    TOK_NOT_EQ = 18,
    TOK_LESS = 19,
    TOK_GREATER = 20,
    TOK_LEQ = 21,
    TOK_GEQ = 22,
    TOK_SHL = 23,
    TOK_SHR = 24,
    TOK_ADD = 25,
    TOK_SUB = 26,
    TOK_MUL = 27,
    TOK_DIV = 28,
    TOK_MOD = 29,

    TOK_PRINT = 30,
    TOK_EXECUTE = 31,
    TOK_INCLUDE = 32,
    TOK_INTERFACE = 33,
    TOK_FUNCTION = 34,
    TOK_METHOD = 35,
    TOK_IF = 36,
    TOK_ELSE = 37,
    TOK_FOR = 38,
    TOK_FOREACH = 39,
    TOK_IN = 40,
    TOK_WHILE = 41,
    TOK_CONTINUE = 42,
    TOK_BREAK = 43,
    TOK_RETURN = 44,
    TOK_VAR = 45,
    TOK_AS = 46,
    TOK_CLASS = 47,
    TOK_INHERITS = 48,
    TOK_ENUM = 49,
    TOK__HALT = 50,
    TOK_TRUE = 51,
    TOK_FALSE = 52,
    TOK_NULL = 53,

    TOK_LCURLY = 54,
    TOK_RCURLY = 55,
    TOK_COMMA = 56,
    TOK_SEMI = 57,
    TOK_MEMBER = 58,  ///< "."
    TOK_INV = 59,     ///< "~"
    TOK_NOT = 60,
    TOK_INC = 61,
    TOK_DEC = 62,
    TOK_LBRACKET = 63,
    TOK_RBRACKET = 64,
    TOK_LPAREN = 65,
    TOK_RPAREN = 66,

    CHAR_CONSTANT = 67,
    BINARY_CONSTANT = 68,
    DEC_CONSTANT = 69,
    HEX_CONSTANT = 70,
    FLOAT_CONSTANT = 71,
    SLITERAL = 72,
    ID = 73,
    BLOCK_COMMENT = 74,  ///< just the opening "/*": what follows are tokens like any other
    LINE_COMMENT = 75,
    WS = 76,  ///< white space
};

/// A token of a script. It lives, with its text, as long as the token list it stands in.
///
/// A constant with a unit is in the internal length unit of one ten-millionth of an inch, truncated to a
/// whole number, in `number` and in `text`: for 5mil they are 50000 and "50000".
struct BRENTA_API ScriptToken {
    TokId id = TOK_NONE;
    int line = 0;          ///< from 1
    STRID file = kNoName;  ///< the name of the source: a path for files
    /// DEC_CONSTANT and FLOAT_CONSTANT: the number as the parser takes it, for DEC_CONSTANT always a whole
    /// one in the range of an int. 0 for all others.
    double number = 0;
    /// The name of an ID, the digits of a number, the body of a string or character between its quotes
    /// (escape sequences as written); "" for all others. Terminated.
    const char* text = "";
    std::uint32_t length = 0;  ///< of the text, in bytes
    bool hasUnit = false;      ///< a decimal constant with a unit behind it

    /// The text as a name, interned on the first call; kNoName when there is none.
    STRID GetValue() const;

 private:
    friend class CCoreScriptLexer;
    mutable STRID m_value = kNoName;
};

/// The scanner of the scripting language: reads whole sources, with their includes, into a list of tokens.
///
///     CCoreScriptLexer lexer(false, false);
///     if (lexer.InjectScriptText("cmd:", "width = 20mil;", true))
///         for (auto iter = lexer.GetFirstToken(); iter.Get(); iter.Next()) Use(**iter.Get());
///
/// A list of tokens ends with a TOK_END. Scanning appends: FlushTokens before the next source. Errors of
/// files go to the message stream of the engine derived from it; the lexer alone has none and is silent.
///
/// An `include "file"` stands for the file's tokens. A name without a folder, or with one that begins with
/// ".", is looked for beside the file that contains the statement, any other is taken as it is; what is not
/// found there is looked for in the folder "Scripts" of the application's data (brenta/settings.h). Something
/// has to follow the file name, if only a line end: an include that is the very last of its file does not
/// load. At most 64 files can be open within each other, so a file that includes itself fails.
///
/// Surprises of the token set, all by design: "5mils" is 5mil and the name s; "/* note */" is no comment; an
/// unterminated string takes the rest of the text; "0x" alone is a constant of value 0.
class BRENTA_API CCoreScriptLexer : public CCoreLexer {
 public:
    using Token = ScriptToken;

    /// `option` is stored and copied, without effect. With `keepComments`, comments and white space become
    /// tokens like all others instead of being skipped.
    CCoreScriptLexer(bool option, bool keepComments);
    /// Copies the token list too. The copy reports to the same message stream, or to a silent one of its own
    /// if the original owns its stream.
    CCoreScriptLexer(const CCoreScriptLexer& other);
    CCoreScriptLexer& operator=(const CCoreScriptLexer& other);

    std::size_t SizeOf() const override;
    const char* GetClassName() const override;      ///< "CCoreScriptLexer"
    const char* GetBaseClassName() const override;  ///< "CCoreLexer"
    /// Deletes the tokens, and the message stream if the lexer owns it.
    ~CCoreScriptLexer() override;

    // --- sources

    /// Scans a file and all its includes: at most 10,000 files, 64 within each other, 256 MiB in all. False
    /// if one cannot be opened, or is one too many ("Failed to open source file '%s'", the last path tried),
    /// or read ("Failed to read source file '%s'"), or if the text is no sequence of tokens; the tokens
    /// scanned until then, and the input, stay. Both "\" and "/" separate folders. The text ends at the first
    /// NUL byte.
    virtual bool LoadScriptModule(const char* file);
    /// Makes a text the current input under a name, and scans it if asked to: true if that succeeds. False
    /// without `scan`, which leaves the tokens to be taken with GetRawToken. The text is not copied.
    virtual bool InjectScriptText(const char* name, const char* text, bool scan);
    /// CCoreLexer::GetToken.
    bool GetRawToken(LexToken& token);

    // --- tokens

    /// The scanned tokens, from the first one on; at the end at once when nothing was scanned. The tokens
    /// stay the lexer's: they, and the iterator, are good until FlushTokens, the lexer's end, or a call that
    /// parses or runs something on an engine.
    TIter<Token*> GetFirstToken();
    /// Deletes all tokens, and with them their texts.
    void FlushTokens();

    /// The value of an integer constant: 'c' is the (signed) character, or what its escape sequence stands
    /// for; digits of a decimal constant end at the limits of an int, those of the others wrap. False, with
    /// value 0, for any other token, a FLOAT_CONSTANT included.
    bool ExtractTokenInteger(const Token& token, int& value) const;
    /// What to call a token in a message: its text, "identifier", "string literal" and the like, or "unknown
    /// token id".
    static const char* GetTokenErrorText(TokId id);

 protected:
    friend class StreamGuard;

    /// Binary digits to a number: each character counts as its distance from '0'. Null counts as "".
    int GetBinValue(const char* digits) const;
    /// Hexadecimal digits to a number; a character that is none repeats the digit before it.
    int GetHexValue(const char* digits) const;
    /// The character code of an escape sequence: x and hexadecimal digits, decimal digits, or one of the
    /// characters n t v b r f a, question mark, backslash and the quotes. False, with the value untouched,
    /// for any other.
    bool ExtractEscSeq(const char* afterBackslash, int& value) const;

    /// Makes a file the current input. Reports what fails, at the place of the include statement if there is
    /// one.
    bool IncludeScriptModule(const char* file) { return IncludeScriptModule(file, ScriptPosition()); }
    bool IncludeScriptModule(const char* file, const ScriptPosition& from);
    /// Appends the tokens of all input to the list, and a TOK_END. False where it cannot go on: see
    /// m_scanError.
    bool ScanInput();

    CScriptMsgStream* m_pMessages = nullptr;  ///< where errors go; null for nowhere
    bool m_ownsMessages = false;              ///< m_pMessages is deleted with the lexer
    bool m_unitsSeen = false;                 ///< a constant with a unit was scanned since this was cleared
    /// Set when ScanInput fails: the place of the character that starts no token, or of the `include` without
    /// a file name, which remain to be reported; line 0 when the failure has been reported already.
    ScriptPosition m_scanError;

 private:
    void DefineGrammar();
    bool ScanInclude(const LexToken& statement);
    Token* AppendToken(TokId id, STRID file, int line);
    void AppendScanned(const LexToken& scanned, const CREToken& kind);
    void SetText(Token& token, std::string_view text);
    void SetNumber(Token& token, std::string_view digits, std::string_view unit);
    void CopyMembers(const CCoreScriptLexer& other);
    void ReleaseMessages();

    bool m_option;
    bool m_keepComments;
    STRID m_tagName;  // "$1"
    TOrderedList<Token*> m_tokenList;
    TokenArena* m_pArena;  // holds the tokens of the list and their texts
    std::size_t m_includeCount = 0;
    std::size_t m_includedBytes = 0;
};

}  // namespace brenta
