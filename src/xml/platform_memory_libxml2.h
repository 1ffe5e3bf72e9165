// Whether libxml2 has ever been without memory. It does not always say so: a tree may then lack a value, and
// nobody would know.
#pragma once

namespace brenta {

/// While it lives, what libxml2 asks for on the calling thread is watched. Watches do not nest.
class XmlMemoryWatch {
 public:
    XmlMemoryWatch();
    XmlMemoryWatch(const XmlMemoryWatch&) = delete;
    XmlMemoryWatch& operator=(const XmlMemoryWatch&) = delete;

    /// Whether something was refused so far.
    static bool HasLacked();
};

}  // namespace brenta
