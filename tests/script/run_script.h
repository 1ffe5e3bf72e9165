// An engine whose every run is told as one line of text, for rows of cases.
#pragma once

#include "brenta/script.h"
#include "script/script_test_support.h"

namespace brenta::test {

/// A value with its kind: 2, 2.0, true, "a", {1, x = 2}, null, object, function f.
std::string Describe(const Var& value);

/// A host object. `name` is a property that can be read and written, `list` gives {1, 2}, an index gives its
/// double, `Sum(...)` adds numbers, `Run(text)` executes a text on the engine that called it. Everything else
/// is refused. It writes down the requests it gets.
class Probe : public CCoreScriptable {
 public:
    bool ScriptAction(IOB& request) override;
    std::size_t SizeOf() const override { return sizeof(*this); }
    const char* GetClassName() const override { return "Probe"; }
    const char* GetBaseClassName() const override { return "CCoreScriptable"; }

    CCoreScriptEngine* engine = nullptr;
    TOrderedList<Var>* context = nullptr;
    std::string requests;

 private:
    bool Call(const std::string& name, IOB& request);

    Var m_name{5, kNoName};
};

/// An engine with the probe as Env.Probe. What happens is written down in order: ">text" for a print, "!text"
/// for an error (without the position "cmd:(1): "), and at the end "=value" or "failed".
class ScriptRun : private CScriptMsgStream {
 public:
    explicit ScriptRun(const std::string& module = "");
    ~ScriptRun() { DeleteStdLib(engine); }

    std::string Execute(const std::string& text, CoreUnits units = kUnitsNone);
    std::string Load(const std::string& module);
    std::string RunScript(const char* function, const TOrderedList<Var>& arguments, bool quiet = false);
    std::string Call(const Var& callee, const TOrderedList<Var>& arguments);

    Probe probe;
    CCoreScriptEngine engine;

 private:
    void OutputPrintStream(const char* text) override { m_told += '>' + std::string(text) + ' '; }
    void OutputErrStream(const char* text) override;
    std::string End(bool good, const Var& result);
    TOrderedList<Var> Environment();

    std::string m_told;
};

struct ScriptRow {
    const char* text;
    const char* told;
};

/// Executes each row's text on an engine of its own, into which `module` was loaded.
template <std::size_t count>
void CheckRows(const ScriptRow (&rows)[count], const char* module = "") {
    for (const ScriptRow& row : rows) {
        ScriptRun run(module);
        EXPECT_EQ(run.Execute(row.text), row.told) << row.text;
        EXPECT_EQ(run.engine.GetScopeDepth(), 1) << row.text;
        EXPECT_EQ(run.engine.GetFirstToken().Get(), nullptr) << row.text;
        EXPECT_EQ(run.Execute("1 + 1"), "=2") << "after " << row.text;
    }
}

/// What a command asks the probe, which is o: the requests as it wrote them down.
struct RequestRow {
    const char* text;
    const char* told;
    const char* requests;
};

template <std::size_t count>
void CheckRequests(const RequestRow (&rows)[count]) {
    for (const RequestRow& row : rows) {
        ScriptRun run("var o = Env.Probe; var a;");
        EXPECT_EQ(run.Execute(row.text), row.told) << row.text;
        EXPECT_EQ(run.probe.requests, row.requests) << row.text;
    }
}

/// The thread sanitizer itself fails on a stack of more than 65,536 frames.
#if defined(__SANITIZE_THREAD__)
inline constexpr bool kStacksMayBeDeep = false;
#else
inline constexpr bool kStacksMayBeDeep = true;
#endif

}  // namespace brenta::test
