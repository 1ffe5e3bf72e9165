#include "brenta/registry.h"

#include <bit>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "brenta/failure.h"
#include "foundation/string_blocks.h"
#include "platform/registry_path.h"
#include "platform/registry_store.h"

namespace brenta {

namespace {

using registry_store::Place;
using registry_store::Root;
using registry_store::Value;

constexpr std::uintptr_t kUnknownRootSite = 0x0500E001;
/// The largest text that is read, its terminator included.
constexpr std::uint64_t kLargestText = 1000;

bool FindRoot(HKEY key, Root& root) {
    if (key == HKEY_CLASSES_ROOT)
        root = Root::ClassesRoot;
    else if (key == HKEY_CURRENT_USER)
        root = Root::CurrentUser;
    else if (key == HKEY_LOCAL_MACHINE)
        root = Root::LocalMachine;
    else if (key == HKEY_USERS)
        root = Root::Users;
    else
        return false;
    return true;
}

bool IsRoot(HKEY key) {
    Root root;
    return FindRoot(key, root);
}

/// Calls action(place) for a good place; else the result says what is wrong with it.
template <class Action>
RegistryError At(HKEY root, const char* path, const Action& action) try {
    Root known;
    if (!FindRoot(root, known)) return RegistryError::NoSuchRoot;
    const RegistryPath parts(path);
    return parts.Error() == RegistryError::None ? action(Place{known, parts}) : parts.Error();
} catch (const std::bad_alloc&) {
    return RegistryError::OutOfMemory;
}

/// The same for a value of the place.
template <class Action>
RegistryError AtValue(HKEY root, const char* path, const char* name, const Action& action) {
    const std::string_view text = name ? name : "";
    if (text.size() > kLongestValueName) return RegistryError::BadArgument;
    return At(root, path, [&](const Place& place) { return action(place, text); });
}

RegistryError Read(HKEY root, const char* path, const char* name, std::uint64_t most, Value& value) {
    return AtValue(root, path, name, [&](const Place& place, std::string_view text) {
        return registry_store::ReadValue(place, text, most, value);
    });
}

bool Write(HKEY root, const char* path, const char* name, DWORD type, std::string_view data) {
    return AtValue(root, path, name, [&](const Place& place, std::string_view text) {
               return registry_store::WriteValue(place, text, type, data);
           }) == RegistryError::None;
}

/// The first bytes of a value as a number, the lowest first; false if there are none.
template <class Number>
bool ReadNumber(HKEY root, const char* path, const char* name, Number& number) {
    Value value;
    if (Read(root, path, name, sizeof(Number), value) != RegistryError::None || value.data.empty())
        return false;
    number = 0;
    for (std::size_t i = 0; i < value.data.size(); ++i)
        number |=
            static_cast<Number>(static_cast<Number>(static_cast<unsigned char>(value.data[i])) << 8 * i);
    return true;
}

template <class Number>
bool WriteNumber(HKEY root, const char* path, const char* name, DWORD type, Number number) {
    char bytes[sizeof(Number)];
    for (char& byte : bytes) {
        byte = static_cast<char>(number & 0xff);
        number = static_cast<Number>(static_cast<std::uint64_t>(number) >> 8);
    }
    return Write(root, path, name, type, {bytes, sizeof(bytes)});
}

using Lister = RegistryError (*)(const Place& place, std::vector<std::string>& names);

bool List(HKEY root, const char* path, Lister lister, TOrderedList<CoreString>& names) {
    names.RemoveAll();
    std::vector<std::string> found;
    const RegistryError error = At(root, path, [&](const Place& place) { return lister(place, found); });
    if (error != RegistryError::None) return false;
    t_stringsLacked = false;
    for (const std::string& name : found)
        names.Add(CoreString(std::string_view(name)));
    return !t_stringsLacked && static_cast<std::size_t>(names.GetCount()) == found.size();
}

/// Named after the object. Addresses come again, so what is found of that name is not taken for a copy.
std::string ScratchName(const CCoreRegistry* registry) {
    return "Scratch_" + std::to_string(static_cast<std::int32_t>(reinterpret_cast<std::uintptr_t>(registry)));
}

bool IsWithin(const RegistryPath& path, std::string_view name) {
    return !path.IsEmpty() && FoldedName(path.Names().front()) == FoldedName(name);
}

RegistryError Save(const Place& source, const CCoreRegistry* registry) {
    const std::string name = ScratchName(registry);
    const RegistryPath scratch(name.c_str());
    if (source.path.IsEmpty()) return RegistryError::BadArgument;
    if (source.root == Root::CurrentUser && IsWithin(source.path, name)) return RegistryError::BadArgument;
    return registry_store::SaveTree(source, {Root::CurrentUser, scratch});
}

RegistryError Restore(const Place& target, const CCoreRegistry* registry) {
    const std::string name = ScratchName(registry);
    const RegistryPath scratch(name.c_str());
    return registry_store::RestoreTree({Root::CurrentUser, scratch}, target);
}

void DropScratch(const CCoreRegistry* registry) {
    const auto drop = [registry](const Place& root) {
        const std::string name = ScratchName(registry);
        const RegistryPath scratch(name.c_str());
        return registry_store::DeleteKey({root.root, scratch});
    };
    At(HKEY_CURRENT_USER, "", drop);
}

/// Whether the error tells that there is no such key, rather than that it could not be reached.
bool IsAbsence(RegistryError error) {
    return error == RegistryError::NotFound || error == RegistryError::BadPath ||
           error == RegistryError::BadArgument;
}

bool HasName(const char* path) {
    return path && path[std::strspn(path, "\\")] != 0;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// Life

CCoreRegistry::CCoreRegistry(HKEY root) : m_root(root) {
    if (IsRoot(root)) return;
    m_root = HKEY_CURRENT_USER;
    ForcedCrash(kUnknownRootSite, "Registry", __LINE__, "Forced crash! \"Root key not recognized.\"");
}

CCoreRegistry::~CCoreRegistry() {
    ClearKey();
    if (!m_savedPath.IsEmpty()) DropScratch(this);
}

std::size_t CCoreRegistry::SizeOf() const {
    return sizeof(*this);
}

const char* CCoreRegistry::GetClassName() const {
    return "CCoreRegistry";
}

const char* CCoreRegistry::GetBaseClassName() const {
    return "none";
}

// ---------------------------------------------------------------------------------------------------------
// The current key and other keys

bool CCoreRegistry::SetRootKey(HKEY root) {
    if (!IsRoot(root)) return false;
    m_root = root;
    return true;
}

bool CCoreRegistry::SetKey(const char* path, bool create) {
    if (!path || *path == 0) {
        m_path.SetEmpty();
        return true;
    }
    if (create) return CreateKey(path);
    const RegistryError error = At(m_root, path, &registry_store::FindKey);
    m_lastError = static_cast<DWORD>(error);
    if (error == RegistryError::None) m_path = path;
    return error == RegistryError::None;
}

bool CCoreRegistry::CreateKey(const char* path) {
    if (At(m_root, path, &registry_store::CreateKey) != RegistryError::None) return false;
    m_path = path ? path : "";
    return true;
}

bool CCoreRegistry::ClearKey() {
    m_path.SetEmpty();
    m_root = HKEY_CURRENT_USER;
    return true;
}

bool CCoreRegistry::KeyExists(const char* path, HKEY parent) {
    return At(parent ? parent : m_root, path, &registry_store::FindKey) == RegistryError::None;
}

bool CCoreRegistry::DeleteKey(const char* path) {
    if (!HasName(path)) return false;
    const RegistryError error = At(m_root, path, &registry_store::DeleteKey);
    return error == RegistryError::None || IsAbsence(error);
}

// ---------------------------------------------------------------------------------------------------------
// The contents of the current key

int CCoreRegistry::GetValueCount() {
    registry_store::Counts counts;
    const auto count = [&](const Place& place) { return registry_store::CountKey(place, counts); };
    return At(m_root, m_path, count) == RegistryError::None ? counts.values : -1;
}

int CCoreRegistry::GetSubKeyCount() {
    registry_store::Counts counts;
    const auto count = [&](const Place& place) { return registry_store::CountKey(place, counts); };
    return At(m_root, m_path, count) == RegistryError::None ? counts.subKeys : -1;
}

bool CCoreRegistry::GetValueNames(TOrderedList<CoreString>& names) {
    return List(m_root, m_path, &registry_store::ListValues, names);
}

bool CCoreRegistry::GetSubKeyNames(TOrderedList<CoreString>& names) {
    return List(m_root, m_path, &registry_store::ListSubKeys, names);
}

bool CCoreRegistry::ValueExists(const char* name) {
    return AtValue(m_root, m_path, name, &registry_store::FindValue) == RegistryError::None;
}

DWORD CCoreRegistry::GetDataType(const char* name) {
    Value value;
    const RegistryError error = Read(m_root, m_path, name, 0, value);
    m_lastError = static_cast<DWORD>(error);
    return error == RegistryError::None ? value.type : 0;
}

int CCoreRegistry::GetDataSize(const char* name) {
    Value value;
    if (Read(m_root, m_path, name, 0, value) != RegistryError::None) return -1;
    constexpr auto kLargest = static_cast<std::uint64_t>(std::numeric_limits<int>::max());
    return value.size <= kLargest ? static_cast<int>(value.size) : -1;
}

bool CCoreRegistry::DeleteValue(const char* name) {
    return AtValue(m_root, m_path, name, &registry_store::DeleteValue) == RegistryError::None;
}

// ---------------------------------------------------------------------------------------------------------
// Values

bool CCoreRegistry::ReadBool(const char* name, bool defaultValue) {
    std::uint8_t byte;
    return ReadNumber(m_root, m_path, name, byte) ? byte != 0 : defaultValue;
}

int CCoreRegistry::ReadInt(const char* name, int defaultValue) {
    std::uint32_t bits;
    return ReadNumber(m_root, m_path, name, bits) ? static_cast<int>(bits) : defaultValue;
}

DWORD CCoreRegistry::ReadDword(const char* name, DWORD defaultValue) {
    DWORD bits;
    return ReadNumber(m_root, m_path, name, bits) ? bits : defaultValue;
}

double CCoreRegistry::ReadFloat(const char* name, double defaultValue) {
    std::uint64_t bits;
    return ReadNumber(m_root, m_path, name, bits) ? std::bit_cast<double>(bits) : defaultValue;
}

CoreString CCoreRegistry::ReadString(const char* name, const char* defaultValue) {
    Value value;
    RegistryError error = Read(m_root, m_path, name, kLargestText, value);
    const bool isText = value.type == REG_SZ || value.type == REG_EXPAND_SZ;
    if (error == RegistryError::None && isText && value.size > kLargestText) error = RegistryError::MoreData;
    m_lastError = static_cast<DWORD>(error);
    if (error != RegistryError::None || !isText) return CoreString(defaultValue);
    return CoreString(value.data.c_str());
}

bool CCoreRegistry::WriteBool(const char* name, bool value) {
    return WriteNumber(m_root, m_path, name, REG_BINARY, static_cast<std::uint8_t>(value));
}

bool CCoreRegistry::WriteInt(const char* name, int value) {
    return WriteNumber(m_root, m_path, name, REG_BINARY, static_cast<std::uint32_t>(value));
}

bool CCoreRegistry::WriteDword(const char* name, DWORD value) {
    return WriteNumber(m_root, m_path, name, REG_DWORD, value);
}

bool CCoreRegistry::WriteFloat(const char* name, double value) {
    return WriteNumber(m_root, m_path, name, REG_BINARY, std::bit_cast<std::uint64_t>(value));
}

bool CCoreRegistry::WriteString(const char* name, const char* value) {
    const char* const text = value ? value : "";
    return Write(m_root, m_path, name, REG_SZ, {text, std::strlen(text) + 1});
}

// ---------------------------------------------------------------------------------------------------------
// Saving and restoring

bool CCoreRegistry::SaveKey() {
    const auto save = [this](const Place& source) { return Save(source, this); };
    if (At(m_root, m_path, save) != RegistryError::None) return false;
    m_savedPath = m_path;
    return true;
}

bool CCoreRegistry::RestoreKey() {
    const auto restore = [this](const Place& target) { return Restore(target, this); };
    const RegistryError error =
        m_savedPath.IsEmpty() ? RegistryError::NotFound : At(m_root, m_savedPath, restore);
    m_lastError = static_cast<DWORD>(error);
    if (error != RegistryError::None) return false;
    m_savedPath.SetEmpty();
    return true;
}

}  // namespace brenta
