#include "script/library_engine.h"

namespace brenta {

CCoreScriptEngine* CreateLibraryEngine() {
    return nullptr;
}

void DestroyLibraryEngine() {}

CCoreScriptEngine* LibraryEngine() {
    return nullptr;
}

}  // namespace brenta
