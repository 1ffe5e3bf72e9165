// CoreString: its memory, construction, assignment, appending and cutting.
//
// How a string grows
// ------------------
// A string is either short, fewer than kLocalSize bytes, and lies in the object, or it has a block. The
// length alone says which: every operation that makes a text short moves it back into the object, so that
// copying a short string is copying sixteen bytes and asks nobody for memory.
//
// A block that is made for a known text has the text's size, rounded up to what the general allocator would
// set aside for it anyway (BlockSize), and so costs no memory beyond the text. An edit that shortens the text
// works in place and gives memory back as soon as less than half the block is used; by then at least as many
// bytes have been removed as are copied, so cutting a long text down piece by piece stays linear in what is
// moved.
//
// Only an append that does not fit takes more than it needs: half the old block again. The block sizes of a
// text built byte by byte are then a geometric series, all copies together are at most three times the final
// text, and the allocator can often extend the block where it stands, which makes even those disappear. The
// size of the block stands in the object (m_capacity), in what would be padding: asking the allocator for it
// is neither portable nor free.
//
// Nothing here throws. Room is always made first, and the text touched only when it is there, so that an
// operation that finds no memory has not begun.
#include "brenta/string.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <functional>

#include "foundation/numbers.h"
#include "foundation/string_blocks.h"

