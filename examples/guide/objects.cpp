// Objects of the host in the hands of a script: a board with properties, elements and a method, and parts
// that scripts can create.
#include <brenta/script.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

using brenta::StrId;
using brenta::StrPtr;
using brenta::Var;

// ---------------------------------------------------------------------------------------------------------
// A part: two properties, which scripts read and write

class Part : public brenta::CCoreScriptable {
 public:
    bool ScriptAction(IOB& request) override {
        if (request.action == kGet && request.name == StrId("ref"))
            return Answer(request, Var(m_ref.c_str(), {}));
        if (request.action == kGet && request.name == StrId("x")) return Answer(request, Var(m_x, {}));
        if (request.action != kSet) return false;
        const Var& value = *request.arguments->GetHead();
        if (request.name == StrId("ref")) {
            m_ref = StrPtr(value.GetString());
            return true;
        }
        if (request.name == StrId("x") && value.IsNumeric()) {
            m_x = value.GetInt();
            return true;
        }
        return false;  // no such property, or no number: the script's statement fails
    }
    std::size_t SizeOf() const override { return sizeof(*this); }
    const char* GetClassName() const override { return "Part"; }
    const char* GetBaseClassName() const override { return "CCoreScriptable"; }

 private:
    static bool Answer(const IOB& request, const Var& value) {
        *request.result = value;
        return true;
    }

    std::string m_ref = "?";
    int m_x = 0;
};

// Called for each `var part as Part;` of a script.
brenta::CCoreScriptable* CreatePart() {
    return new Part;
}

// ---------------------------------------------------------------------------------------------------------
// The board: a property, elements, and a method that takes a part over

class Board : public brenta::CCoreScriptable {
 public:
    bool ScriptAction(IOB& request) override {
        if (request.action == kCall && request.name == StrId("Place")) return Place(*request.arguments);
        if (request.action != kGet) return false;
        if (request.name == StrId("count")) {
            *request.result = static_cast<int>(m_parts.size());
            return true;
        }
        return request.name == brenta::kNoName && GivePart(request);  // Env.board[0]
    }
    std::size_t SizeOf() const override { return sizeof(*this); }
    const char* GetClassName() const override { return "Board"; }
    const char* GetBaseClassName() const override { return "CCoreScriptable"; }

 private:
    // A reference holds a CCoreScriptable, of whatever class: look before you cast.
    bool Place(const brenta::TOrderedList<Var>& arguments) {
        if (arguments.GetCount() != 1) return false;
        auto* object = static_cast<brenta::CCoreScriptable*>(arguments.GetHead()->GetRef());
        auto* part = dynamic_cast<Part*>(object);
        if (part == nullptr) return false;
        brenta::AdoptScriptable(part);  // from here on the board deletes it
        m_parts.emplace_back(part);
        return true;
    }

    bool GivePart(const IOB& request) const {
        const Var& place = *request.arguments->GetHead();
        const int index = place.IsNumeric() ? place.GetInt() : -1;
        if (index < 0 || index >= static_cast<int>(m_parts.size())) return false;
        *request.result = m_parts[static_cast<std::size_t>(index)].get();
        return true;
    }

    std::vector<std::unique_ptr<Part>> m_parts;
};

class Console : public brenta::CScriptMsgStream {
 public:
    void OutputPrintStream(const char* text) override { std::printf("%s\n", text); }
    void OutputErrStream(const char* text) override { std::printf("error: %s\n", text); }
};

constexpr char kScript[] = R"(
    function PlaceRow(count)
    {
        for (var i = 0; i < count; i = i + 1)
        {
            var part as Part;
            part.ref = "R" + (i + 1);
            part.x = i * 100mil;
            Env.board.Place(part);
        }
        print(Env.board.count + " parts, the last at " + Env.board[count - 1].x / 1mil + " mil");
    }
)";

}  // namespace

int main() {
    brenta::RegisterScriptableClass("Part", &CreatePart);
    Board board;  // outlives the engine
    brenta::TOrderedList<Var> environment;
    environment.Add(Var(&board, StrId("board")));

    Console console;
    brenta::CCoreScriptEngine engine(environment, &console);
    engine.InjectScript("row.scr", kScript);
    Var result;
    engine.Execute("PlaceRow(3);", result, brenta::kUnitsNone);
    engine.Execute("Env.board.Place(5);", result, brenta::kUnitsNone);
    return 0;
}
