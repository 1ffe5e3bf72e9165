/// @file
/// The library-wide script engine, on which dimension texts are evaluated (brenta/units.h).
#pragma once

namespace brenta {

class CCoreScriptEngine;

/// Creates the engine with an empty environment and no host object; called once, by library.cpp, when the
/// library is loaded. Returns it, or null without memory.
CCoreScriptEngine* CreateLibraryEngine();

/// Destroys the engine if there is one; called by library.cpp when the library is unloaded.
void DestroyLibraryEngine();

/// The engine; null before creation and after destruction.
CCoreScriptEngine* LibraryEngine();

}  // namespace brenta
