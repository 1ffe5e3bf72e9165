// Gives scripts an object of the program's own: a board with a size that scripts read and set, and holes that
// they drill. A script then does what the program's author has not foreseen.
#include <brenta/script.h>
#include <brenta/units.h>

#include <cstdio>
#include <vector>

using brenta::StrId;
using brenta::Var;

class Board : public brenta::CCoreScriptable {
 public:
    // Everything that a script does with the object arrives here, one request at a time.
    bool ScriptAction(IOB& request) override {
        switch (request.action) {
            case kGet:
                return Get(request.name, *request.result);
            case kSet:
                return Set(request.name, *request.arguments->GetHead());
            case kCall:
                return Call(request.name, *request.arguments, *request.result);
            default:
                return false;
        }
    }
    std::size_t SizeOf() const override { return sizeof(*this); }
    const char* GetClassName() const override { return "Board"; }
    const char* GetBaseClassName() const override { return "CCoreScriptable"; }

    void Print() const {
        const brenta::CoreString width = brenta::UnitToString(m_width, brenta::kMillimeters, true);
        std::printf("a board of %s with %zu holes\n", width(), m_holes.size());
        for (const Hole& hole : m_holes)
            std::printf("  at %d, %d\n", hole.x, hole.y);
    }

 private:
    struct Hole {
        int x, y;
    };

    // An answer of false refuses a request: the script's expression fails.
    bool Get(brenta::STRID name, Var& result) const {
        if (name == StrId("width")) {
            result = m_width;
        } else if (name == StrId("holeCount")) {
            result = static_cast<int>(m_holes.size());
        } else {
            return false;
        }
        return true;
    }

    bool Set(brenta::STRID name, const Var& value) {
        if (name != StrId("width") || value.GetInt() <= 0) return false;
        m_width = value.GetInt();
        return true;
    }

    bool Call(brenta::STRID name, const brenta::TOrderedList<Var>& arguments, Var& result) {
        if (name != StrId("Drill") || arguments.GetCount() != 2) return false;
        brenta::TIter<Var> argument(arguments);
        const int x = argument.Get()->GetInt();
        argument.Next();
        m_holes.push_back({x, argument.Get()->GetInt()});
        result = static_cast<int>(m_holes.size());
        return true;
    }

    int m_width = 0;  // in internal units, ten-millionths of an inch
    std::vector<Hole> m_holes;
};

class Console : public brenta::CScriptMsgStream {
 public:
    void OutputPrintStream(const char* text) override { std::puts(text); }
    void OutputErrStream(const char* text) override { std::printf("error: %s\n", text); }
};

// A number with a unit is converted at once, so that lengths are plain numbers for the program.
constexpr const char* kScript = R"(
function DrillRow(board, count)
{
    board.width = 50mm;
    for (var i = 1; i <= count; i = i + 1)
    {
        board.Drill(i * 100mil, 1in);
    }
    return board.holeCount;
}
)";

int main() {
    Board board;
    brenta::TOrderedList<Var> environment;
    environment.Add(Var(&board, StrId("Board")));  // Env.Board for scripts
    Console console;
    brenta::CCoreScriptEngine engine(environment, &console);

    Var count;
    if (!engine.InjectScript("drill", kScript) ||
        !engine.Execute("DrillRow(Env.Board, 3)", count, brenta::kUnitsNone))
        return 1;
    std::printf("the script answers %d\n", count.GetInt());
    board.Print();

    // What the object refuses is an error of the script, not of the program.
    engine.Execute("Env.Board.Polish(1)", count, brenta::kUnitsNone);
    return 0;
}
