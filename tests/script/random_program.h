// Random script programs, to be run in two ways and compared.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace brenta::test {

/// Writes a module with the globals g0, g1, gs, gl, the classes Pair and Triple, functions that call each
/// other, and Main. It wants the probe (script/run_script.h) as the global variable o.
///
/// Programs end, most of them without an error. What a name holds is told by its spelling, so that a function
/// can use its callers' variables - which happens all the time, as many names are shared - without going
/// wrong; loops run over counters that nobody else assigns to; and what a function may cost is counted while
/// it is written, so that calls within loops stay affordable. Now and then a statement is wrong on purpose.
class RandomProgram {
 public:
    explicit RandomProgram(std::uint32_t seed) : m_random(seed) {}
    std::string Write();

 private:
    struct Function {
        std::string name;
        int parameters;
        int cost;
    };

    std::string WriteFunction(const std::string& name, const std::vector<std::string>& parameters);
    std::string WriteRecursiveFunction();

    // Statements, each of them lines at the current indentation.
    std::string Statements(int count, int depth);
    std::string Statement(int depth);
    std::string Declaration();
    std::string Assignment();
    std::string WrongStatement();
    std::string ForLoop(int depth);
    std::string WhileLoop(int depth);
    std::string ForeachLoop(int depth);
    std::string Conditional(int depth);
    std::string Block(int depth);
    std::string TextStatement();
    std::string LateModule();
    std::string Line(const std::string& text);

    // Expressions.
    std::string Number(int depth);
    std::string BinaryNumber(int depth);
    std::string Text();
    std::string List();
    std::string Condition();
    std::string Call(int depth);
    std::string Element();

    // Names.
    std::string Variable(char kind);
    std::string AnyNumberName();
    bool IsDeclaredHere(const std::string& name) const;
    void Declare(const std::string& name) { m_scopes.back().push_back(name); }

    int Below(int bound) { return static_cast<int>(m_random() % static_cast<std::uint32_t>(bound)); }
    bool Chance(int percent) { return Below(100) < percent; }
    std::string_view OneOf(std::initializer_list<std::string_view> choices) {
        return choices.begin()[Below(static_cast<int>(choices.size()))];
    }

    std::mt19937 m_random;
    std::vector<Function> m_functions;               // those that can be called
    std::vector<std::vector<std::string>> m_scopes;  // the names declared here, by block
    std::string m_private;                           // the beginning of the names of this function alone
    int m_indent = 0;
    int m_names = 0;  // made so far
    int m_turns = 1;  // of the loops around
    int m_cost = 0;   // of this function so far
    int m_loops = 0;  // around
};

}  // namespace brenta::test
