// Tells the address sanitizer which bytes of a page nobody may touch. Without it these calls are nothing.
#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define BRENTA_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define BRENTA_ADDRESS_SANITIZER 1
#endif
#endif

#if defined(BRENTA_ADDRESS_SANITIZER)
#include <sanitizer/asan_interface.h>
#endif

namespace brenta {

inline void Poison([[maybe_unused]] const void* p, [[maybe_unused]] std::size_t size) {
#if defined(BRENTA_ADDRESS_SANITIZER)
    __asan_poison_memory_region(p, size);
#endif
}

inline void Unpoison([[maybe_unused]] const void* p, [[maybe_unused]] std::size_t size) {
#if defined(BRENTA_ADDRESS_SANITIZER)
    __asan_unpoison_memory_region(p, size);
#endif
}

}  // namespace brenta
