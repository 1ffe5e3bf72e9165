#include "xml/platform_memory_libxml2.h"

#include <libxml/xmlmemory.h>

#include <cstdlib>
#include <cstring>

namespace brenta {

namespace {

constinit thread_local bool t_lacked = false;

void* Noted(void* block) {
    if (block == nullptr) t_lacked = true;
    return block;
}

void* Allocate(std::size_t size) {
    return Noted(std::malloc(size));
}

void* Resize(void* block, std::size_t size) {
    return Noted(std::realloc(block, size));
}

char* Duplicate(const char* text) {
    const std::size_t size = std::strlen(text) + 1;
    void* const copy = Allocate(size);
    return copy != nullptr ? static_cast<char*>(std::memcpy(copy, text, size)) : nullptr;
}

/// Stands between libxml2 and the C library as long as this library is loaded. Blocks may come before and go
/// after, as they are the C library's own; a host that has given libxml2 another memory keeps it, unwatched.
class Watchman {
 public:
    Watchman() {
        xmlMemGet(&m_free, &m_malloc, &m_realloc, &m_strdup);
        if (m_malloc == &std::malloc) xmlMemSetup(m_free, &Allocate, &Resize, &Duplicate);
    }
    ~Watchman() {
        xmlFreeFunc free;
        xmlMallocFunc malloc;
        xmlReallocFunc realloc;
        xmlStrdupFunc strdup;
        xmlMemGet(&free, &malloc, &realloc, &strdup);
        if (malloc == &Allocate) xmlMemSetup(m_free, m_malloc, m_realloc, m_strdup);
    }
    Watchman(const Watchman&) = delete;
    Watchman& operator=(const Watchman&) = delete;

 private:
    xmlFreeFunc m_free = nullptr;
    xmlMallocFunc m_malloc = nullptr;
    xmlReallocFunc m_realloc = nullptr;
    xmlStrdupFunc m_strdup = nullptr;
};

const Watchman g_watchman;

}  // namespace

XmlMemoryWatch::XmlMemoryWatch() {
    t_lacked = false;
}

bool XmlMemoryWatch::HasLacked() {
    return t_lacked;
}

}  // namespace brenta
