#include "script/name_cells.h"

#include <gtest/gtest.h>

#include <deque>
#include <vector>

namespace brenta::test {
namespace {

/// "x=1 y=2": the ints that the names are bound to, "-" for names without binding.
std::string Show(const NameCells& cells, std::initializer_list<const char*> names) {
    std::string text;
    for (const char* name : names) {
        const NameCell* cell = cells.FindCell(StrId(name));
        const bool isBound = cell != nullptr && cell->symbol != nullptr;
        text += std::string(text.empty() ? "" : " ") + name + "=";
        text += isBound ? std::to_string(cell->value.Int()) + "@" + std::to_string(cell->depth) : "-";
    }
    return text;
}

struct NameCellScopes : ::testing::Test {
    NameCellScopes() { cells.PushScope(); }

    CCoreSymbol& Bind(const char* name, int value) {
        CCoreSymbol& symbol = symbols.emplace_back(StrId(name));
        cells.Bind(cells.CellOf(StrId(name)), &symbol, Value::OfInt(value));
        return symbol;
    }
    CCoreSymbol& BindGlobal(const char* name, int value) {
        CCoreSymbol& symbol = symbols.emplace_back(StrId(name));
        cells.BindGlobal(cells.CellOf(StrId(name)), &symbol, Value::OfInt(value));
        return symbol;
    }
    std::string Top() const {
        TOrderedList<CCoreSymbol*> list;
        cells.TopSymbols(list);
        std::string text;
        for (const CCoreSymbol* symbol : list)
            text += StrPtr(symbol->GetName());
        return text;
    }

    std::deque<CCoreSymbol> symbols;
    NameCells cells;
};

TEST_F(NameCellScopes, ScopesRollBack) {
    Bind("x", 1);
    cells.PushScope();
    Bind("x", 2);
    Bind("y", 3);
    Bind("x", 4);  // hides the other one in the same scope
    EXPECT_EQ(Show(cells, {"x", "y"}), "x=4@2 y=3@2");
    EXPECT_EQ(Top(), "xyx");
    cells.PushScope();
    EXPECT_FALSE(cells.IsInTopScope(cells.CellOf(StrId("x"))));
    cells.CellOf(StrId("y")).value = Value::OfInt(5);  // an assignment from an inner scope
    cells.PopScope();
    EXPECT_EQ(Show(cells, {"x", "y"}), "x=4@2 y=5@2");
    cells.PopScope();
    EXPECT_EQ(Show(cells, {"x", "y"}), "x=1@1 y=-");
    EXPECT_EQ(Top(), "x");
    // Within a scope too.
    const std::size_t mark = cells.Mark();
    Bind("y", 6);
    Bind("x", 7);
    cells.RollBackTo(mark);
    EXPECT_EQ(Show(cells, {"x", "y"}), "x=1@1 y=-");
    EXPECT_EQ(cells.Depth(), 1);
}

TEST_F(NameCellScopes, GlobalsMayBeBoundUnderOpenScopes) {
    Bind("old", 1);
    cells.PushScope();
    Bind("x", 2);
    Bind("old", 3);
    cells.PushScope();
    Bind("x", 4);
    const std::size_t mark = cells.Mark();
    BindGlobal("x", 10);
    BindGlobal("free", 11);
    CCoreSymbol& old = BindGlobal("old", 12);
    EXPECT_EQ(cells.Mark(), mark);
    EXPECT_EQ(Show(cells, {"x", "old", "free"}), "x=4@3 old=3@2 free=11@1");
    EXPECT_EQ(cells.ValueOf(old)->Int(), 12);
    cells.PopTo(2);
    EXPECT_EQ(Show(cells, {"x", "old", "free"}), "x=2@2 old=3@2 free=11@1");
    cells.PopTo(1);
    EXPECT_EQ(Show(cells, {"x", "old", "free"}), "x=10@1 old=12@1 free=11@1");
    EXPECT_EQ(Top(), "oldxfree");
    NameCells copy;
    copy.PushScope();
    copy.CopyGlobals(cells);
    cells.PopTo(0);
    EXPECT_EQ(Show(cells, {"x", "old", "free"}), "x=- old=- free=-");
    EXPECT_EQ(Show(copy, {"x", "old", "free"}), "x=10@1 old=12@1 free=11@1");
    cells.PushScope();
    EXPECT_EQ(Top(), "");
    cells.PushScope();
    BindGlobal("free", 13);
    cells.PopTo(0);
    EXPECT_EQ(Show(cells, {"free"}), "free=-");
}

TEST_F(NameCellScopes, HoldAnyNumberOfNamesAtFixedPlaces) {
    NameCell& first = cells.CellOf(StrId("first"));
    std::vector<NameCell*> places;
    const auto name = [](std::size_t i) { return StrId(("name" + std::to_string(i)).c_str()); };
    for (std::size_t i = 0; i < 5000; ++i)
        places.push_back(&cells.CellOf(name(i)));
    for (std::size_t i = 0; i < 5000; ++i) {
        ASSERT_EQ(cells.FindCell(name(i)), places[i]);
        ASSERT_EQ(cells.NameOf(*places[i]), name(i));
    }
    EXPECT_EQ(&cells.CellOf(StrId("first")), &first);
    EXPECT_EQ(cells.FindCell(name(5000)), nullptr);
    EXPECT_EQ(cells.FindCell(kNoName), nullptr);
    const NameCell& nameless = cells.CellOf(kNoName);
    EXPECT_EQ(cells.FindCell(kNoName), &nameless);
}

}  // namespace
}  // namespace brenta::test
