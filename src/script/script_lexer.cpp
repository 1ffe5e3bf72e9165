#include <charconv>
#include <climits>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "brenta/files.h"
#include "brenta/lexer.h"
#include "brenta/settings.h"
#include "foundation/characters.h"
#include "foundation/lack_of_memory.h"
#include "foundation/numbers.h"
#include "os/os.h"
#include "script/token_arena.h"
#include "script/token_set.h"
#include "script/value_limits.h"

namespace brenta {

namespace {

/// Internal length units, of one ten-millionth of an inch, in one of the unit that a suffix names. The
/// suffixes that the patterns cannot deliver ("ins" is "in" and then the name s) are listed for a day when
/// they can.
struct UnitSuffix {
    std::string_view text;
    double factor;
};

constexpr UnitSuffix kUnitSuffixes[] = {
    {"in", 10000000.0}, {"ins", 10000000.0}, {"cm", 3937007.874}, {"cms", 3937007.874},
    {"mil", 10000.0},   {"mils", 10000.0},   {"mm", 393700.7874}, {"mms", 393700.7874},
};

double UnitFactor(std::string_view suffix) {
    for (const UnitSuffix& unit : kUnitSuffixes) {
        if (unit.text == suffix) return unit.factor;
    }
    return 1;
}

// The value of a run of decimal digits, at most that of the largest int: what ParseInt gives, faster.
int DecimalValue(std::string_view digits) {
    int value = INT_MAX;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

// The text of a stream of its own: with room behind the terminator, so that looking ahead a few characters is
// safe.
char* TerminatedCopy(const std::string& content) {
    constexpr std::size_t kRoom = 10;
    char* text = new char[content.size() + kRoom];
    std::memcpy(text, content.data(), content.size());
    std::memset(text + content.size(), 0, kRoom);
    return text;
}

// A module that a host loads stands nowhere; one that a script includes is reported at the statement.
void ReportFileError(CScriptMsgStream* messages, const ScriptPosition& from, bool opened, const char* path) {
    if (messages == nullptr) return;
    if (from.line == 0) {
        messages->Error("", opened ? "Failed to read source file '%s'" : "Failed to open source file '%s'",
                        path);
    } else {
        messages->Error(from, opened ? "Failed to read source file '%s'" : "Failed to open source file '%s'",
                        path);
    }
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Life

STRID ScriptToken::GetValue() const {
    if (m_value == kNoName && length > 0) m_value = StrId(text, length);
    return m_value;
}

CCoreScriptLexer::CCoreScriptLexer(bool option, bool keepComments)
    : m_option(option), m_keepComments(keepComments), m_tagName(StrId("$1")), m_pArena(new TokenArena) {
    DefineGrammar();
}

CCoreScriptLexer::CCoreScriptLexer(const CCoreScriptLexer& other)
    : CCoreLexer(other), m_tagName(other.m_tagName), m_pArena(new TokenArena) {
    CopyMembers(other);
}

CCoreScriptLexer& CCoreScriptLexer::operator=(const CCoreScriptLexer& other) {
    if (this == &other) return *this;
    CCoreLexer::operator=(other);
    FlushTokens();
    ReleaseMessages();
    CopyMembers(other);
    return *this;
}

CCoreScriptLexer::~CCoreScriptLexer() {
    ReleaseMessages();
    delete m_pArena;
}

std::size_t CCoreScriptLexer::SizeOf() const {
    return sizeof(*this);
}

const char* CCoreScriptLexer::GetClassName() const {
    return "CCoreScriptLexer";
}

const char* CCoreScriptLexer::GetBaseClassName() const {
    return "CCoreLexer";
}

void CCoreScriptLexer::DefineGrammar() {
    for (const TokenKind& kind : TokenSet()) {
        const bool comment = kind.id >= BLOCK_COMMENT;
        DefineToken(kind.name, kind.id, kind.pattern, comment && !m_keepComments);
    }
}

void CCoreScriptLexer::CopyMembers(const CCoreScriptLexer& other) {
    m_option = other.m_option;
    m_keepComments = other.m_keepComments;
    m_unitsSeen = other.m_unitsSeen;
    m_scanError = other.m_scanError;
    m_ownsMessages = other.m_ownsMessages;
    m_pMessages = other.m_ownsMessages ? new CScriptMsgStream : other.m_pMessages;
    for (const Token* token : other.m_tokenList) {
        Token* copy = AppendToken(token->id, token->file, token->line);
        *copy = *token;
        // A name's text is the interned one; the others lie in the other lexer's arena.
        if (token->id != ID) copy->text = m_pArena->CopyText(token->text, token->length);
    }
}

void CCoreScriptLexer::ReleaseMessages() {
    if (m_ownsMessages) delete m_pMessages;
    m_pMessages = nullptr;
    m_ownsMessages = false;
}

// ---------------------------------------------------------------------------------------------------------------------
// Sources

bool CCoreScriptLexer::LoadScriptModule(const char* file) {
    return IncludeScriptModule(file) && ScanInput();
}

bool CCoreScriptLexer::InjectScriptText(const char* name, const char* text, bool scan) {
    m_includeCount = m_includedBytes = 0;
    PushStream(name, 1, text, false);
    return scan && ScanInput();
}

bool CCoreScriptLexer::GetRawToken(LexToken& token) {
    return GetToken(token);
}

bool CCoreScriptLexer::IncludeScriptModule(const char* file, const ScriptPosition& from) {
    CoreString path(file);
    std::string content;
    os::FileStatus status = os::FileStatus::CannotOpen;
    if (from.line == 0) m_includeCount = m_includedBytes = 0;
    // A file that includes itself ends here, and so does one of which each of its includes has the next
    // twice: they would go on for ever.
    if (GetStreamDepth() < kMaxIncludeDepth && m_includeCount < kMaxIncludes) {
        const std::size_t limit = kMaxSourceSize - m_includedBytes;
        status = os::ReadWholeFile(path, content, limit);
        const CoreString folder = GetAppDataFolder();
        if (status == os::FileStatus::CannotOpen && !folder.IsEmpty()) {
            path = AppendPaths(AppendPaths(folder, "Scripts"), path);
            status = os::ReadWholeFile(path, content, limit);
        }
    }
    if (status == os::FileStatus::Ok) {
        ++m_includeCount;
        m_includedBytes += content.size();
        PushStream(path, 1, TerminatedCopy(content), true);
        return true;
    }
    ReportFileError(m_pMessages, from, status == os::FileStatus::CannotRead, path);
    return false;
}

// ---------------------------------------------------------------------------------------------------------------------
// Scanning

// source := { include | token } end
bool CCoreScriptLexer::ScanInput() {
    m_scanError = ScriptPosition();
    LexToken scanned;
    if (const LexStream* stream = CurrentStream()) {
        // An empty text has no token whose place its end could take.
        scanned.file = stream->name;
        scanned.line = stream->line;
    }
    const CREToken* kind = nullptr;
    while (ScanToken(scanned, kind)) {
        if (kind == nullptr) {
            AppendToken(TOK_END, scanned.file, scanned.line);
            return true;
        }
        if (scanned.id == TOK_INCLUDE) {
            if (!ScanInclude(scanned)) return false;
        } else {
            AppendScanned(scanned, *kind);
        }
    }
    m_scanError = {scanned.file, scanned.line};
    return false;
}

// include := "include" SLITERAL
bool CCoreScriptLexer::ScanInclude(const LexToken& statement) {
    const ScriptPosition place{statement.file, statement.line};
    LexToken name;
    const CREToken* kind = nullptr;
    if (!ScanToken(name, kind) || name.id != SLITERAL) {
        m_scanError = place;
        return false;
    }
    CoreString file(TagText(*kind, 1));
    // The folder of a bare name is "./".
    if (*GetPathName(file) == '.') file = AppendPaths(GetPathName(StrPtr(statement.file)), file);
    return IncludeScriptModule(file, place);
}

CCoreScriptLexer::Token* CCoreScriptLexer::AppendToken(TokId id, STRID file, int line) {
    auto* token = new (m_pArena->Allocate(sizeof(Token))) Token;
    token->id = id;
    token->file = file;
    token->line = line;
    AddOrThrow<ScriptToken*>(m_tokenList, token);
    return token;
}

void CCoreScriptLexer::AppendScanned(const LexToken& scanned, const CREToken& kind) {
    Token& token = *AppendToken(static_cast<TokId>(scanned.id), scanned.file, scanned.line);
    switch (token.id) {
        case ID:
            token.m_value = StrId(scanned.text, static_cast<unsigned int>(scanned.length));
            if (token.m_value == kNoName) throw std::bad_alloc();
            token.text = StrPtr(token.m_value);
            token.length = static_cast<std::uint32_t>(scanned.length);
            break;
        case CHAR_CONSTANT:
        case BINARY_CONSTANT:
        case HEX_CONSTANT:
        case SLITERAL:
            SetText(token, TagText(kind, 1));
            break;
        case DEC_CONSTANT:
        case FLOAT_CONSTANT:
            SetNumber(token, TagText(kind, 1), TagText(kind, 2));
            break;
        default:
            break;
    }
}

// A copy, because tokens outlive the text they were scanned from: a file's text is freed where the file ends.
void CCoreScriptLexer::SetText(Token& token, std::string_view text) {
    if (text.empty()) return;
    token.text = m_pArena->CopyText(text.data(), text.size());
    token.length = static_cast<std::uint32_t>(text.size());
}

// Without a unit the text stays as written, "007" for instance; with one it is that of the number of internal
// units.
void CCoreScriptLexer::SetNumber(Token& token, std::string_view digits, std::string_view unit) {
    if (unit.empty()) {
        SetText(token, digits);
        token.number = token.id == DEC_CONSTANT ? DecimalValue(digits) : ParseDouble(digits);
        return;
    }
    const int units = DoubleToInt(ParseDouble(digits) * UnitFactor(unit));
    char text[16];
    const char* end = std::to_chars(std::begin(text), std::end(text), units).ptr;
    SetText(token, {text, end});
    token.number = units;
    token.hasUnit = true;
    m_unitsSeen = true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Tokens

TIter<CCoreScriptLexer::Token*> CCoreScriptLexer::GetFirstToken() {
    return TIter<Token*>(m_tokenList);
}

void CCoreScriptLexer::FlushTokens() {
    m_tokenList.RemoveAll();
    m_pArena->Reset();
}

bool CCoreScriptLexer::ExtractTokenInteger(const Token& token, int& value) const {
    value = 0;
    const char* text = token.text == nullptr ? "" : token.text;
    switch (token.id) {
        case CHAR_CONSTANT:
            if (*text == '\\') {
                ExtractEscSeq(text + 1, value);
            } else {
                value = *text;
            }
            return true;
        case BINARY_CONSTANT:
            value = GetBinValue(text);
            return true;
        case DEC_CONSTANT:
            value = ParseInt(text);
            return true;
        case HEX_CONSTANT:
            value = GetHexValue(text);
            return true;
        default:
            return false;
    }
}

const char* CCoreScriptLexer::GetTokenErrorText(TokId id) {
    return TokenErrorText(id);
}

int CCoreScriptLexer::GetBinValue(const char* digits) const {
    unsigned int value = 0;
    for (; digits != nullptr && *digits != 0; ++digits)
        value = value * 2 + static_cast<unsigned int>(*digits - '0');
    return static_cast<int>(value);
}

int CCoreScriptLexer::GetHexValue(const char* digits) const {
    unsigned int value = 0;
    unsigned int digit = 0;
    for (; digits != nullptr && *digits != 0; ++digits) {
        if (IsHexDigit(*digits)) digit = static_cast<unsigned int>(HexDigitValue(*digits));
        value = value * 16 + digit;
    }
    return static_cast<int>(value);
}

bool CCoreScriptLexer::ExtractEscSeq(const char* afterBackslash, int& value) const {
    static constexpr std::string_view kLetters = "\"'?\\abfnrtv";
    static constexpr char kCodes[] = "\"'?\\\a\b\f\n\r\t\v";
    if (afterBackslash == nullptr) return false;
    if (*afterBackslash == 'x') {
        value = GetHexValue(afterBackslash + 1);
        return true;
    }
    if (IsDigit(*afterBackslash)) {
        value = ParseInt(afterBackslash);
        return true;
    }
    const std::size_t index = kLetters.find(*afterBackslash);
    if (index == std::string_view::npos) return false;
    value = kCodes[index];
    return true;
}

}  // namespace brenta
