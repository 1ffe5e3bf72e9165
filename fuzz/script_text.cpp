// Any bytes as a module, whose Main is called, and as a command: whatever they do, the engine must come back,
// and afterwards answer 1 + 1 with 2. A forced crash aborts by itself. What scans is searched for surprises,
// also where no parser would accept it.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "brenta/framework.h"
#include "brenta/host.h"
#include "script/surprises.h"
#include "watchdog.h"

namespace {

using brenta::CCoreScriptEngine;
using brenta::Var;
using brenta::fuzz::Watchdog;

constexpr std::size_t kMaxInput = 4096;

/// Nobody answers prompts, and no document is saved.
void CutOffTheWorld() {
    brenta::HostServices services;
    services.showMessage = [](void*, const char*, unsigned int) { return brenta::IDNO; };
    brenta::SetHostServices(services);
    for (const char* name : {"CCoreXmlDom", "CCoreXmlDomElement", "CCoreXmlDomAttribute"}) {
        brenta::RegisterScriptableClass(name, &brenta::CreateCStdScriptLibObject);
    }
}

template <class Run>
void RunGuarded(Watchdog& watchdog, Run run) {
    brenta::CScriptMsgStream silence;
    CCoreScriptEngine engine(brenta::TOrderedList<Var>(), &silence);
    watchdog.Start(engine);
    run(engine);
    watchdog.Stop();
    engine.ClearStop();
    Var two;
    if (!engine.Execute("1 + 1", two, brenta::kUnitsNone) || two.GetInt() != 2) std::abort();
    if (engine.GetScopeDepth() != 1) std::abort();
}

void SearchForSurprises(const std::string& text) {
    brenta::CCoreScriptLexer lexer(false, false);
    brenta::TOrderedList<brenta::ScriptWarning> warnings;
    if (lexer.InjectScriptText("module", text.c_str(), true))
        brenta::FindSurprises(lexer.GetFirstToken(), warnings);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool cutOff = (CutOffTheWorld(), true);
    static Watchdog watchdog;
    if (!cutOff || size > kMaxInput) return 0;
    const std::string text(reinterpret_cast<const char*>(data), size);
    SearchForSurprises(text);
    RunGuarded(watchdog, [&text](CCoreScriptEngine& engine) {
        Var result;
        engine.InjectScript("module", text.c_str());
        engine.RunScript("Main", result, brenta::TOrderedList<Var>(), true);
    });
    RunGuarded(watchdog, [&text](CCoreScriptEngine& engine) {
        Var result;
        engine.Execute(text.c_str(), result, brenta::kMils);
    });
    return 0;
}
