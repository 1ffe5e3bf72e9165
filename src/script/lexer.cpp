#include "brenta/lexer.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <new>

#include "foundation/lack_of_memory.h"
#include "script/pattern.h"
#include "script/pattern_program.h"

namespace brenta {

namespace {

constexpr int kFirstTag = 1;
constexpr int kLastTag = 4;

constexpr char kEmptyText[] = "";
const char* const kTagNames[] = {nullptr, "$1", "$2", "$3", "$4"};

// The number of the line behind a text that starts on `line`; wraps.
int AddLines(int line, const char* text, std::size_t length) {
    const auto breaks = static_cast<unsigned int>(std::count(text, text + length, '\n'));
    return static_cast<int>(static_cast<unsigned int>(line) + breaks);
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// CREToken

CREToken::CREToken(STRID kindName, int kindId, bool kindSkip) : id(kindId), name(kindName), skip(kindSkip) {}

CREToken::~CREToken() {
    FreeAtoms(pattern);
}

std::size_t CREToken::SizeOf() const {
    return sizeof(*this);
}

const char* CREToken::GetClassName() const {
    return "CREToken";
}

const char* CREToken::GetBaseClassName() const {
    return "none";
}

// ---------------------------------------------------------------------------------------------------------------------
// CCoreLexer: life

CCoreLexer::CCoreLexer() : m_pProgram(new PatternProgram) {
    for (int n = 0; n <= kLastTag; ++n)
        m_tagNames[n] = StrId(kTagNames[n]);
}

CCoreLexer::CCoreLexer(const CCoreLexer& other) : CCoreSymbolTable(other), m_pProgram(new PatternProgram) {
    std::copy(std::begin(other.m_tagNames), std::end(other.m_tagNames), m_tagNames);
    CopyKinds(other);
}

CCoreLexer& CCoreLexer::operator=(const CCoreLexer& other) {
    if (this == &other) return *this;
    CCoreSymbolTable::operator=(other);
    FlushInput();
    FreeKinds();
    CopyKinds(other);
    return *this;
}

CCoreLexer::~CCoreLexer() {
    FlushInput();
    FreeKinds();
    delete m_pSpareStream;
    delete m_pProgram;
}

std::size_t CCoreLexer::SizeOf() const {
    return sizeof(*this);
}

const char* CCoreLexer::GetClassName() const {
    return "CCoreLexer";
}

const char* CCoreLexer::GetBaseClassName() const {
    return "CCoreSymbolTable";
}

// Kinds, tags and counters of the other lexer; this one has no kinds and no input.
void CCoreLexer::CopyKinds(const CCoreLexer& other) {
    const ClassMapper ownClass = [](RECharClass* original, void* lexer) {
        return static_cast<CCoreLexer*>(lexer)->AddCharClass(*original);
    };
    for (CREToken* token : other.m_tokens) {
        std::unique_ptr<CREToken> copy(new CREToken(token->name, token->id, token->skip));
        if (copy == nullptr) return;
        copy->pattern = CopyAtoms(token->pattern, ownClass, this);
        AddOrThrow(m_tokens, copy.get());
        static_cast<void>(copy.release());
    }
    m_startsStale = true;
    m_scanCount = other.m_scanCount;
    m_cleanScanCount = other.m_cleanScanCount;
    m_patternError = other.m_patternError;
    std::copy(std::begin(other.m_tagValues), std::end(other.m_tagValues), m_tagValues);
}

// The program refers to the kinds and their sets, so it goes first.
void CCoreLexer::FreeKinds() {
    m_pProgram->Clear();
    for (CREToken* token : m_tokens)
        delete token;
    m_tokens.RemoveAll();
    for (RECharClass* set : m_classes)
        delete set;
    m_classes.RemoveAll();
}

// ---------------------------------------------------------------------------------------------------------------------
// Kinds

bool CCoreLexer::DefineToken(const char* name, int id, const char* pattern, bool skip) {
    std::unique_ptr<CREToken> token(new CREToken(StrId(name), id, skip));
    if (token == nullptr) return false;
    token->pattern = new REAtom;
    PatternCompiler compiler(*this, pattern == nullptr ? "" : pattern);
    if (!compiler.Compile(token->pattern)) {
        token->error = compiler.Error();
        m_patternError = token->error;
        return false;
    }
    AddOrThrow(m_tokens, token.get());
    static_cast<void>(token.release());
    m_startsStale = true;
    return true;
}

RECharClass* CCoreLexer::AddCharClass(RECharClass& charClass) {
    for (RECharClass* held : m_classes) {
        if (std::memcmp(held->entries, charClass.entries, sizeof charClass.entries) == 0) return held;
    }
    auto set = std::make_unique<RECharClass>(charClass);
    AddOrThrow(m_classes, set.get());
    return set.release();
}

void CCoreLexer::ComputeStarts() {
    m_pProgram->Clear();
    for (CREToken* token : m_tokens) {
        m_pProgram->AddKind(token);
        ComputeStart(token, token->pattern);
    }
    m_startsStale = false;
}

// The walk goes on behind tags, and behind atoms that may be passed over. An empty atom takes part in it as
// one that starts with nothing and stops it.
void CCoreLexer::ComputeStart(CREToken* token, REAtom* atom) {
    for (; atom != nullptr; atom = atom->next) {
        if ((atom->flags & (REAtom::kOpenTag | REAtom::kCloseTag)) != 0) continue;
        if (atom->child != nullptr) {
            ComputeStart(token, atom->child);
        } else if ((atom->flags & REAtom::kCharClass) != 0) {
            const auto* set = reinterpret_cast<const RECharClass*>(atom->data);
            for (unsigned int byte = 0; byte < sizeof set->entries; ++byte) {
                if (set->entries[byte] != 0) m_pProgram->AddStart(static_cast<unsigned char>(byte));
            }
        } else if (atom->data != 0) {
            m_pProgram->AddStart(static_cast<unsigned char>(*StrPtr(static_cast<STRID>(atom->data))));
        }
        if ((atom->flags & (REAtom::kOptional | REAtom::kAlternative)) == 0) return;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Tokens

// The tags get their values at once, not when somebody asks: the text may be gone by then.
bool CCoreLexer::GetToken(LexToken& token) {
    for (;;) {
        const CREToken* kind = nullptr;
        const bool found = ScanAny(token, kind);
        if (kind == nullptr) return found;
        StoreTags(*kind);
        if (!kind->skip) return true;
    }
}

// The captures stay where matching left them, in the kind: the caller reads them before the next scan.
bool CCoreLexer::ScanToken(LexToken& token, const CREToken*& kind) {
    bool found;
    do {
        found = ScanAny(token, kind);
    } while (kind != nullptr && kind->skip);
    return found;
}

// The next token, of a skipped kind or not, or the end; null for the kind unless it is a token.
bool CCoreLexer::ScanAny(LexToken& token, const CREToken*& kind) {
    kind = nullptr;
    if (m_pStream == nullptr) return false;
    if (*m_pStream->position == 0) {
        EndStream();
        if (m_pStream == nullptr) {
            token.id = -1;
            token.name = "";
            token.length = 0;
            token.text = nullptr;
            return true;
        }
        // The text beneath is not asked whether it is at its end: there, no kind matches.
    }
    kind = TakeToken(token);
    return kind != nullptr;
}

// One token of the current text, skipped kinds included; null, with the position unmoved, where no kind
// matches.
const CREToken* CCoreLexer::TakeToken(LexToken& token) {
    if (m_startsStale) ComputeStarts();
    LexStream& stream = *m_pStream;
    token.id = 0;
    token.name = "";
    token.length = 0;
    token.text = stream.position;
    token.line = stream.line;
    token.file = stream.name;
    const PatternProgram::Match match = m_pProgram->Longest(stream.position);
    ++m_scanCount;
    if (!match.displaced) ++m_cleanScanCount;
    if (match.token == nullptr) return nullptr;
    token.id = match.token->id;
    token.name = StrPtr(match.token->name);
    token.length = static_cast<int>(std::min<std::size_t>(match.length, INT_MAX));
    stream.position += match.length;
    if (match.mayBreakLines) stream.line = AddLines(stream.line, token.text, match.length);
    return match.token;
}

std::string_view CCoreLexer::TagText(const CREToken& kind, int n) {
    const char* start = kind.tagStarts[n];
    const char* end = kind.tagEnds[n];
    if (start == nullptr || end == nullptr || start > end) return {};
    return {start, static_cast<std::size_t>(end - start)};
}

void CCoreLexer::StoreTags(const CREToken& kind) {
    for (int n = kFirstTag; n <= kLastTag; ++n) {
        const std::string_view text = TagText(kind, n);
        if (text.data() != nullptr) {
            m_tagValues[n] = Var(StrId(text.data(), static_cast<unsigned int>(text.size())), m_tagNames[n]);
        } else if (m_tagValues[n].GetKind() != VarKind::Null) {
            m_tagValues[n] = Var();
        }
    }
}

Var& CCoreLexer::GetTag(int n) {
    return m_tagValues[n < kFirstTag || n > kLastTag ? 0 : n];
}

// ---------------------------------------------------------------------------------------------------------------------
// Input

void CCoreLexer::PushStream(const char* name, int line, const char* text, bool ownsText) {
    const bool owns = ownsText && text != nullptr;
    std::unique_ptr<const char[]> owned(owns ? text : nullptr);
    // Commands come under one name again and again.
    if (name == nullptr || std::strcmp(name, StrPtr(m_streamName)) != 0) m_streamName = StrId(name);
    if (text == nullptr) text = kEmptyText;
    LexStream* stream = m_pSpareStream != nullptr ? m_pSpareStream : new LexStream;
    m_pSpareStream = nullptr;
    *stream = {owns, m_streamName, line, text, text};
    m_streams.Push(stream);
    if (m_streams.IsEmpty() || m_streams.Top() != stream) {
        m_pSpareStream = stream;
        throw std::bad_alloc();
    }
    static_cast<void>(owned.release());
    m_pStream = stream;
}

// Drops the current text; the one beneath it becomes current.
void CCoreLexer::EndStream() {
    if (m_pStream->ownsText) delete[] m_pStream->text;
    delete m_pSpareStream;
    m_pSpareStream = m_pStream;
    m_streams.Pop();
    m_pStream = m_streams.IsEmpty() ? nullptr : m_streams.Top();
}

bool CCoreLexer::SetPos(const char* name, int line, const char* position) {
    if (m_pStream == nullptr || position == nullptr) return false;
    m_pStream->name = StrId(name);
    m_pStream->line = line;
    m_pStream->position = position;
    return true;
}

bool CCoreLexer::GetPos(CoreString& name, int& line, const char*& position) const {
    if (m_pStream == nullptr) return false;
    name = StrPtr(m_pStream->name);
    line = m_pStream->line;
    position = m_pStream->position;
    return true;
}

void CCoreLexer::FlushInput() {
    while (m_pStream != nullptr)
        EndStream();
}

}  // namespace brenta
