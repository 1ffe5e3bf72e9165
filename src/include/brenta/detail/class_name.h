/// @file
/// <windows.h> makes a macro of GetClassName, which would rename the classes' own one in programs that
/// include it first, and they would not find it in the library. Every header that declares one includes this,
/// each time anew, so that there is no guard.
#if defined(GetClassName)
#undef GetClassName

/// The system's function, for which the macro stood.
inline int GetClassName(HWND window, LPTSTR name, int size) {
#if defined(UNICODE)
    return GetClassNameW(window, name, size);
#else
    return GetClassNameA(window, name, size);
#endif
}

#endif
