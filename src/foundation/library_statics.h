/// @file
/// The library's static objects, which all stand in library.cpp. Each comes into being at the latest when it
/// is first asked for, so everything here may be used by constructors of any other static object, and it
/// lives on when the process ends; only unloading the library from a living process ends it.
#pragma once

#include "brenta/heap.h"
#include "brenta/names.h"
#include "os/lock.h"

namespace brenta {

/// The heap "global_heap". After unloading it is empty and stays so: it gives null and ignores what it gets.
CHeap& GlobalHeap();

/// The string table "Global".
CStringTable& GlobalStrings();

// The three library-wide locks, constant-initialised and never destroyed. None is taken while another is
// held.
extern os::Lock g_globalHeapLock;
extern os::Lock g_stringHeapLock;
extern os::Lock g_stringTableLock;

}  // namespace brenta
