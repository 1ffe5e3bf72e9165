#include "brenta/symbols.h"

#include <deque>
#include <memory>

#include "brenta/statements.h"
#include "script/operator_rows.h"
#include "script/script_test_support.h"
#include "script/symbol_access.h"

namespace brenta::test {
namespace {

using namespace rows;

const STRID kX = StrId("x");
const STRID kY = StrId("y");

std::string Show(const ScriptSymbol& symbol) {
    return Describe(symbol.GetValue());
}

/// Member symbols live as long as the test; a class owns only their declarations.
struct Classes : ::testing::Test {
    bool AddMember(ClassSymbol& cls, const char* name, const Var& value, ClassSymbol* type = nullptr) {
        return Declare(cls, members.emplace_back(StrId(name), value, type));
    }
    bool AddArray(ClassSymbol& cls, const char* name, ClassSymbol* type, int size) {
        return Declare(cls, members.emplace_back(StrId(name), type, size));
    }
    bool Declare(ClassSymbol& cls, ScriptSymbol& symbol) {
        auto declaration = std::make_unique<DeclarationStatement>(&symbol, nullptr, kNoName);
        if (!cls.AddMember("here: ", &messages, declaration.get())) return false;
        declaration.release();
        return true;
    }

    std::deque<ScriptSymbol> members;
    RecordingStream messages;
};

TEST(SymbolTable, WithoutScopesItSaysSo) {
    CCoreSymbolTable table;
    ScriptSymbol symbol(kX, Var(1, kX), nullptr);
    table.PopScope();
    CrashRecorder recorder;
    table.PopScope();
    table.AddSymbol(kX, &symbol);
    EXPECT_EQ(table.GetSymbol(kX, false), nullptr);
    EXPECT_EQ(table.GetFirstSymbol().Get(), nullptr);
    EXPECT_EQ(recorder.Messages(), std::vector<std::string>(4, "Assertion failed! m_pHead"));
    EXPECT_STREQ(recorder.Last().File(), "Templ");
    EXPECT_EQ(table.GetScopeDepth(), 0);
}

TEST(SymbolTable, CopiesItsGlobalsWithTheirValues) {
    ScriptSymbol symbol(kX, Var(1, kX), nullptr);
    ScriptSymbol local(kY, Var(1, kY), nullptr);
    CCoreSymbolTable copy;
    {
        CCoreSymbolTable table;
        table.AddSymbol(kX, &symbol);
        symbol.SetValue(Var("changed", kNoName));
        table.PushScope();
        table.AddSymbol(kY, &local);
        copy = table;
        symbol.SetValue(Var("later", kNoName));
    }
    EXPECT_EQ(Show(symbol), "int 1");
    EXPECT_EQ(copy.GetSymbol(kX, true), &symbol);
    EXPECT_EQ(Show(symbol), "string changed");
    EXPECT_EQ(copy.GetSymbol(kY, false), nullptr);
}

TEST(FuncSymbol, KeepsItsParameters) {
    RecordingStream messages;
    FuncSymbol function(StrId("f"));
    EXPECT_EQ(DumpOf(function), "function symbol f()\n");
    EXPECT_TRUE(function.AddParam(nullptr, &messages, StrId("a")));
    EXPECT_TRUE(function.AddParam(nullptr, nullptr, StrId("b")));
    EXPECT_TRUE(function.AddParam(nullptr, &messages, kNoName));
    EXPECT_FALSE(function.AddParam(nullptr, &messages, kNoName));
    EXPECT_EQ(messages.TakeErrors(), "Parameter '' already defined.\n");
    EXPECT_EQ(function.GetParamCount(), 3);
    EXPECT_EQ(Show(**function.GetFirstParam().Get()), "int 0");
    EXPECT_EQ((*function.GetFirstParam().Get())->GetValue().GetName(), StrId("a"));
    function.SetBody(new CompoundStatement);
    EXPECT_EQ(DumpOf(function), "function symbol f(a, b, )\n {\n    \n}\n");
    function.SetBody(new CompoundStatement);

    CCoreSymbolTable table;
    table.AddSymbol(StrId("f"), &function);
    EXPECT_EQ(table.Cells().CellOf(StrId("f")).value.Function(), &function);
    EXPECT_EQ(Show(function), "null");
    ScriptSymbol holder(kX, List({Var(static_cast<void*>(&function), kFunctionName)}), nullptr);
    EXPECT_EQ(holder.GetMember(StrId("f")), &function);
    EXPECT_EQ(holder.GetMember(StrId("g")), nullptr);
    EXPECT_EQ(function.GetMember(StrId("f")), nullptr);
}

TEST_F(Classes, BuildObjectsBaseFirst) {
    ClassSymbol a(StrId("A"), nullptr);
    ClassSymbol b(StrId("B"), &a);
    ClassSymbol c(StrId("C"), &b);
    EXPECT_TRUE(AddMember(a, "x", Int(1)));
    EXPECT_TRUE(AddMember(b, "y", Named(Text("two"), "y")));
    EXPECT_TRUE(AddMember(b, "x", Int(3)));
    EXPECT_TRUE(AddMember(c, "in", Null(), &a));
    EXPECT_TRUE(AddArray(c, "row", &a, 2));
    const ScriptSymbol object(StrId("o"), Int(77), &c);
    EXPECT_EQ(Show(object), "list {1, two, 3, {1}\n, {{1}\n, {1}\n}\n}\n");
    EXPECT_EQ(object.GetValue().GetName(), StrId("o"));
    EXPECT_EQ(object.GetValue().GetMember(kX)->GetInt(), 1);
    EXPECT_EQ(object.GetValue().GetMember(StrId("in"))->GetMember(kX)->GetInt(), 1);
    EXPECT_EQ(Show(b), "list {two, 3}\n");
    EXPECT_EQ(c.GetInstanceWeight(), 10u);
    EXPECT_EQ(c.GetInstanceDepth(), 3u);
    Var out = List({Int(0)});
    object.Aggregate(&a, out);
    object.Aggregate(nullptr, out);
    EXPECT_EQ(Describe(out), "list {0, 1}\n");
    EXPECT_EQ(Show(ScriptSymbol(kX, &a, 2)), "list {{1}\n, {1}\n}\n");
    EXPECT_EQ(Show(ScriptSymbol(kX, Text("e"), 2)), "list {e, e}\n");
    EXPECT_EQ(Show(ScriptSymbol(kX, Text("e"), -2)), "list {}\n");
    EXPECT_EQ(DumpOf(b), "Class symbol B inherits A {\n    B {\n        two\n        3\n    }\n    \n}\n");
}

TEST_F(Classes, SeeLaterChanges) {
    ClassSymbol a(StrId("A"), nullptr);
    ClassSymbol b(StrId("B"), &a);
    AddMember(b, "in", Null(), &a);
    EXPECT_EQ(Show(ScriptSymbol(kX, Null(), &b)), "list {{}\n}\n");
    AddMember(a, "x", Int(1));
    EXPECT_EQ(Show(ScriptSymbol(kX, Null(), &b)), "list {1, {1}\n}\n");
    members.back().SetValue(Int(2));
    EXPECT_EQ(Show(ScriptSymbol(kX, Null(), &b)), "list {2, {2}\n}\n");
    // A class in scope shows its new members there too.
    CCoreSymbolTable table;
    table.AddSymbol(StrId("A"), &a);
    AddMember(a, "y", Int(5));
    EXPECT_EQ(Show(a), "list {1, 5}\n");
    EXPECT_EQ(table.Cells().CellOf(StrId("A")).value.List()->length, 2u);
}

TEST_F(Classes, StayWithinTheLimits) {
    std::deque<ClassSymbol> chain;
    chain.emplace_back(StrId("C0"), nullptr);
    AddMember(chain.back(), "x", Int(1));
    for (int i = 1; i < 60; ++i) {
        ClassSymbol* part = &chain.back();
        chain.emplace_back(StrId("C"), nullptr);
        AddMember(chain.back(), "a", Null(), part);
        AddMember(chain.back(), "b", Null(), part);
    }
    EXPECT_EQ(chain[1].GetInstanceWeight(), 4u);
    EXPECT_EQ(chain[30].GetInstanceWeight(), (std::uint64_t{3} << 30) - 2);
    const ScriptSymbol big(kX, Null(), &chain.back());
    EXPECT_TRUE(SymbolAccess::StartValue(const_cast<ScriptSymbol&>(big)).IsList());
    // Members of the class's own kind, which only a host can make, and a chain of bases as long as a script.
    ClassSymbol self(StrId("S"), nullptr);
    AddMember(self, "s", Null(), &self);
    const Var object = ScriptSymbol(kX, Null(), &self).GetValue();
    EXPECT_EQ(object.GetInt(), 1);
    EXPECT_EQ(object.GetMember(StrId("s"))->GetKind(), VarKind::Null);
    for (int i = 0; i < 20000; ++i)
        chain.emplace_back(StrId("D"), &chain.back());
    AddMember(chain.back(), "last", Int(1));
    EXPECT_GT(chain.back().GetInstanceWeight(), 1u);
}

}  // namespace
}  // namespace brenta::test
