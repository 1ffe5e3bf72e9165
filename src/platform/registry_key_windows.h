// Keys of the system's registry: opened, created and listed, and copied as trees. Names are wide, as the
// system's own are; errors are the system's codes.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "platform/registry_store.h"

struct HKEY__;

namespace brenta::registry_store {

/// An open key, or a root. Closes what it has opened.
class Key {
 public:
    Key() = default;
    /// One of the system's roots, which is always open.
    explicit Key(Root root);
    ~Key() { Close(); }
    Key(Key&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)), m_isRoot(other.m_isRoot) {}
    Key& operator=(Key&& other) noexcept {
        std::swap(m_handle, other.m_handle);
        std::swap(m_isRoot, other.m_isRoot);
        return *this;
    }

    HKEY__* Handle() const { return m_handle; }

    /// Opens the key of a path ("" for `above` itself, by another handle) below an open one.
    RegistryError Open(const Key& above, const std::wstring& path, unsigned long access);

    /// Opens or creates the key of that name; `options` are for a new one. The parent need not be open for
    /// creating: the system looks at its rights, not at those of the handle.
    RegistryError Create(const Key& above, const std::wstring& name, unsigned long access,
                         unsigned long options, bool& isNew);

 private:
    void Close();

    HKEY__* m_handle = nullptr;
    bool m_isRoot = false;
};

/// The names of the sub-keys or values, in the system's order.
RegistryError ListSubKeyNames(const Key& key, std::vector<std::wstring>& names);
RegistryError ListValueNames(const Key& key, std::vector<std::wstring>& names);

/// Reads a value's type and bytes as they are stored.
RegistryError ReadRawValue(const Key& key, const std::wstring& name, unsigned long& type, std::string& bytes);

/// A key as it was read from a tree. The first key of a tree is its top; each other one stands behind its
/// parent.
struct TreeKey {
    struct Value {
        std::wstring name;
        unsigned long type = 0;
        std::string bytes;
    };

    std::wstring name;
    std::size_t parent = 0;
    std::size_t depth = 0;
    std::vector<Value> values;
};
using Tree = std::vector<TreeKey>;

/// Reads a key with all below it. As nothing is written meanwhile, a copy may stand within what is copied.
RegistryError ReadTree(const Key& top, Tree& tree);

/// Writes a tree over a key, where values that the tree lacks stay. New keys get the options, or are volatile
/// where no other may be. All keys are opened or created before a value is written, so that a refusal comes
/// before any change; the new ones are then deleted again.
RegistryError WriteTree(const Tree& tree, const Key& top, unsigned long options);

/// A key with all below it, open for being deleted: a refusal, or a lack of memory, comes before any change.
class DoomedKeys {
 public:
    /// Opens the key `name`.
    RegistryError Open(const Key& parent, const std::wstring& name);
    /// Deletes what is open; needs no memory.
    RegistryError Delete(const Key& parent) const;

 private:
    struct Entry {
        Key key;
        std::size_t parent;
        std::wstring name;
    };

    RegistryError Add(const Key& above, std::size_t place, const std::wstring& name);

    std::vector<Entry> m_keys;  // each behind its parent
};

/// Deletes the key `name` with all below it.
RegistryError DeleteWholeKey(const Key& parent, const std::wstring& name);

}  // namespace brenta::registry_store
