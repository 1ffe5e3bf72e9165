#include "script/run_script.h"

namespace brenta::test {

namespace {

std::string DescribeItems(const Var& list) {
    std::string all;
    for (const Var& item : list.GetList()) {
        const bool isNamed = item.GetName() != kNoName && item.GetName() != kFunctionName;
        all += (all.empty() ? "" : ", ") + (isNamed ? StrPtr(item.GetName()) + std::string(" = ") : "");
        all += Describe(item);
    }
    return '{' + all + '}';
}

}  // namespace

std::string Describe(const Var& value) {
    const auto* function = static_cast<const FuncSymbol*>(value.GetRef());
    if (value.GetKind() == VarKind::Null) return "null";
    if (value.GetKind() == VarKind::List) return DescribeItems(value);
    if (value.GetKind() == VarKind::Reference && value.GetName() != kFunctionName) return "object";
    if (value.GetKind() == VarKind::Reference) return std::string("function ") + StrPtr(function->GetName());
    const std::string text = StrPtr(value.GetString());
    if (value.GetKind() == VarKind::String) return '"' + text + '"';
    const bool isWhole = text.find_first_not_of("-0123456789") == std::string::npos;
    return value.GetKind() == VarKind::Float && isWhole ? text + ".0" : text;
}

bool Probe::ScriptAction(IOB& request) {
    context = request.context;
    requests += std::to_string(request.action) + ' ' + StrPtr(request.name);
    for (const Var& argument : *request.arguments)
        requests += ' ' + Describe(argument);
    requests += ';';
    const Var* first = request.arguments->GetHead();
    const std::string name = StrPtr(request.name);
    if (request.action == kCall) return Call(name, request);
    *request.result = 13;  // what comes with a refusal is of no use
    if (request.action == kDescribe) return true;
    if (name == "name" && request.action == kSet) return m_name = *first, *request.result = Var(), true;
    if (name == "name") return *request.result = m_name, true;
    if (name == "self") return *request.result = static_cast<CCoreScriptable*>(this), true;
    if (name.empty()) return *request.result = *first + *first, true;
    *request.result = TOrderedList<Var>();
    request.result->Add(Var(1, kNoName));
    request.result->Add(Var(2, kNoName));
    return name == "list";
}

bool Probe::Call(const std::string& name, IOB& request) {
    const Var* first = request.arguments->GetHead();
    const char* text = first != nullptr ? StrPtr(first->GetString()) : "";
    if (name == "Run") return engine->Execute(text, *request.result, kUnitsNone);
    if (name == "Load") return engine->InjectScript("loaded", text);
    double sum = 0;
    for (const Var& argument : *request.arguments)
        sum += argument.GetFloat();
    *request.result = static_cast<int>(sum);
    return name == "Sum";
}

ScriptRun::ScriptRun(const std::string& module) : engine(Environment(), this) {
    probe.engine = &engine;
    if (!module.empty()) {
        EXPECT_EQ(Load(module), "=null");
    }
}

TOrderedList<Var> ScriptRun::Environment() {
    TOrderedList<Var> environment;
    environment.Add(Var(&probe, StrId("Probe")));
    environment.Add(Var(static_cast<CCoreScriptable*>(nullptr), StrId("Nothing")));
    environment.Add(Var("4.0", StrId("Version")));
    return environment;
}

std::string ScriptRun::Execute(const std::string& text, CoreUnits units) {
    Var result(99, kNoName);
    const bool good = engine.Execute(text.c_str(), result, units);
    return End(good, result);
}

std::string ScriptRun::Load(const std::string& module) {
    return End(engine.InjectScript("m", module.c_str()), Var());
}

std::string ScriptRun::RunScript(const char* function, const TOrderedList<Var>& arguments, bool quiet) {
    Var result(99, kNoName);
    const bool good = engine.RunScript(function, result, arguments, quiet);
    return End(good, result);
}

std::string ScriptRun::Call(const Var& callee, const TOrderedList<Var>& arguments) {
    Var result(99, kNoName);
    const bool good = engine.ExecuteFunction(callee, arguments, result);
    return End(good, result);
}

void ScriptRun::OutputErrStream(const char* text) {
    const std::string error(text);
    m_told += '!' + (error.starts_with("cmd:(1): ") ? error.substr(9) : error) + ' ';
}

std::string ScriptRun::End(bool good, const Var& result) {
    return std::exchange(m_told, {}) + (good ? '=' + Describe(result) : "failed");
}

}  // namespace brenta::test
