#include "script/random_program.h"

#include <algorithm>
#include <iterator>

namespace brenta::test {

namespace {

/// What a run of a function may cost in statements.
constexpr int kMostCost = 3000;

std::string Joined(const std::vector<std::string>& items) {
    std::string all;
    for (const std::string& item : items)
        all += (all.empty() ? "" : ", ") + item;
    return all;
}

/// The kind of what a variable holds, as its spelling tells: n(umber), t(ext), l(ist), s(tructure), or a
/// counter, which only its loop assigns to.
char KindOf(const std::string& name) {
    const char first = name.starts_with("g") || name.starts_with("p") ? name[1] : name[0];
    return first == 't' || first == 'l' || first == 's' || first == 'k' ? first : 'n';
}

}  // namespace

std::string RandomProgram::Write() {
    m_scopes = {{"g0", "g1", "gt", "gl"}};
    std::string module =
        "var g0 = 1; var g1 = 0.5; var gt = \"ab\"; var gl = {1, 2, 3}; var o = Env.Probe;\n"
        "class Pair { var x = 1; var y = 2; }\n"
        "class Triple inherits Pair { var z = g0 + 2; var inner as Pair; }\n";
    const int count = 1 + Below(5);
    if (Chance(40)) module += WriteRecursiveFunction();
    for (int i = 0; i < count; ++i) {
        std::vector<std::string> parameters;
        for (int p = Below(4); p > 0; --p)
            parameters.push_back(Chance(50) ? std::string(1, "abc"[p - 1]) : "pn" + std::to_string(p));
        module += WriteFunction("F" + std::to_string(i), parameters);
    }
    return module + WriteFunction("Main", {});
}

std::string RandomProgram::WriteFunction(const std::string& name,
                                         const std::vector<std::string>& parameters) {
    m_cost = 1;
    m_private = "p";
    m_scopes.push_back(parameters);
    m_indent = 1;
    m_scopes.emplace_back();
    std::string body = Declaration();
    body += Declaration();
    body += Statements(2 + Below(6), 0) + Line("return " + (Chance(80) ? Number(1) : Text()) + ";");
    m_scopes.resize(1);
    m_indent = 0;
    m_functions.push_back({name, static_cast<int>(parameters.size()), m_cost});
    return "function " + name + "(" + Joined(parameters) + ")\n{\n" + body + "}\n";
}

std::string RandomProgram::WriteRecursiveFunction() {
    m_cost = 1;
    m_scopes.push_back({"k"});
    m_scopes.emplace_back();
    m_indent = 1;
    std::string body = Line("if (k <= 0) { return " + Number(0) + "; }") + Statements(1 + Below(3), 1);
    body += Line("return " + Number(0) + OneOf({" + ", " - ", " * "}).data() + "Down(k - 1);");
    m_scopes.resize(1);
    m_indent = 0;
    m_functions.push_back({"Down", 1, 6 * m_cost});
    return "function Down(k)\n{\n" + body + "}\n";
}

// ---------------------------------------------------------------------------------------------------------
// Statements

std::string RandomProgram::Line(const std::string& text) {
    m_cost += m_turns;
    return std::string(static_cast<std::size_t>(4 * m_indent), ' ') + text + "\n";
}

std::string RandomProgram::Statements(int count, int depth) {
    std::string all;
    for (int i = 0; i < count && m_cost < kMostCost; ++i)
        all += Statement(depth);
    return all;
}

std::string RandomProgram::Statement(int depth) {
    const int choice = Below(100);
    if (depth < 3) {
        if (choice < 7) return ForLoop(depth);
        if (choice < 11) return WhileLoop(depth);
        if (choice < 16) return ForeachLoop(depth);
        if (choice < 26) return Conditional(depth);
        if (choice < 30) return Block(depth);
    }
    if (choice < 45) return Declaration();
    if (choice < 52) return Line("print(" + (Chance(50) ? Number(1) : Chance(60) ? Text() : List()) + ");");
    if (choice < 60) return TextStatement();
    if (choice < 63) return Line(Call(1) + ";");
    if (choice < 65) return Chance(40) ? WrongStatement() : Assignment();
    if (choice < 66) return LateModule();
    if (choice < 68 && m_loops > 0) return Line(Chance(50) ? "break;" : "continue;");
    if (choice < 69) return Line("return " + Number(1) + ";");
    return Assignment();
}

std::string RandomProgram::Block(int depth) {
    std::string all = Line("{");
    ++m_indent;
    m_scopes.emplace_back();
    all += Statements(1 + Below(4), depth + 1);
    m_scopes.pop_back();
    --m_indent;
    return all + Line("}");
}

std::string RandomProgram::Declaration() {
    static constexpr std::string_view shared[] = {"a", "b", "c", "t", "l", "s"};
    const bool isShared = Chance(45);
    std::string name(shared[static_cast<std::size_t>(Below(6))]);
    if (!isShared) name = m_private + (name < "d" ? "n" : name) + std::to_string(m_names++);
    if (IsDeclaredHere(name)) return Assignment();
    const char kind = KindOf(name);
    const std::string start = kind == 't'   ? " = " + Text()
                              : kind == 'l' ? Chance(20) ? "[4]" : " = " + List()
                              : kind == 's' ? Chance(50) ? " as Pair" : " as Triple"
                                            : " = " + Number(2);
    Declare(name);
    return Line("var " + name + start + ";");
}

/// Whether a declaration would be the second one in its block; a function's parameters count as its body's.
bool RandomProgram::IsDeclaredHere(const std::string& name) const {
    const auto holds = [&](const std::vector<std::string>& block) {
        return std::find(block.begin(), block.end(), name) != block.end();
    };
    return holds(m_scopes.back()) || (m_scopes.size() == 3 && holds(m_scopes[1]));
}

std::string RandomProgram::Assignment() {
    const int choice = Below(100);
    const std::string number = Variable('n');
    if (choice < 20)
        return Line(number + " = " + number + " " + OneOf({"+", "-", "*"}).data() + " " + Number(0) + ";");
    if (choice < 30)
        return Line(number + " " + OneOf({"+=", "-=", "*=", "/=", "|=", "%="}).data() + " " +
                    std::to_string(1 + Below(7)) + ";");
    if (choice < 35) return Line(number + " = " + Variable('n') + " = " + Number(1) + ";");
    if (choice < 45) {
        const std::string text = Variable('t');
        return Line(text +
                    (Chance(60)   ? " = " + text + " + " + Number(0)
                     : Chance(50) ? " += \"cd\""
                                  : " = " + Text()) +
                    ";");
    }
    if (choice < 55) {
        const std::string list = Variable('l');
        return Line(list + (Chance(60) ? " = " + list + " + " : " += ") +
                    (Chance(70) ? Number(1) : "{7, " + Number(0) + "}") + ";");
    }
    if (choice < 63) return Line(Element() + OneOf({" = ", " += ", " = 1 + "}).data() + Number(1) + ";");
    if (choice < 75) {
        const std::string structure = Variable('s');
        if (structure.empty()) return Line("o.name = " + Number(1) + ";");
        const std::string member = structure + OneOf({".x", ".y"}).data();
        return Line(member + (Chance(60) ? " = " + member + " + " + Number(0) : " = " + Number(2)) + ";");
    }
    if (choice < 78) return Line("o.name = " + Number(1) + ";");
    return Line(number + " = " + Number(3) + ";");
}

/// Most of these end the run with an error; some only look as if they did.
std::string RandomProgram::WrongStatement() {
    const std::string number = Variable('n'), list = Variable('l');
    const std::string statements[] = {
        number + " = " + AnyNumberName() + ";",
        number + " = 5 % (" + Variable('n') + " - " + Variable('n') + ");",
        list + "[" + std::to_string(Below(9) - 1) + "] = 7;",
        "F0(1, 2, 3, 4, 5);",
        list + " = " + Number(0) + ";",
        "if (null) { print(1); }",
        "print(" + number + ".Missing(1));",
        "o.Refused(" + Number(0) + ");",
        "print(" + Variable('t') + ".x);",
        "execute(\"" + number + " = (1;\");",
        "execute(\"break;\");",
        "print(missing + " + Number(0) + ");",
    };
    return Line(statements[Below(int{std::size(statements)})]);
}

std::string RandomProgram::ForLoop(int depth) {
    const std::string counter = "k" + std::to_string(m_names++);
    const int turns = 1 + Below(4);
    std::string head = "for (var " + counter + " = 0; " + counter + " < " + std::to_string(turns) + "; " +
                       counter + OneOf({" = ", " += "}).data();
    head += head.ends_with("+= ") ? "1)" : counter + " + 1)";
    Declare(counter);
    std::string all = Line(head);
    m_turns *= turns;
    ++m_loops;
    all += Chance(85) ? Block(depth) : "    " + Assignment();
    --m_loops;
    m_turns /= turns;
    return all;
}

std::string RandomProgram::WhileLoop(int depth) {
    const std::string counter = "k" + std::to_string(m_names++);
    const int turns = 1 + Below(3);
    Declare(counter);
    std::string all = Line("var " + counter + " = " + std::to_string(turns) + ";");
    all += Line("while (" + counter + " > 0" + (Chance(30) ? " && (" + Condition() + ")" : "") + ")") +
           Line("{");
    ++m_indent;
    m_turns *= turns;
    ++m_loops;
    m_scopes.emplace_back();
    // The counter goes first, so that a `continue` does not jump over it.
    all += Line(counter + " = " + counter + " - 1;") + Statements(1 + Below(3), depth + 1);
    m_scopes.pop_back();
    --m_loops;
    m_turns /= turns;
    --m_indent;
    return all + Line("}");
}

std::string RandomProgram::ForeachLoop(int depth) {
    const std::string element = Chance(10) ? "a" : "e" + std::to_string(m_names++);
    // A list may have grown: the counter ends the loop after some elements.
    const std::string counter = "k" + std::to_string(m_names++);
    std::string all = Line("var " + counter + " = 0;");
    Declare(counter);
    const bool isVariable = Chance(50);
    all += Line("foreach (" + element + " in " +
                (isVariable ? Variable('l') : "{1, 2.5, " + Number(0) + "}") + ")");
    m_turns *= isVariable ? 5 : 3;
    ++m_loops;
    all += Line("{");
    ++m_indent;
    m_scopes.emplace_back();
    if (element == "a") Declare(element);
    if (isVariable) all += Line(counter + " += 1; if (" + counter + " > 5) { break; }");
    // What the elements are is not known: a print does not mind.
    if (Chance(60)) all += Line("print(" + element + ");");
    all += Statements(1 + Below(2), depth + 1);
    m_scopes.pop_back();
    --m_indent;
    --m_loops;
    m_turns /= isVariable ? 5 : 3;
    return all + Line("}");
}

std::string RandomProgram::Conditional(int depth) {
    std::string all = Line("if (" + Condition() + ")") + Block(depth);
    if (Chance(30)) all += Line("else if (" + Condition() + ")") + Block(depth);
    if (Chance(50)) all += Line("else") + Block(depth);
    return all;
}

/// A text of numbers alone, for `execute` or for a host that runs it: it has no quotes.
std::string RandomProgram::TextStatement() {
    std::string text;
    for (int i = 1 + Below(2); i > 0; --i) {
        const int choice = Below(10);
        const std::string name = Variable('n');
        if (choice < 5)
            text += name + " = " + name + " + " + std::to_string(Below(9)) + "; ";
        else if (choice < 6)
            text += "var " + std::string(OneOf({"a", "b", "c"})) + " = " + name + "; ";
        else if (choice < 8)
            text += "print(" + (Chance(10) ? AnyNumberName() : name) + "); ";
        else if (choice < 9)
            text += Call(0) + "; ";
        else
            text += "{ var b = 3; " + name + " = b; } ";
    }
    if (Chance(20)) return Line("o.Run(\"" + text + "\");");
    if (Chance(20)) return Line("g0 = o.Run(\"" + Variable('n') + " + 1\");");
    return Line("execute(\"" + text + "\");");
}

/// A module that comes while others run, and uses names that were nobody else's before.
std::string RandomProgram::LateModule() {
    const std::string name = "Late" + std::to_string(m_names++);
    const std::string used = Variable('n');
    return Line("o.Load(\"function " + name + "(v) { " + used + " = " + used + " + v; return " + used +
                "; }\");") +
           Line(Variable('n') + " = " + name + "(" + Number(0) + ") + " + used + ";");
}

// ---------------------------------------------------------------------------------------------------------
// Expressions

std::string RandomProgram::Number(int depth) {
    const int choice = Below(depth > 0 ? 100 : 45);
    if (choice < 12) return std::to_string(Below(10));
    if (choice < 16)
        return std::string(OneOf({"0.5", "2.0", "1.25", "1073741824", "2147483647", "3mil", "true"}));
    if (choice < 38) return Variable('n');
    if (choice < 42) return Element();
    if (choice < 45) {
        const std::string structure = Variable('s');
        return structure.empty() ? "o.name" : structure + OneOf({".x", ".y"}).data();
    }
    if (choice < 55) return Call(depth - 1);
    if (choice < 59) return "o.Sum(" + Number(depth - 1) + ", " + Number(0) + ")";
    if (choice < 62) return "(" + Variable('n') + " = " + Number(depth - 1) + ")";
    if (choice < 64) return "(" + Number(depth - 1) + ").Round(0.5)";
    if (choice < 68) return std::string(OneOf({"!", "~", "-"})) + "(" + Number(depth - 1) + ")";
    return BinaryNumber(depth - 1);
}

std::string RandomProgram::BinaryNumber(int depth) {
    const std::string_view op = OneOf({"+", "+", "-", "*", "/", "%", "&", "|", "^", "<<", ">>", "<", ">",
                                       "<=", ">=", "==", "!=", "&&", "||"});
    const std::string left = Number(depth);
    const std::string right = op == "%" ? std::to_string(1 + Below(9)) : Number(depth);
    const std::string both = left + " " + std::string(op) + " " + right;
    return Chance(70) ? "(" + both + ")" : both;
}

std::string RandomProgram::Condition() {
    return Chance(70)   ? Number(0) + " " + OneOf({"<", ">", "<=", ">=", "==", "!="}).data() + " " + Number(0)
           : Chance(50) ? Text() + " " + OneOf({"<", "=="}).data() + " " + Text()
                        : Number(1);
}

std::string RandomProgram::Text() {
    const int choice = Below(10);
    if (choice < 3) return std::string(OneOf({"\"\"", "\"ab\"", "\"pin9\"", "\"12\""}));
    if (choice < 6) return Variable('t');
    if (choice < 8) return "(" + Variable('t') + " + " + Number(0) + ")";
    return "(" + Variable('t') + OneOf({" << 1)", " >> 1)", " - \"b\")", " + \"q\")"}).data();
}

std::string RandomProgram::List() {
    const int choice = Below(10);
    if (choice < 4) return "{" + Number(1) + ", " + Number(0) + ", " + Number(0) + "}";
    if (choice < 7) return Variable('l');
    if (choice < 8) return "{" + Number(0) + ", 2, " + Number(0) + ", {1, " + Variable('t') + "}}";
    if (choice < 9) return "o.list + 3 + " + Number(0);
    return "(" + Variable('l') + " + " + Number(0) + ")";
}

std::string RandomProgram::Element() {
    return Variable('l') + "[" + (Chance(97) ? std::to_string(Below(3)) : "true") + "]";
}

std::string RandomProgram::Call(int depth) {
    if (m_functions.empty()) return "o.Sum(2, " + Number(0) + ")";
    const Function& function =
        m_functions[static_cast<std::size_t>(Below(static_cast<int>(m_functions.size())))];
    if (m_cost + function.cost * m_turns > kMostCost) return Variable('n');
    m_cost += function.cost * m_turns;
    if (function.name == "Down") return "Down(" + std::to_string(Below(6)) + ")";
    std::vector<std::string> arguments;
    for (int i = 0; i < function.parameters; ++i)
        arguments.push_back(Number(std::max(0, depth)));
    return function.name + "(" + Joined(arguments) + ")";
}

// ---------------------------------------------------------------------------------------------------------
// Names

/// A variable that is declared here, the nearer the likelier; "" for a structure when there is none.
std::string RandomProgram::Variable(char kind) {
    std::vector<std::string> found;
    for (const std::vector<std::string>& block : m_scopes) {
        for (const std::string& name : block) {
            if (KindOf(name) == kind) found.push_back(name);
        }
    }
    if (found.empty()) return "";
    const int last = static_cast<int>(found.size()) - 1;
    return found[static_cast<std::size_t>(std::max(Below(last + 1), Below(last + 1)))];
}

/// A name that some function uses for a number, which need not be bound.
std::string RandomProgram::AnyNumberName() {
    if (Chance(50)) return std::string(OneOf({"a", "b", "c"}));
    return "pn" + std::to_string(Below(m_names + 3));
}

}  // namespace brenta::test
