#include "brenta/statements.h"

#include <memory>

#include "script/parser.h"
#include "script/script_test_support.h"

namespace brenta::test {
namespace {

TEST(Statements, Dumps) {
    // clang-format off
    const struct { const char* text; const char* dump; } kRows[] = {
        {"a = 1;",                   "<expression>"},
        {"var a;",                   "<declaration_statement>\n"},
        {"if (a) {} else {}",        "<conditional_statement>\n"},
        {"while (a) b;",             "<iteration_statement>\n"},
        {"return a;",                "<jump_statement>\n"},
        {"print(a)",                 "<print_statement>\n"},
        {"execute(a)",               "execute:  {\n    <expression>\n}\n"},
        {"_halt",                    "<halt_statement>\n"},
        {"{ print(a) { break; } }",  " {\n    <print_statement>\n     {\n        <jump_statement>\n        \n"
                                     "    }\n    \n}\n"},
    };
    // clang-format on
    for (const auto& row : kRows) {
        ParserFixture fixture;
        TIter<ScriptToken*> iter = fixture.Scan(row.text);
        const std::unique_ptr<Statement> statement(fixture.engine.ParseStatement(iter));
        ASSERT_NE(statement, nullptr) << row.text;
        EXPECT_EQ(DumpOf(*statement), row.dump) << row.text;
    }
}

// Whoever constructs for itself has no block around it that would close what a failure leaves open.
TEST(Statements, FailedConstructionClosesItsScopes) {
    ParserFixture fixture;
    ASSERT_EQ(fixture.ParseModule("class S { var p = 1; var q = missing; }"), "");
    TOrderedList<Var> members;
    members.Add(Var());
    members.Add(Var());
    TIter<Var> at(members);
    DeclarationStatement declaration(nullptr, nullptr, kNoName);
    auto* const cls = dynamic_cast<ClassSymbol*>(fixture.engine.GetSymbol(StrId("S"), false));
    EXPECT_FALSE(declaration.Construct(fixture.engine, cls, at));
    EXPECT_EQ(fixture.messages.TakeErrors(), "t(1): Symbol 'missing' not defined.\n");
    EXPECT_EQ(fixture.engine.GetSymbol(StrId("p"), false), nullptr);
}

}  // namespace
}  // namespace brenta::test
