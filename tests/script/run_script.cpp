#include "script/run_script.h"

#include <pthread.h>

namespace brenta::test {

std::string Describe(const Var& value) {
    CoreString text;
    switch (value.GetKind()) {
        case VarKind::Null:
            return "null";
        case VarKind::Bool:
            return value.GetBool() ? "true" : "false";
        case VarKind::Float: {
            value.Print(text);
            const std::string number(text.View());
            return number.find_first_not_of("-0123456789") == std::string::npos ? number + ".0" : number;
        }
        case VarKind::String:
            return '"' + std::string(StrPtr(value.GetString())) + '"';
        case VarKind::Reference: {
            if (value.GetName() != kFunctionName) return value.GetRef() != nullptr ? "object" : "no object";
            const auto* function = static_cast<const FuncSymbol*>(value.GetRef());
            return std::string("function ") + StrPtr(function->GetName());
        }
        case VarKind::List: {
            std::string all;
            for (TIter<Var> at = value.GetListIter(); at.Get() != nullptr; at.Next()) {
                const STRID name = at.Get()->GetName();
                const bool isNamed = name != kNoName && name != kFunctionName;
                all += (all.empty() ? "" : ", ") + (isNamed ? StrPtr(name) + std::string(" = ") : "");
                all += Describe(*at.Get());
            }
            return '{' + all + '}';
        }
        default:
            value.Print(text);
            return std::string(text.View());
    }
}

bool Probe::ScriptAction(IOB& request) {
    context = request.context;
    requests += std::to_string(request.action) + ' ' + StrPtr(request.name);
    for (TIter<Var> at(*request.arguments); at.Get() != nullptr; at.Next())
        requests += ' ' + Describe(*at.Get());
    requests += ';';
    if (request.action == kCall) return Call(request);
    if (request.name == StrId("name")) {
        if (request.action == kSet) m_name = *request.arguments->GetHead();
        if (request.action == kGet) *request.result = m_name;
        return true;
    }
    if (request.action == kGet && request.name == StrId("list")) {
        TOrderedList<Var> items;
        items.Add(Var(1, kNoName));
        items.Add(Var(2, kNoName));
        *request.result = items;
        return true;
    }
    if (request.action == kGet && request.name == StrId("self")) {
        *request.result = static_cast<CCoreScriptable*>(this);
        return true;
    }
    if (request.action == kGet && request.name == kNoName) {
        *request.result = *request.arguments->GetHead() + *request.arguments->GetHead();
        return true;
    }
    *request.result = 13;  // what a refusal answers is of no use
    return request.action == kDescribe;
}

bool Probe::Call(IOB& request) {
    if (request.name == StrId("Run")) {
        const bool good =
            engine->Execute(StrPtr(request.arguments->GetHead()->GetString()), *request.result, kUnitsNone);
        return good;
    }
    if (request.name == StrId("Load"))
        return engine->InjectScript("loaded", StrPtr(request.arguments->GetHead()->GetString()));
    if (request.name != StrId("Sum")) return false;
    double sum = 0;
    for (TIter<Var> at(*request.arguments); at.Get() != nullptr; at.Next())
        sum += at.Get()->GetFloat();
    *request.result = static_cast<int>(sum);
    return true;
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
    const bool good = engine.InjectScript("m", module.c_str());
    return End(good, Var());
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

void ScriptRun::OutputPrintStream(const char* text) {
    Tell('>' + std::string(text));
}

void ScriptRun::OutputErrStream(const char* text) {
    std::string error(text);
    if (error.starts_with("cmd:(1): ")) error.erase(0, 9);
    Tell('!' + error);
}

void ScriptRun::Tell(const std::string& event) {
    m_told += event + ' ';
}

std::string ScriptRun::End(bool good, const Var& result) {
    Tell(good ? '=' + Describe(result) : "failed");
    m_told.pop_back();
    return std::exchange(m_told, {});
}

std::string TextTimes(const char* text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

void OnLargeStack(void (*work)()) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::size_t{256} << 20);
    pthread_t thread;
    const auto run = [](void* argument) -> void* {
        (*static_cast<void (**)()>(argument))();
        return nullptr;
    };
    if (pthread_create(&thread, &attributes, run, &work) == 0) pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

}  // namespace brenta::test
