#include "script_names.h"

#include <algorithm>
#include <optional>
#include <set>

#include "console.h"

namespace brenta::host {
namespace {

constexpr const char* kWords[] = {"as",   "break",   "class",    "continue", "else", "execute", "false",
                                  "for",  "foreach", "function", "if",       "in",   "include", "inherits",
                                  "null", "print",   "return",   "true",     "var",  "while"};

bool IsNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

/// The object that a value refers to; null if it is none. Functions are references, too.
CCoreScriptable* ObjectIn(const Var& value) {
    if (value.GetKind() != VarKind::Reference || IsFunction(value)) return nullptr;
    return static_cast<CCoreScriptable*>(value.GetRef());
}

/// The names of properties and methods in an object's description of itself.
void AddDescribed(CCoreScriptable& object, std::set<std::string>& names) {
    Var description;
    CCoreScriptable::IOB request;
    request.action = CCoreScriptable::kDescribe;
    request.result = &description;
    if (!object.ScriptAction(request)) return;
    for (const Var& part : description.GetList())
        for (const Var& member : part.GetList())
            names.insert(StrPtr(member.GetName()));
    // Attributes are described by a name that no call knows.
    if (names.erase("GetAttribute") > 0) names.insert("GetAttributeValue");
}

std::set<std::string> MembersOf(const Var& value) {
    std::set<std::string> names;
    for (const Var& item : value.GetList())
        if (HasName(item)) names.insert(StrPtr(item.GetName()));
    if (value.IsNumeric()) names.insert("Round");
    if (CCoreScriptable* const object = ObjectIn(value)) AddDescribed(*object, names);
    return names;
}

/// A member of a structure, or a property of an object.
std::optional<Var> MemberOf(const Var& value, std::string_view name) {
    const STRID id = StrId(std::string(name).c_str());
    if (const Var* const member = value.GetMember(id)) return *member;
    CCoreScriptable* const object = ObjectIn(value);
    if (object == nullptr || !MembersOf(value).contains(std::string(name))) return std::nullopt;
    Var result;
    TOrderedList<Var> none;
    CCoreScriptable::IOB request;
    request.action = CCoreScriptable::kGet;
    request.name = id;
    request.arguments = &none;
    request.result = &result;
    return object->ScriptAction(request) ? std::optional(result) : std::nullopt;
}

/// The value of a path such as "Env.StdLib"; paths with calls and elements have none, for nothing is run.
std::optional<Var> ValueOf(CCoreScriptEngine& engine, std::string_view path) {
    std::optional<Var> value;
    for (bool isFirst = true; !path.empty(); isFirst = false) {
        const std::size_t end = std::min(path.find('.'), path.size());
        const std::string name(path.substr(0, end));
        if (isFirst) {
            const auto* symbol = dynamic_cast<ScriptSymbol*>(engine.GetSymbol(StrId(name.c_str()), false));
            if (symbol == nullptr || symbol->GetKind() == SymbolKind::Function) return std::nullopt;
            value = symbol->GetValue();
        } else {
            value = MemberOf(*value, name);
        }
        if (!value) return std::nullopt;
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return value;
}

std::set<std::string> NamesInScope(CCoreScriptEngine& engine) {
    std::set<std::string> names(std::begin(kWords), std::end(kWords));
    for (TIter<CCoreSymbol*> symbol = engine.GetFirstSymbol(); symbol.Get() != nullptr; symbol.Next())
        names.insert(StrPtr((*symbol.Get())->GetName()));
    return names;
}

/// The start of the path that ends a text: names and the points between them.
std::size_t PathStart(std::string_view text) {
    std::size_t start = text.size();
    while (start > 0 && (IsNameCharacter(text[start - 1]) || text[start - 1] == '.'))
        --start;
    return start;
}

std::string Shortened(std::string text) {
    constexpr std::size_t kMostCharacters = 60;
    std::replace(text.begin(), text.end(), '\n', ' ');
    if (text.size() > kMostCharacters) text.replace(kMostCharacters, std::string::npos, "...");
    return text;
}

std::string Describe(const Var& value) {
    if (const CCoreScriptable* const object = ObjectIn(value))
        return std::string("an object of ") + object->GetClassName();
    return Shortened(TextOf(value));
}

std::string Parameters(const FuncSymbol& function) {
    std::string text;
    for (TIter<ScriptSymbol*> parameter = function.GetFirstParam(); parameter.Get() != nullptr;
         parameter.Next())
        text += (text.empty() ? "" : ", ") + std::string(StrPtr((*parameter.Get())->GetName()));
    return "(" + text + ")";
}

void DescribeSymbol(const CCoreSymbol& symbol, std::vector<std::string>& lines) {
    const std::string name = StrPtr(symbol.GetName());
    const auto* const variable = dynamic_cast<const ScriptSymbol*>(&symbol);
    if (name == "Env" && variable != nullptr) {  // a class, of which the environment is the value
        const Var value = variable->GetValue();
        for (const Var& member : value.GetList())
            lines.push_back("Env." + std::string(StrPtr(member.GetName())) + "\t" + Describe(member));
    } else if (const auto* function = dynamic_cast<const FuncSymbol*>(&symbol)) {
        lines.push_back(name + Parameters(*function) + "\tfunction");
    } else if (symbol.GetKind() == SymbolKind::Class) {
        lines.push_back(name + "\tclass");
    } else if (variable != nullptr) {
        lines.push_back(name + "\t" + Describe(variable->GetValue()));
    }
}

}  // namespace

std::vector<std::string> NamesFor(CCoreScriptEngine& engine, std::string_view line, std::size_t& start) {
    const std::string_view path = line.substr(PathStart(line));
    const std::size_t point = path.rfind('.');
    const bool isMember = point != std::string_view::npos;
    const std::string_view typed = isMember ? path.substr(point + 1) : path;
    start = line.size() - typed.size();

    std::set<std::string> names;
    if (!isMember) names = NamesInScope(engine);
    if (isMember)
        if (const std::optional<Var> value = ValueOf(engine, path.substr(0, point)))
            names = MembersOf(*value);
    std::erase_if(names, [&](const std::string& name) { return !name.starts_with(typed); });
    return {names.begin(), names.end()};
}

std::vector<std::string> DescribeNames(CCoreScriptEngine& engine) {
    std::vector<std::string> lines;
    for (TIter<CCoreSymbol*> symbol = engine.GetFirstSymbol(); symbol.Get() != nullptr; symbol.Next())
        DescribeSymbol(**symbol.Get(), lines);
    return lines;
}

}  // namespace brenta::host
