// The process-wide registry of objects that scripts created (`var x as Class;`) and of the engines' standard
// library objects.
//
// No engine deletes them: a reference to the object may have been handed to a host or to another engine. They
// are kept here, where a leak checker sees them, until somebody deletes them (their destructor takes them
// out), a host adopts them, or the library is unloaded, which disposes of the rest.
#pragma once

#include <cstddef>

#include "brenta/scriptable.h"

namespace brenta {

/// Enters a new object and returns it; null passes. Any thread.
CCoreScriptable* TrackCreated(CCoreScriptable* object);

/// Takes an object out; one that is not in is ignored, at the cost of one load. Any thread.
void ForgetCreated(const CCoreScriptable* object);

/// How many objects are in.
std::size_t CreatedCount();

/// Takes all objects out and hands each to `dispose`, which may delete it and others; for the unloading of
/// the library, after the last engine.
void DisposeOfCreated(void (*dispose)(CCoreScriptable*));

}  // namespace brenta
