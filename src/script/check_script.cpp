// Checking a module without running it.
#include <new>

#include "brenta/script.h"
#include "script/engine_state.h"
#include "script/surprises.h"

namespace brenta {

bool CheckScriptModule(const char* path, CScriptMsgStream& errors, TOrderedList<ScriptWarning>& warnings) {
    try {
        CCoreScriptEngine engine(TOrderedList<Var>(), &errors);
        EngineState& state = engine.State();
        state.checkOnly = true;
        state.inspectTokens = [](const TIter<ScriptToken*>& first, void* context) {
            FindSurprises(first, *static_cast<TOrderedList<ScriptWarning>*>(context));
        };
        state.inspectContext = &warnings;
        return engine.LoadScriptModule(path);
    } catch (const std::bad_alloc&) {
        errors.Error("", "%s", "Out of memory.");
        return false;
    }
}

}  // namespace brenta
