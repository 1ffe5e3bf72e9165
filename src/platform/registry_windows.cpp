// The registry of the system. Names and texts are wide there, and narrow in the process's code page here. The
// system's own narrow functions are passed by: some of them know no key name of 255 bytes.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

#include "foundation/characters.h"
#include "platform/registry_key_windows.h"
#include "platform/registry_roots.h"
#include "platform/registry_store.h"
#include "platform/wide_text_windows.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brenta::registry_store {

namespace {

using Names = std::vector<std::string_view>;

/// The system takes no path of more than 32 levels at once.
constexpr std::size_t kLevelsAtOnce = 30;

RegistryError OpenPath(const Key& root, const Names& names, unsigned long access, Key& key) {
    const unsigned long onTheWay = KEY_READ | (access & KEY_WOW64_32KEY);
    RegistryError error = key.Open(root, L"", names.empty() ? access : onTheWay);
    for (std::size_t done = 0; done < names.size() && error == RegistryError::None;) {
        const std::size_t end = std::min(done + kLevelsAtOnce, names.size());
        std::wstring path;
        for (; done < end; ++done)
            path.append(path.empty() ? L"" : L"\\").append(Widened(names[done]));
        Key below;
        error = below.Open(key, path, end == names.size() ? access : onTheWay);
        key = std::move(below);
    }
    return error;
}

RegistryError Open(const Place& place, unsigned long access, Key& key) {
    return OpenPath(Key(place.root), place.path.Names(), access, key);
}

/// Opens a key that is only looked at. What 32-bit programs have written for the whole machine stands in a
/// view of its own, where a 64-bit one looks if its own view lacks the key; it changes nothing there.
RegistryError OpenToLook(const Place& place, unsigned long access, Key& key) {
    const RegistryError error = Open(place, access, key);
    const bool hasViews = place.root == Root::LocalMachine || place.root == Root::ClassesRoot;
    if (error != RegistryError::NotFound || !hasViews) return error;
    return Open(place, access | KEY_WOW64_32KEY, key) == RegistryError::None ? RegistryError::None : error;
}

using Opener = RegistryError (*)(const Place& place, unsigned long access, Key& key);

/// Opens the place and calls action(key) there.
template <class Action>
RegistryError At(const Place& place, unsigned long access, const Action& action, Opener open = &OpenToLook) {
    Key key;
    const RegistryError error = open(place, access, key);
    return error == RegistryError::None ? action(key) : error;
}

RegistryError ErrorOf(LSTATUS status) {
    return static_cast<RegistryError>(static_cast<std::uint32_t>(status));
}

using Lister = RegistryError (*)(const Key& key, std::vector<std::wstring>& names);

RegistryError List(const Place& place, Lister lister, std::vector<std::string>& names) {
    std::vector<std::wstring> wide;
    const RegistryError error = At(place, KEY_READ, [&](const Key& key) { return lister(key, wide); });
    if (error != RegistryError::None) return error;
    std::transform(wide.begin(), wide.end(), std::back_inserter(names), &Narrowed);
    std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
        return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
            return static_cast<unsigned char>(ToLower(x)) < static_cast<unsigned char>(ToLower(y));
        });
    });
    return RegistryError::None;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// Keys

RegistryError FindKey(const Place& place) {
    return At(place, KEY_ALL_ACCESS, [](const Key&) { return RegistryError::None; });
}

RegistryError CreateKey(const Place& place) {
    Key there;
    const RegistryError finding = Open(place, KEY_ALL_ACCESS, there);
    if (finding != RegistryError::NotFound) return finding;
    const Names& names = place.path.Names();
    std::vector<Key> keys;
    keys.emplace_back(place.root);
    std::size_t firstNew = names.size();
    RegistryError error = RegistryError::None;
    for (std::size_t i = 0; i < names.size() && error == RegistryError::None; ++i) {
        const unsigned long access = i + 1 == names.size() ? KEY_ALL_ACCESS : MAXIMUM_ALLOWED;
        bool isNew = false;
        Key key;
        error = key.Create(keys.back(), Widened(names[i]), access, REG_OPTION_NON_VOLATILE, isNew);
        if (isNew) firstNew = std::min(firstNew, i);
        keys.push_back(std::move(key));
    }
    if (error != RegistryError::None && firstNew < names.size())
        DeleteWholeKey(keys[firstNew], Widened(names[firstNew]));
    return error;
}

RegistryError DeleteKey(const Place& place) {
    // The machine's and the users' first levels are not keys that somebody has created, but files of keys.
    const Names& names = place.path.Names();
    const bool isHive = names.size() == 1 && (place.root == Root::LocalMachine || place.root == Root::Users);
    if (IsProtected(place) || isHive) return RegistryError::AccessDenied;
    Key key, parent;
    RegistryError error = Open(place, KEY_READ, key);
    if (error != RegistryError::None) return error;
    error = OpenPath(Key(place.root), {names.begin(), names.end() - 1}, KEY_READ, parent);
    return error == RegistryError::None ? DeleteWholeKey(parent, Widened(names.back())) : error;
}

RegistryError CountKey(const Place& place, Counts& counts) {
    return At(place, KEY_READ, [&](const Key& key) {
        DWORD subKeys = 0, values = 0;
        const LSTATUS status = RegQueryInfoKeyW(key.Handle(), nullptr, nullptr, nullptr, &subKeys, nullptr,
                                                nullptr, &values, nullptr, nullptr, nullptr, nullptr);
        counts = {static_cast<int>(values), static_cast<int>(subKeys)};
        return ErrorOf(status);
    });
}

