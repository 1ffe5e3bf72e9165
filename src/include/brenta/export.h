/// @file
/// Visibility of the library's symbols: everything is hidden by default, what carries BRENTA_API is exported.
#pragma once

#if defined(_WIN32)
#if defined(BRENTA_BUILDING)
#define BRENTA_API __declspec(dllexport)
#else
#define BRENTA_API __declspec(dllimport)
#endif
#else
/// Marks a class or function as part of the library's exported interface.
#define BRENTA_API __attribute__((visibility("default")))
#endif
