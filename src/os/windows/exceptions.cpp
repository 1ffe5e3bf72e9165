// Windows: exceptions that are thrown because there is no memory.
//
// The compiler keeps a reserve for them, behind a lock. But that lock itself takes memory when it is first
// used, and without any it throws, from the same reserve, until the stack is full. So it is used once while
// the library is loaded. Only a request beyond all bounds leads there, which then ends in std::terminate:
// that is left by a jump. Nothing on the way has anything to clean up.
#include <cxxabi.h>

#include <cstdint>
#include <exception>

namespace brenta::os {

namespace {

void* g_wayBack[5];

bool UseReserve() {
    const std::terminate_handler usual = std::set_terminate([] { __builtin_longjmp(g_wayBack, 1); });
    if (__builtin_setjmp(g_wayBack) == 0) abi::__cxa_allocate_exception(PTRDIFF_MAX);
    std::set_terminate(usual);
    // A thread's first exception takes memory, too: this is that of the thread that loads the library.
    try {
        throw 0;
    } catch (int) {
        return true;
    }
}

[[maybe_unused]] const bool g_isReserveReady = UseReserve();

}  // namespace

}  // namespace brenta::os