namespace brenta {

namespace {

// The length of a text up to its first NUL.
std::size_t TextLength(const char* text) {
    return text == nullptr ? 0 : std::strlen(text);
}
std::size_t TextLength(std::string_view text) {
    return std::min(text.find('\0'), text.size());
}

}  // namespace

std::size_t CoreString::SizeOf() const {
    return sizeof(*this);
}
const char* CoreString::GetClassName() const {
    return "CoreString";
}
const char* CoreString::GetBaseClassName() const {
    return "none";
}

CoreString::CoreString(const char* text, int count) noexcept {
    if (text == nullptr || count < 1) return;
    const void* pEnd = std::memchr(text, 0, static_cast<std::size_t>(count));
    const std::ptrdiff_t length = pEnd == nullptr ? count : static_cast<const char*>(pEnd) - text;
    AssignBytes(text, static_cast<std::size_t>(length));
}

CoreString::CoreString(std::string_view text) noexcept {
    AssignBytes(text.data(), TextLength(text));
}

CoreString& CoreString::operator=(const char* text) {
    AssignBytes(text, TextLength(text));
    return *this;
}

CoreString& CoreString::operator=(std::string_view text) {
    AssignBytes(text.data(), TextLength(text));
    return *this;
}

CoreString& CoreString::operator=(char c) {
    AssignBytes(&c, c != 0);
    return *this;
}

CoreString& CoreString::operator+=(std::string_view text) {
    return AppendBytes(text.data(), TextLength(text));
}

CoreString CoreString::operator+(char c) const& {
    CoreString sum;
    const std::size_t count = c != 0;
    if (sum.Reserve(static_cast<std::size_t>(m_length) + count)) (sum += *this) += c;
    return sum;
}

CoreString CoreString::operator+(const char* text) const& {
    CoreString sum;
    const std::size_t count = TextLength(text);
    if (sum.Reserve(static_cast<std::size_t>(m_length) + count)) (sum += *this).AppendBytes(text, count);
    return sum;
}

CoreString CoreString::operator+(const CoreString& text) const& {
    CoreString sum;
    const auto length = static_cast<std::size_t>(m_length) + static_cast<std::size_t>(text.m_length);
    if (sum.Reserve(length)) (sum += *this) += text;
    return sum;
}

CoreString& CoreString::operator<<(double value) {
    AppendFixed(*this, value, 6);
    return *this;
}

CoreString& CoreString::operator<<(unsigned int value) {
    char text[16];
    const auto result = std::to_chars(text, text + sizeof(text), value);
    return AppendBytes(text, static_cast<std::size_t>(result.ptr - text));
}

CoreString& CoreString::operator<<(int value) {
    char text[16];
    const auto result = std::to_chars(text, text + sizeof(text), value);
    return AppendBytes(text, static_cast<std::size_t>(result.ptr - text));
}

int CoreString::GetLength(const char* text) {
    return static_cast<int>(std::min(TextLength(text), static_cast<std::size_t>(INT_MAX)));
}

void CoreString::SetEmpty() {
    CutTo(0);
}

void CoreString::SetAt(int i, char c) {
    if (i < 0 || i >= m_length) return;
    if (c == 0) {
        CutTo(i);
    } else {
        m_pBuffer[i] = c;
    }
}

void CoreString::Truncate(int n) {
    if (n < m_length) CutTo(std::max(n, 0));
}

CoreString CoreString::Left(int n) const {
    CoreString left;
    left.AssignBytes(m_pBuffer, static_cast<std::size_t>(std::clamp(n, 0, m_length)));
    return left;
}

CoreString CoreString::RemoveLeft(int n) {
    CoreString left = Left(n);
    TrimLeft(n);
    return left;
}

// ----------------------------------------------------------------------------------------------------------
// Memory

bool CoreString::Owns(const char* text) const {
    return std::less_equal<>()(static_cast<const char*>(m_pBuffer), text) &&
           std::less_equal<>()(text, static_cast<const char*>(m_pBuffer + m_length));
}

// Replaces the text by `length` bytes, which may be part of it.
void CoreString::AssignBytes(const char* text, std::size_t length) noexcept {
    if (length >= kLocalSize) return AssignLong(text, length);
    if (length != 0) std::memmove(m_local, text, length);
    m_local[length] = 0;
    m_length = static_cast<int>(length);
    if (m_pBuffer == m_local) return;
    FreeBlock(m_pBuffer, m_capacity);
    m_pBuffer = m_local;
    m_capacity = kLocalSize;
}

// The same for a text that needs a block. The old one is kept if it fits the new text well.
void CoreString::AssignLong(const char* text, std::size_t length) noexcept {
    const auto oldCapacity = static_cast<std::size_t>(m_capacity);
    if (length < oldCapacity && length >= oldCapacity / 2) {
        std::memmove(m_pBuffer, text, length);
    } else {
        const int capacity = BlockSize(length + 1);
        char* const pBlock = length <= kLongestText ? AcquireBlock(capacity) : nullptr;
        if (pBlock == nullptr) return;
        std::memcpy(pBlock, text, length);
        if (m_pBuffer != m_local) FreeBlock(m_pBuffer, m_capacity);
        m_pBuffer = pBlock;
        m_capacity = capacity;
    }
    m_pBuffer[length] = 0;
    m_length = static_cast<int>(length);
}

// What the copy of a long text has still to do.
void CoreString::CopyLong(const CoreString& other) noexcept {
    m_length = 0;
    m_local[0] = 0;
    AssignLong(other.m_pBuffer, static_cast<std::size_t>(other.m_length));
}

CoreString& CoreString::AppendBytes(const char* text, std::size_t count) {
    if (count == 0) return *this;
    if (count >= static_cast<std::size_t>(m_capacity - m_length)) {
        const std::ptrdiff_t offset = Owns(text) ? text - m_pBuffer : -1;
        if (!Grow(count)) return *this;
        if (offset >= 0) text = m_pBuffer + offset;
    }
    std::memmove(m_pBuffer + m_length, text, count);
    m_length += static_cast<int>(count);
    m_pBuffer[m_length] = 0;
    return *this;
}

// Makes room for `count` more bytes and, for those to come, for half as many again as there are.
bool CoreString::Grow(std::size_t count) {
    const auto length = static_cast<std::size_t>(m_length);
    if (count > kLongestText - length) return false;
    const std::size_t needed = length + count + 1;
    const auto grown = static_cast<std::size_t>(m_capacity) + static_cast<std::size_t>(m_capacity / 2);
    return SetCapacity(BlockSize(std::max(needed, grown))) || SetCapacity(BlockSize(needed));
}

// Makes room for a text of `length` bytes, and no more than that. The caller then makes the text that long:
// a short one must not stay in a block.
bool CoreString::Reserve(std::size_t length) {
    if (length < static_cast<std::size_t>(m_capacity)) return true;
    return length <= kLongestText && SetCapacity(BlockSize(length + 1));
}

// Makes the text `length` bytes long; what is new of it is for the caller to fill.
bool CoreString::SetLength(std::size_t length) {
    if (!Reserve(length)) return false;
    m_length = static_cast<int>(length);
    m_pBuffer[length] = 0;
    return true;
}

// Moves the text into a block of `capacity` bytes, more than the text needs and more than the object has.
bool CoreString::SetCapacity(int capacity) noexcept {
    char* pBlock;
    if (m_pBuffer == m_local) {
        pBlock = AcquireBlock(capacity);
        if (pBlock != nullptr) std::memcpy(pBlock, m_local, kLocalSize);
    } else {
        pBlock = ResizeBlock(m_pBuffer, m_capacity, capacity);
    }
    if (pBlock == nullptr) return false;
    m_pBuffer = pBlock;
    m_capacity = capacity;
    return true;
}

// Shortens the text and gives back memory that it no longer justifies.
void CoreString::CutTo(int length) {
    m_length = length;
    m_pBuffer[length] = 0;
    if (m_pBuffer == m_local) return;
    if (length < kLocalSize) {
        char* const pBlock = m_pBuffer;
        std::memcpy(m_local, pBlock, static_cast<std::size_t>(length) + 1);
        m_pBuffer = m_local;
        FreeBlock(pBlock, m_capacity);
        m_capacity = kLocalSize;
    } else if (length < m_capacity / 2) {
        SetCapacity(BlockSize(static_cast<std::size_t>(length) + 1));
    }
}

// Gives back what appending has taken beyond the text's need.
void CoreString::GiveBackRoom() {
    const int needed = BlockSize(static_cast<std::size_t>(m_length) + 1);
    if (m_pBuffer != m_local && needed < m_capacity) SetCapacity(needed);
}

void CoreString::ReleaseBlock(char* pBlock, int size) noexcept {
    FreeBlock(pBlock, size);
}

}  // namespace brenta
