// The script engine beside Lua 5.4: the same programs in both languages.
#include <string>

#include "brenta/script.h"
#include "families.h"
#include "lua_peer.h"
#include "workload.h"

namespace brenta::bench {
namespace {

class ErrorCollector : public CScriptMsgStream {
 public:
    void OutputErrStream(const char* text) override {
        if (m_first.empty()) m_first = text;
    }
    const std::string& First() const { return m_first; }

 private:
    std::string m_first;
};

/// A property "value" and a method "Add".
class HostObject : public CCoreScriptable {
 public:
    bool ScriptAction(IOB& request) override {
        static const STRID valueName = StrId("value");
        static const STRID addName = StrId("Add");
        switch (request.action) {
            case kGet:
                *request.result = m_value;
                return request.name == valueName;
            case kSet:
                m_value = TIter<Var>(*request.arguments).Get()->GetFloat();
                return request.name == valueName;
            case kCall:
                *request.result = m_value + TIter<Var>(*request.arguments).Get()->GetFloat();
                return request.name == addName;
            default:
                return false;
        }
    }
    std::size_t SizeOf() const override { return sizeof(*this); }
    const char* GetClassName() const override { return "HostObject"; }
    const char* GetBaseClassName() const override { return "CCoreScriptable"; }

 private:
    double m_value = 0;
};

class ScriptContender : public Contender {
 public:
    explicit ScriptContender(const std::string& source) : m_engine(Environment(m_host), &m_errors) {
        m_engine.InjectScript("bench", source.c_str());
    }

    std::string Run() override {
        Var result;
        if (!m_engine.RunScript("Main", result, TOrderedList<Var>(), false))
            return "error: " + m_errors.First();
        return StrPtr(result.GetString());
    }

 private:
    static TOrderedList<Var> Environment(HostObject& host) {
        TOrderedList<Var> environment;
        environment.Add(Var(&host, StrId("host")));
        return environment;
    }

    HostObject m_host;
    ErrorCollector m_errors;
    CCoreScriptEngine m_engine;
};

class ScriptLoader : public Contender {
 public:
    explicit ScriptLoader(std::string source) : m_source(std::move(source)) {}
    std::string Run() override {
        CCoreScriptEngine engine(TOrderedList<Var>(), nullptr);
        return engine.InjectScript("bench", m_source.c_str()) ? "loaded" : "failed";
    }

