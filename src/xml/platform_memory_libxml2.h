// Whether libxml2 has ever been without memory. It does not always say so: a tree may then lack a value, and
// nobody would know.
#pragma once

namespace brenta {

/// Makes what libxml2 keeps for each thread, which it makes at the first use and takes for granted then:
/// without memory it would follow a null pointer. Throws std::bad_alloc.
void ReadyXmlThread();

/// While it lives, what libxml2 asks for on the calling thread is watched. Watches do not nest.
class XmlMemoryWatch {
 public:
    /// Throws std::bad_alloc if the thread cannot be made ready.
    XmlMemoryWatch();
    XmlMemoryWatch(const XmlMemoryWatch&) = delete;
    XmlMemoryWatch& operator=(const XmlMemoryWatch&) = delete;

    /// Whether something was refused so far.
    static bool HasLacked();
};

/// While it lives, the calling thread has a reserve for what libxslt and XPath ask for. They follow the null
/// pointer that they get without memory; so they get memory, once more, and have to be stopped. One at a time
/// in the process.
class XmlMemoryReserve {
 public:
    XmlMemoryReserve();
    ~XmlMemoryReserve();
    XmlMemoryReserve(const XmlMemoryReserve&) = delete;
    XmlMemoryReserve& operator=(const XmlMemoryReserve&) = delete;

    /// Whether memory was lacking so far: what has been made is of no use.
    static bool IsTouched();
    /// Calls this from then on whenever the reserve is asked.
    static void WhenTouched(void (*stop)(void* context), void* context);
};

}  // namespace brenta
