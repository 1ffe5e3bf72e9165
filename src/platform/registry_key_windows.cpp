#include "platform/registry_key_windows.h"

#include <cstdint>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brenta::registry_store {

namespace {

RegistryError ErrorOf(LSTATUS status) {
    return static_cast<RegistryError>(static_cast<std::uint32_t>(status));
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// One key

Key::Key(Root root) : m_isRoot(true) {
    switch (root) {
        case Root::CurrentUser:
            m_handle = HKEY_CURRENT_USER;
            break;
        case Root::LocalMachine:
            m_handle = HKEY_LOCAL_MACHINE;
            break;
        case Root::Users:
            m_handle = HKEY_USERS;
            break;
        case Root::ClassesRoot:
            m_handle = HKEY_CLASSES_ROOT;
            break;
    }
}

void Key::Close() {
    if (m_handle && !m_isRoot) RegCloseKey(m_handle);
    m_handle = nullptr;
    m_isRoot = false;
}

RegistryError Key::Open(const Key& above, const std::wstring& path, unsigned long access) {
    HKEY handle = nullptr;
    const LSTATUS status = RegOpenKeyExW(above.m_handle, path.c_str(), 0, access, &handle);
    if (status != ERROR_SUCCESS) return ErrorOf(status);
    // The system answers "" below a root with the root itself, which is not ours to close.
    const bool isRoot = above.m_isRoot && handle == above.m_handle;
    Close();
    m_handle = handle;
    m_isRoot = isRoot;
    return RegistryError::None;
}

RegistryError Key::Create(const Key& above, const std::wstring& name, unsigned long access,
                          unsigned long options, bool& isNew) {
    HKEY handle = nullptr;
    DWORD disposition = 0;
    const LSTATUS status = RegCreateKeyExW(above.m_handle, name.c_str(), 0, nullptr, options, access, nullptr,
                                           &handle, &disposition);
    if (status != ERROR_SUCCESS) return ErrorOf(status);
    Close();
    m_handle = handle;
    isNew = disposition == REG_CREATED_NEW_KEY;
    return RegistryError::None;
}

// ---------------------------------------------------------------------------------------------------------
// What is in a key

namespace {

using NameAt = LSTATUS (*)(HKEY key, DWORD index, wchar_t* name, DWORD* length);

LSTATUS SubKeyAt(HKEY key, DWORD index, wchar_t* name, DWORD* length) {
    return RegEnumKeyExW(key, index, name, length, nullptr, nullptr, nullptr, nullptr);
}

LSTATUS ValueAt(HKEY key, DWORD index, wchar_t* name, DWORD* length) {
    return RegEnumValueW(key, index, name, length, nullptr, nullptr, nullptr, nullptr);
}

RegistryError ListNames(const Key& key, NameAt nameAt, std::size_t longest,
                        std::vector<std::wstring>& names) {
    std::wstring name(longest + 1, L'\0');
    for (DWORD index = 0;; ++index) {
        auto length = static_cast<DWORD>(name.size());
        const LSTATUS status = nameAt(key.Handle(), index, name.data(), &length);
        if (status == ERROR_NO_MORE_ITEMS) return RegistryError::None;
        if (status != ERROR_SUCCESS) return ErrorOf(status);
        names.push_back(name.substr(0, length));
    }
}

}  // namespace

RegistryError ListSubKeyNames(const Key& key, std::vector<std::wstring>& names) {
    return ListNames(key, &SubKeyAt, kLongestKeyName, names);
}

RegistryError ListValueNames(const Key& key, std::vector<std::wstring>& names) {
    return ListNames(key, &ValueAt, kLongestValueName, names);
}

RegistryError ReadRawValue(const Key& key, const std::wstring& name, unsigned long& type,
                           std::string& bytes) {
    bytes.resize(1024);
    for (;;) {
        auto size = static_cast<DWORD>(bytes.size());
        const LSTATUS status = RegQueryValueExW(key.Handle(), name.c_str(), nullptr, &type,
                                                reinterpret_cast<BYTE*>(bytes.data()), &size);
        // Others may write a longer value meanwhile.
        if (status != ERROR_MORE_DATA || size <= bytes.size()) {
            bytes.resize(status == ERROR_SUCCESS ? size : 0);
            return ErrorOf(status);
        }
        bytes.resize(size);
    }
}

// ---------------------------------------------------------------------------------------------------------
// Trees. There are no transactions that span keys and can be relied on: what may be refused comes first.

namespace {

RegistryError ReadValues(const Key& key, TreeKey& to) {
    std::vector<std::wstring> names;
    const RegistryError error = ListValueNames(key, names);
    if (error != RegistryError::None) return error;
    for (std::wstring& name : names) {
        TreeKey::Value value;
        const RegistryError reading = ReadRawValue(key, name, value.type, value.bytes);
        if (reading == RegistryError::NotFound) continue;  // deleted meanwhile
        if (reading != RegistryError::None) return reading;
        value.name = std::move(name);
        to.values.push_back(std::move(value));
    }
    return RegistryError::None;
}

/// Adds the sub-keys of tree[place] to the tree, and their handles to `keys`.
RegistryError ReadSubKeys(Tree& tree, std::size_t place, std::vector<Key>& keys) {
    std::vector<std::wstring> names;
    const RegistryError error = ListSubKeyNames(keys[place], names);
    if (error != RegistryError::None) return error;
    // A link of the system's may lead back upward.
    if (!names.empty() && tree[place].depth == kDeepestKey) return RegistryError::BadDatabase;
    for (std::wstring& name : names) {
        Key key;
        const RegistryError opening = key.Open(keys[place], name, KEY_READ);
        if (opening == RegistryError::NotFound) continue;
        if (opening != RegistryError::None) return opening;
        tree.push_back({std::move(name), place, tree[place].depth + 1, {}});
        keys.push_back(std::move(key));
    }
    return RegistryError::None;
}

RegistryError WriteValues(const TreeKey& from, const Key& key) {
    for (const TreeKey::Value& value : from.values) {
        const LSTATUS status = RegSetValueExW(key.Handle(), value.name.c_str(), 0, value.type,
                                              reinterpret_cast<const BYTE*>(value.bytes.data()),
                                              static_cast<DWORD>(value.bytes.size()));
        if (status != ERROR_SUCCESS) return ErrorOf(status);
    }
    return RegistryError::None;
}

/// The keys that a tree is written to, in its order.
class TreeTarget {
 public:
    explicit TreeTarget(unsigned long options) : m_options(options) {}
    ~TreeTarget() {
        for (std::size_t i = m_created.size(); i-- > 0;)
            RegDeleteKeyW(m_created[i].first, m_created[i].second->c_str());
    }
    TreeTarget(const TreeTarget&) = delete;
    TreeTarget& operator=(const TreeTarget&) = delete;

    RegistryError Prepare(const Tree& tree, const Key& top) {
        m_keys.resize(tree.size());
        m_created.reserve(tree.size());
        RegistryError error = m_keys[0].Open(top, L"", KEY_READ | KEY_WRITE);
        for (std::size_t i = 1; i < tree.size() && error == RegistryError::None; ++i)
            error = Add(tree, i);
        return error;
    }

    const Key& operator[](std::size_t i) const { return m_keys[i]; }
    void Keep() { m_created.clear(); }

 private:
    RegistryError Add(const Tree& tree, std::size_t i) {
        const Key& parent = m_keys[tree[i].parent];
        const std::wstring& name = tree[i].name;
        bool isNew = false;
        RegistryError error = m_keys[i].Create(parent, name, KEY_READ | KEY_WRITE, m_options, isNew);
        if (error == RegistryError::ParentIsVolatile)
            error = m_keys[i].Create(parent, name, KEY_READ | KEY_WRITE, REG_OPTION_VOLATILE, isNew);
        if (isNew) m_created.emplace_back(parent.Handle(), &name);
        return error;
    }

    const unsigned long m_options;
    std::vector<Key> m_keys;
    std::vector<std::pair<HKEY, const std::wstring*>> m_created;
};

}  // namespace

RegistryError ReadTree(const Key& top, Tree& tree) {
    std::vector<Key> keys(1);
    const RegistryError error = keys[0].Open(top, L"", KEY_READ);
    if (error != RegistryError::None) return error;
    tree.assign(1, TreeKey());
    for (std::size_t i = 0; i < tree.size(); ++i) {
        RegistryError reading = ReadValues(keys[i], tree[i]);
        if (reading == RegistryError::None) reading = ReadSubKeys(tree, i, keys);
        if (reading != RegistryError::None) return reading;
    }
    return RegistryError::None;
}

RegistryError WriteTree(const Tree& tree, const Key& top, unsigned long options) {
    TreeTarget target(options);
    RegistryError error = target.Prepare(tree, top);
    if (error != RegistryError::None) return error;
    target.Keep();
    for (std::size_t i = 0; i < tree.size() && error == RegistryError::None; ++i)
        error = WriteValues(tree[i], target[i]);
    return error;
}

// ---------------------------------------------------------------------------------------------------------
// Deleting

RegistryError DoomedKeys::Open(const Key& parent, const std::wstring& name) {
    RegistryError error = Add(parent, 0, name);
    for (std::size_t i = 0; i < m_keys.size() && error == RegistryError::None; ++i) {
        std::vector<std::wstring> names;
        error = ListSubKeyNames(m_keys[i].key, names);
        for (std::size_t n = 0; n < names.size() && error == RegistryError::None; ++n) {
            error = Add(m_keys[i].key, i, names[n]);
            if (error == RegistryError::NotFound) error = RegistryError::None;  // somebody was faster
        }
    }
    return error;
}

RegistryError DoomedKeys::Delete(const Key& parent) const {
    for (std::size_t i = m_keys.size(); i-- > 0;) {
        const Key& above = i == 0 ? parent : m_keys[m_keys[i].parent].key;
        const LSTATUS status = RegDeleteKeyW(above.Handle(), m_keys[i].name.c_str());
        if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) return ErrorOf(status);
    }
    return RegistryError::None;
}

RegistryError DoomedKeys::Add(const Key& above, std::size_t place, const std::wstring& name) {
    Key key;
    const RegistryError error = key.Open(above, name, DELETE | KEY_READ);
    if (error == RegistryError::None) m_keys.push_back({std::move(key), place, name});
    return error;
}

RegistryError DeleteWholeKey(const Key& parent, const std::wstring& name) {
    DoomedKeys keys;
    const RegistryError error = keys.Open(parent, name);
    return error == RegistryError::None ? keys.Delete(parent) : error;
}

}  // namespace brenta::registry_store
