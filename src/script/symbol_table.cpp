// The table of scopes, a face of NameCells (script/name_cells.h), where the bindings are.
//
// Symbols find their way back to the table through a link that they share with it: a symbol may outlive its
// table, and a table its symbols, so neither may hold a bare pointer to the other for longer than a binding
// lasts. Every symbol that the table takes in or hands out gets the link; the engine binds many that no host
// ever asks for.
#include "brenta/failure.h"
#include "brenta/symbols.h"
#include "script/name_cells.h"
#include "script/symbol_access.h"

namespace brenta {

CCoreSymbolTable::CCoreSymbolTable()
    : m_pCells(new NameCells), m_link(std::make_shared<TableLink>(TableLink{m_pCells})) {
    m_pCells->PushScope();
}

CCoreSymbolTable::CCoreSymbolTable(const CCoreSymbolTable& other) : CCoreSymbolTable() {
    m_pCells->CopyGlobals(*other.m_pCells);
}

CCoreSymbolTable& CCoreSymbolTable::operator=(const CCoreSymbolTable& other) {
    if (this == &other) return *this;
    m_pCells->PopTo(0);
    m_pCells->PushScope();
    m_pCells->CopyGlobals(*other.m_pCells);
    m_symbols.RemoveAll();
    return *this;
}

CCoreSymbolTable::~CCoreSymbolTable() {
    m_link->cells = nullptr;
    delete m_pCells;
}

std::size_t CCoreSymbolTable::SizeOf() const {
    return sizeof(*this);
}

const char* CCoreSymbolTable::GetClassName() const {
    return "CCoreSymbolTable";
}

const char* CCoreSymbolTable::GetBaseClassName() const {
    return "none";
}

bool CCoreSymbolTable::AssertScope() const {
    if (m_pCells->Depth() > 0) return true;
    ForcedCrash(0, "Templ", __LINE__, "Assertion failed! m_pHead");
    return false;
}

void CCoreSymbolTable::PushScope() {
    m_pCells->PushScope();
}

void CCoreSymbolTable::PopScope() {
    m_pCells->PopScope();
}

int CCoreSymbolTable::GetScopeDepth() const {
    return m_pCells->Depth();
}

void CCoreSymbolTable::AddSymbol(STRID name, CCoreSymbol* symbol) {
    if (!AssertScope() || symbol == nullptr) return;
    SymbolAccess::Link(*symbol, m_link);
    m_pCells->Bind(m_pCells->CellOf(name), symbol, SymbolAccess::StartValue(*symbol));
}

CCoreSymbol* CCoreSymbolTable::GetSymbol(STRID name, bool topScopeOnly) const {
    if (!AssertScope()) return nullptr;
    m_pCells->ShowHidden();
    const NameCell* cell = m_pCells->FindCell(name);
    if (cell == nullptr || cell->symbol == nullptr) return nullptr;
    if (topScopeOnly && !m_pCells->IsInTopScope(*cell)) return nullptr;
    SymbolAccess::Link(*cell->symbol, m_link);
    return cell->symbol;
}

TIter<CCoreSymbol*> CCoreSymbolTable::GetFirstSymbol() {
    m_symbols.RemoveAll();
    m_pCells->ShowHidden();
    if (AssertScope()) m_pCells->TopSymbols(m_symbols);
    for (CCoreSymbol* symbol : m_symbols)
        SymbolAccess::Link(*symbol, m_link);
    return TIter<CCoreSymbol*>(m_symbols);
}

}  // namespace brenta