RegistryError ListSubKeys(const Place& place, std::vector<std::string>& names) {
    return List(place, &ListSubKeyNames, names);
}

RegistryError ListValues(const Place& place, std::vector<std::string>& names) {
    return List(place, &ListValueNames, names);
}

// ---------------------------------------------------------------------------------------------------------
// Values

namespace {

bool IsText(unsigned long type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

/// The characters of a stored text; a last byte that makes none is nobody's.
std::wstring TextOf(const std::string& bytes) {
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    return text;
}

std::string BytesOf(const std::wstring& text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

RegistryError WriteRawValue(const Place& place, std::string_view name, unsigned long type,
                            const std::string& bytes) {
    if (bytes.size() > std::numeric_limits<DWORD>::max()) return RegistryError::BadArgument;
    const auto write = [&](const Key& key) {
        return ErrorOf(RegSetValueExW(key.Handle(), Widened(name).c_str(), 0, type,
                                      reinterpret_cast<const BYTE*>(bytes.data()),
                                      static_cast<DWORD>(bytes.size())));
    };
    return At(place, KEY_SET_VALUE, write, &Open);
}

/// Reads a value whose text `narrow` turns into bytes.
template <class Narrow>
RegistryError Read(const Place& place, std::string_view name, std::uint64_t most, Value& value,
                   const Narrow& narrow) {
    unsigned long type = 0;
    std::string bytes;
    const RegistryError error = At(place, KEY_QUERY_VALUE, [&](const Key& key) {
        return ReadRawValue(key, Widened(name), type, bytes);
    });
    if (error != RegistryError::None) return error;
    value.type = type;
    bool isTerminated = true;
    if (IsText(type)) {
        const std::wstring text = TextOf(bytes);
        isTerminated = text.empty() || text.back() == L'\0';
        bytes = narrow(text);
    }
    value.size = bytes.size() + (isTerminated ? 0 : 1);
    value.data = bytes.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(most, bytes.size())));
    return RegistryError::None;
}

}  // namespace

RegistryError FindValue(const Place& place, std::string_view name) {
    return At(place, KEY_ALL_ACCESS, [&](const Key& key) {
        return ErrorOf(
            RegQueryValueExW(key.Handle(), Widened(name).c_str(), nullptr, nullptr, nullptr, nullptr));
    });
}

RegistryError ReadValue(const Place& place, std::string_view name, std::uint64_t most, Value& value) {
    return Read(place, name, most, value, &Narrowed);
}

RegistryError WriteValue(const Place& place, std::string_view name, std::uint32_t type,
                         std::string_view data) {
    return WriteRawValue(place, name, type, IsText(type) ? BytesOf(Widened(data)) : std::string(data));
}

RegistryError DeleteValue(const Place& place, std::string_view name) {
    const auto remove = [&](const Key& key) {
        return ErrorOf(RegDeleteValueW(key.Handle(), Widened(name).c_str()));
    };
    return At(place, KEY_SET_VALUE, remove, &Open);
}

// In a code page of one-byte characters every byte is one, and veiled texts are as the narrow functions of
// the system, and so other versions of the library, have them. In others they would not survive as texts.

RegistryError ReadVeiledText(const Place& place, std::string_view name, std::uint64_t most, Value& value) {
    return Read(place, name, most, value, [](const std::wstring& text) {
        std::string bytes;
        return HasLongCharacters() && NarrowedBytes(text, bytes) ? bytes : Narrowed(text);
    });
}

RegistryError WriteVeiledText(const Place& place, std::string_view name, std::string_view data) {
    return WriteRawValue(place, name, REG_SZ,
                         BytesOf(HasLongCharacters() ? WidenedBytes(data) : Widened(data)));
}

// ---------------------------------------------------------------------------------------------------------
// Trees

RegistryError SaveTree(const Place& source, const Place& scratch) {
    Tree tree;
    RegistryError error = At(source, KEY_READ, [&](const Key& key) { return ReadTree(key, tree); });
    if (error != RegistryError::None) return error;
    error = DeleteKey(scratch);
    if (error != RegistryError::None && error != RegistryError::NotFound) return error;
    const Key root(scratch.root);
    const std::wstring name = Widened(scratch.path.Names().front());
    Key copy;
    bool isNew = false;
    error = copy.Create(root, name, KEY_ALL_ACCESS, REG_OPTION_VOLATILE, isNew);
    if (error == RegistryError::None) error = WriteTree(tree, copy, REG_OPTION_VOLATILE);
    if (error != RegistryError::None && isNew) DeleteWholeKey(root, name);
    return error;
}

RegistryError RestoreTree(const Place& scratch, const Place& target) {
    const Key root(scratch.root);
    Key key;
    Tree tree;
    // What follows the writing of values needs no memory and is refused by nobody.
    DoomedKeys copy;
    RegistryError error = Open(target, KEY_ALL_ACCESS, key);
    if (error == RegistryError::None) error = copy.Open(root, Widened(scratch.path.Names().front()));
    if (error == RegistryError::None)
        error = At(scratch, KEY_READ, [&](const Key& from) { return ReadTree(from, tree); });
    if (error == RegistryError::None) error = WriteTree(tree, key, REG_OPTION_NON_VOLATILE);
    return error == RegistryError::None ? copy.Delete(root) : error;
}

}  // namespace brenta::registry_store
