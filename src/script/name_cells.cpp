// Cells and their index grow and never shrink: a name that was once bound will be bound again.
#include "script/name_cells.h"

#include <algorithm>
#include <cstdlib>
#include <unordered_map>

#include "brenta/failure.h"
#include "script/value_memory.h"

namespace brenta {

namespace {

constexpr std::size_t kFirstSlots = 64;
constexpr std::size_t kFirstLogEntries = 64;

/// Spreads an identifier, the address of a text, over all bits.
std::size_t HashOf(STRID name) {
    const std::uint64_t product = static_cast<std::uint64_t>(name) * 0x9E3779B97F4A7C15u;
    return static_cast<std::size_t>(product ^ (product >> 32));
}

}  // namespace

NameCells::NameCells() : m_slots(kFirstSlots) {}

NameCells::~NameCells() {
    PopTo(0);
    std::free(m_pLog);
}

// ---------------------------------------------------------------------------------------------------------
// Cells

std::size_t NameCells::SlotOf(STRID name) const {
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = HashOf(name) & mask;
    while (m_slots[slot].cell != nullptr && m_slots[slot].name != name)
        slot = (slot + 1) & mask;
    return slot;
}

NameCell* NameCells::FindCell(STRID name) const {
    return m_slots[SlotOf(name)].cell;
}

NameCell& NameCells::CellOf(STRID name) {
    const std::size_t slot = SlotOf(name);
    return m_slots[slot].cell != nullptr ? *m_slots[slot].cell : AddCell(name);
}

NameCell& NameCells::AddCell(STRID name) {
    if ((m_names.size() + 1) * 3 > m_slots.size() * 2) GrowIndex();
    const auto index = static_cast<std::uint32_t>(m_names.size());
    if (index % kChunkSize == 0 && index / kChunkSize == m_chunks.size()) {
        m_chunks.push_back(std::make_unique<NameCell[]>(kChunkSize));
    }
    m_names.push_back(name);
    NameCell& cell = CellAt(index);
    cell.index = index;
    m_slots[SlotOf(name)] = Slot{name, &cell};
    return cell;
}

void NameCells::GrowIndex() {
    m_slots.assign(m_slots.size() * 2, Slot{});
    for (std::uint32_t i = 0; i < m_names.size(); ++i)
        m_slots[SlotOf(m_names[i])] = Slot{m_names[i], &CellAt(i)};
}

// ---------------------------------------------------------------------------------------------------------
// Scopes

void NameCells::GrowLog(std::size_t needed) {
    const std::size_t capacity = std::max({needed, m_logCapacity * 2, kFirstLogEntries});
    // Entries may be moved as bytes: nothing points at them.
    m_pLog = static_cast<Entry*>(ResizeBody(static_cast<void*>(m_pLog), capacity * sizeof(Entry)));
    m_logCapacity = capacity;
}

void NameCells::PopGlobalScope() {
    if (m_depth == 0) return ForcedCrash(0, "Templ", __LINE__, "Assertion failed! m_pHead");
    RollBackTo(m_marks.back());
    for (const std::uint32_t index : m_late) {
        NameCell& cell = CellAt(index);
        cell.value = Value::Undefined();
        cell.symbol = nullptr;
        cell.depth = 0;
    }
    m_late.clear();
    m_marks.pop_back();
    m_depth = 0;
}

// A binding put beneath open scopes gets no entry in the log: one in the middle would move all marks above
// it, and callers hold marks. It goes where the scopes above will restore it from - the oldest entry for the
// cell in any of them, or else the cell itself - and is listed, for the end of the global scope.
void NameCells::BindGlobal(NameCell& cell, CCoreSymbol* symbol, Value value) {
    if (m_depth <= 1) return Bind(cell, symbol, std::move(value));
    Value* place = &cell.value;
    CCoreSymbol** symbolPlace = &cell.symbol;
    std::uint32_t* depthPlace = &cell.depth;
    for (std::size_t i = m_marks[1]; i < m_logSize; ++i) {
        if (m_pLog[i].cell != cell.index) continue;
        place = &m_pLog[i].value;
        symbolPlace = &m_pLog[i].symbol;
        depthPlace = &m_pLog[i].depth;
        break;
    }
    if (*depthPlace == 0) m_late.push_back(cell.index);
    *place = std::move(value);
    *symbolPlace = symbol;
    *depthPlace = 1;
}

// The first entry of a name behind the global scope's part of the log says what the global scope bound to it.
bool NameCells::IsGlobal(const NameCell& cell) const {
    if (cell.depth <= 1) return cell.symbol != nullptr;
    for (std::size_t i = m_marks[1]; i < m_logSize; ++i) {
        if (m_pLog[i].cell == cell.index) return m_pLog[i].depth == 1;
    }
    return false;
}

void NameCells::Reserve(std::size_t bindings, std::size_t scopes) {
    if (m_logCapacity - m_logSize < bindings) GrowLog(m_logSize + bindings);
    if (m_marks.capacity() - m_marks.size() < scopes)
        m_marks.reserve(std::max(m_marks.size() + scopes, m_marks.capacity() * 2));
}

void NameCells::Taken::Reserve(const NameCells& cells, std::size_t scopes) {
    if (scopes == 0) return;
    m_loose.reserve(scopes + cells.m_logSize - cells.m_marks[cells.m_marks.size() - scopes]);
}

void NameCells::TakeScope(Taken& taken) {
    taken.m_loose.push_back({nullptr, nullptr, {}});
    while (m_logSize > m_marks.back()) {
        NameCell& cell = CellAt(m_pLog[m_logSize - 1].cell);
        taken.m_loose.push_back({&cell, cell.symbol, std::move(cell.value)});
        UndoLast();
    }
    PopScope();
}

void NameCells::PutScope(Taken& taken) {
    PushScope();
    for (; taken.m_loose.back().cell != nullptr; taken.m_loose.pop_back()) {
        Taken::Loose& loose = taken.m_loose.back();
        Bind(*loose.cell, loose.symbol, std::move(loose.value));
    }
    taken.m_loose.pop_back();
}

// Every binding is either in front, in its cell, or in the log behind another one.
bool NameCells::IsBound(const CCoreSymbol& symbol) const {
    for (std::size_t i = m_logSize; i-- > 0;)
        if (m_pLog[i].symbol == &symbol) return true;
    for (std::uint32_t i = 0; i < m_names.size(); ++i)
        if (CellAt(i).symbol == &symbol) return true;
    return false;
}

// ---------------------------------------------------------------------------------------------------------
// For hosts and dumps

// The log says what was bound before; what an entry bound stands in the next entry for the same cell, or, for
// the last one, in the cell. So the walk goes backwards and remembers for each cell where it saw it last.
std::vector<NameCells::Binding> NameCells::BindingsFrom(std::size_t first, std::size_t last,
                                                        bool withLate) const {
    std::unordered_map<std::uint32_t, Entry*> later;
    const auto whereabouts = [&](std::uint32_t index) {
        const auto found = later.find(index);
        NameCell& cell = CellAt(index);
        if (found == later.end()) return Binding{cell.symbol, &cell.value, index, cell.depth};
        return Binding{found->second->symbol, &found->second->value, index, found->second->depth};
    };
    std::vector<Binding> newestFirst;
    for (std::size_t i = m_logSize; i-- > first;) {
        if (i < last) newestFirst.push_back(whereabouts(m_pLog[i].cell));
        later[m_pLog[i].cell] = &m_pLog[i];
    }
    std::vector<Binding> bindings(newestFirst.rbegin(), newestFirst.rend());
    if (withLate)
        for (const std::uint32_t index : m_late)
            bindings.push_back(whereabouts(index));
    return bindings;
}

void NameCells::TopSymbols(TOrderedList<CCoreSymbol*>& out) const {
    if (m_depth == 0) return;
    for (const Binding& binding : BindingsFrom(m_marks.back(), m_logSize, m_depth == 1))
        if (binding.symbol != nullptr && binding.depth == m_depth) out.Add(binding.symbol);
}

// Nearly always the symbol stands in front under its own name. It may also be hidden by an inner binding, or
// stand under another name; then the newest of all bindings is searched for.
Value* NameCells::ValueOf(const CCoreSymbol& symbol) {
    ShowHidden();
    NameCell* cell = FindCell(symbol.GetName());
    if (cell != nullptr && cell->symbol == &symbol) return &cell->value;
    const std::vector<Binding> bindings = BindingsFrom(0, m_logSize, true);
    for (auto binding = bindings.rbegin(); binding != bindings.rend(); ++binding)
        if (binding->symbol == &symbol) return binding->value;
    return nullptr;
}

// The way through a Var gives texts and lists of their own: counts are not made for two threads.
void NameCells::CopyGlobals(const NameCells& other) {
    if (other.m_depth == 0) return;
    const std::size_t end = other.m_depth == 1 ? other.m_logSize : other.m_marks[1];
    for (const Binding& binding : other.BindingsFrom(0, end, true))
        BindGlobal(CellOf(other.m_names[binding.cell]), binding.symbol, FromVar(ToVar(*binding.value)));
}

}  // namespace brenta
