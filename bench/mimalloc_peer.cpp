#include "mimalloc_peer.h"

#include <dlfcn.h>

namespace brenta::bench {

bool Mimalloc::Load() {
    void* const library = dlopen("libmimalloc.so", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return false;
    s_pMalloc = reinterpret_cast<void* (*)(std::size_t)>(dlsym(library, "mi_malloc"));
    s_pFree = reinterpret_cast<void (*)(void*)>(dlsym(library, "mi_free"));
    return s_pMalloc != nullptr && s_pFree != nullptr;
}

}  // namespace brenta::bench