 private:
    std::string m_source;
};

struct Program {
    const char* name;
    double limit;
    const char* ours;
    const char* lua;
};

const Program programs[] = {
    {"fib(27)", 0.6,
     "function Fib(n) { if (n < 2) { return n; } return Fib(n - 1) + Fib(n - 2); } function Main() { return "
     "Fib(27); }",
     "function Fib(n) if n < 2 then return n end return Fib(n - 1) + Fib(n - 2) end function Main() return "
     "Fib(27) end"},
    {"while 10^7", 0.5, "function Main() { var i = 0; while (i < 10000000) { i = i + 1; } return i; }",
     "function Main() local i = 0 while i < 10000000 do i = i + 1 end return i end"},
    {"nested for with if", 1.0,
     "function Main() { var c = 0; for (var i = 0; i < 2000; i = i + 1) { for (var j = 0; j < 1000; j = j + "
     "1) {"
     " if (j < 500) { c = c + 1; } } } return c; }",
     "function Main() local c = 0 for i = 0, 1999 do for j = 0, 999 do if j < 500 then c = c + 1 end end end "
     "return c end"},
    {"sieve 10^6", 0.6,
     "function Main() { var s[1000001]; var n = 0; for (var i = 2; i <= 1000000; i = i + 1) { s[i] = 1; }"
     " for (var p = 2; p <= 1000000; p = p + 1) { if (s[p] == 1) { n = n + 1; var k = p * p;"
     " while (k <= 1000000) { s[k] = 0; k = k + p; } } } return n; }",
     "function Main() local s = {} local n = 0 for i = 2, 1000000 do s[i] = 1 end"
     " for p = 2, 1000000 do if s[p] == 1 then n = n + 1 local k = p * p"
     " while k <= 1000000 do s[k] = 0 k = k + p end end end return n end"},
    {"4-parameter calls 10^6", 0.75,
     "function F(a, b, c, d) { return a + b + c + d; } function Main() { var s = 0;"
     " for (var i = 0; i < 1000000; i = i + 1) { s = F(s, i, 1, 2) % 65536; } return s; }",
     "function F(a, b, c, d) return a + b + c + d end function Main() local s = 0"
     " for i = 0, 999999 do s = F(s, i, 1, 2) % 65536 end return s end"},
    {"list fill and sum 10^6", 0.6,
     "function Main() { var l = {0}; for (var i = 1; i < 1000000; i = i + 1) { l = l + i; } var s = 0;"
     " for (var j = 0; j < 1000000; j = j + 1) { s = (s + l[j]) % 65536; } return s; }",
     "function Main() local l = {0} for i = 1, 999999 do l[#l + 1] = i end local s = 0"
     " for j = 1, 1000000 do s = (s + l[j]) % 65536 end return s end"},
    {"structure updates 10^6", 0.6,
     "class P { var x = 0; var y = 0; } function Main() { var p as P;"
     " for (var i = 0; i < 1000000; i = i + 1) { p.x = p.x + 1; } return p.x; }",
     "function Main() local p = {x = 0, y = 0} for i = 0, 999999 do p.x = p.x + 1 end return p.x end"},
    {"string building 10^5", 0.5,
     "function Main() { var s = \"\"; for (var i = 0; i < 100000; i = i + 1) { s = s + \"ab\"; } return (s "
     "== \"ab\") + 1; }",
     "function Main() local t = {} for i = 1, 100000 do t[#t + 1] = \"ab\" end local s = table.concat(t)"
     " return (s == \"ab\" and 1 or 0) + 1 end"},
    {"foreach 10^6", 0.3,
     "var l[1000000]; function Main() { var n = 0; foreach (e in l) { n = n + 1; } return n; }",
     "l = {} for i = 1, 1000000 do l[i] = 0 end function Main() local n = 0 for _, e in ipairs(l) do n = n + "
     "1 end return n end"},
    {"global counter 5*10^6", 0.2,
     "var g = 0; function Main() { g = 0; while (g < 5000000) { g = g + 1; } return g; }",
     "g = 0 function Main() g = 0 while g < 5000000 do g = g + 1 end return g end"},
    {"float recurrence 3*10^6", 1.0,
     "function Main() { var x = 0.5; for (var i = 0; i < 3000000; i = i + 1) { x = x * 0.999 + 0.25; } "
     "return x.Round(1); }",
     "function Main() local x = 0.5 for i = 0, 2999999 do x = x * 0.999 + 0.25 end return math.floor(x + "
     "0.5) end"},
    {"host property get 10^6", 0.35,
     "function Main() { var h = Env.host; h.value = 3; var s = 0; for (var i = 0; i < 1000000; i = i + 1) { "
     "s = s + h.value; } return s; }",
     "function Main() local h = host h.value = 3 local s = 0 for i = 0, 999999 do s = s + h.value end return "
     "s end"},
    {"host property set 10^6", 0.35,
     "function Main() { var h = Env.host; for (var i = 0; i < 1000000; i = i + 1) { h.value = i; } return "
     "h.value; }",
     "function Main() local h = host for i = 0, 999999 do h.value = i end return h.value end"},
    {"host method call 10^6", 0.35,
     "function Main() { var h = Env.host; h.value = 1; var s = 0; for (var i = 0; i < 1000000; i = i + 1) { "
     "s = h.Add(i); } return s; }",
     "function Main() local h = host h.value = 1 local s = 0 for i = 0, 999999 do s = h:Add(i) end return s "
     "end"},
    {"recursion 50,000 deep", 0.6,
     "function D(n) { if (n == 0) { return 0; } return 1 + D(n - 1); }"
     " function Main() { var s = 0; for (var i = 0; i < 20; i = i + 1) { s = s + D(50000); } return s; }",
     "function D(n) if n == 0 then return 0 end return 1 + D(n - 1) end"
     " function Main() local s = 0 for i = 0, 19 do s = s + D(50000) end return s end"},
};

std::string ManyFunctions(const char* before, const char* after) {
    std::string source;
    for (int i = 0; i < 10000; ++i)
        source += "function F" + std::to_string(i) + before + std::to_string(i) + after;
    return source;
}

}  // namespace

void AddScriptWorkloads() {
    for (const Program& program : programs) {
        Workloads().push_back({"script", program.name, "Lua 5.4", program.limit,
                               [&program] { return std::make_unique<ScriptContender>(program.ours); },
                               [&program] { return MakeLuaContender(program.lua); }});
    }
    const std::string ours =
        ManyFunctions("(a, b) { var c = a * 2 + ", "; if (c > b) { return c; } return b - a; }\n");
    const std::string lua =
        ManyFunctions("(a, b) local c = a * 2 + ", " if c > b then return c end return b - a end\n");
    Workloads().push_back({"script", "load 10,000 functions", "Lua 5.4", 1.5,
                           [ours] { return std::make_unique<ScriptLoader>(ours); },
                           [lua] { return MakeLuaLoader(lua); }});
}

}  // namespace brenta::bench
