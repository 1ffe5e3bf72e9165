#include "script/library_engine.h"

#include <new>

#include "brenta/script.h"

namespace brenta {
namespace {

CCoreScriptEngine* g_pLibraryEngine = nullptr;

}  // namespace

CCoreScriptEngine* CreateLibraryEngine() {
    try {
        if (g_pLibraryEngine == nullptr)
            g_pLibraryEngine = new CCoreScriptEngine(TOrderedList<Var>(), nullptr);
    } catch (const std::bad_alloc&) {
        // The library loads all the same; dimension texts do not evaluate then.
    }
    return g_pLibraryEngine;
}

void DestroyLibraryEngine() {
    delete g_pLibraryEngine;
    g_pLibraryEngine = nullptr;
}

CCoreScriptEngine* LibraryEngine() {
    return g_pLibraryEngine;
}

}  // namespace brenta
