// The store behind CCoreRegistry: what the backends implement, registry_sqlite.cpp or the system's registry.
//
// Every function is whole: it takes place or it does not, for this process and for all others. Every place
// is found anew, so that nothing stays open between two calls. Functions that fail change nothing and say
// why; they may throw std::bad_alloc. Any thread may call them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry_path.h"

namespace brenta::registry_store {

enum class Root { CurrentUser, LocalMachine, Users, ClassesRoot };

/// A key. The path must be a good one, and must outlive the place.
struct Place {
    Root root;
    const RegistryPath& path;
};

struct Value {
    std::uint32_t type = 0;
    /// In bytes. A text that was stored without its terminator counts one more.
    std::uint64_t size = 0;
    /// The bytes that were asked for, as far as there are so many.
    std::string data;
};

struct Counts {
    int values = 0;
    int subKeys = 0;
};

// ---------------------------------------------------------------------------------------------------------
// Keys

/// None if there is such a key and, where the system has rights for each key, the user has all to this one. A
/// root is always there.
RegistryError FindKey(const Place& place);
/// Creates the key and all above it that are missing; a key that is there is left as it is.
RegistryError CreateKey(const Place& place);
/// Deletes the key and all below it. A root, and what a root is made of, is not deleted: AccessDenied.
RegistryError DeleteKey(const Place& place);
RegistryError CountKey(const Place& place, Counts& counts);
/// The names below a key, sorted without regard to case.
RegistryError ListSubKeys(const Place& place, std::vector<std::string>& names);
RegistryError ListValues(const Place& place, std::vector<std::string>& names);

// ---------------------------------------------------------------------------------------------------------
// Values

/// None if FindKey finds the key, and there is such a value in it.
RegistryError FindValue(const Place& place, std::string_view name);
/// Reads a value and at most so many of its bytes.
RegistryError ReadValue(const Place& place, std::string_view name, std::uint64_t most, Value& value);
/// Creates or replaces a value; the key must be there.
RegistryError WriteValue(const Place& place, std::string_view name, std::uint32_t type,
                         std::string_view data);
RegistryError DeleteValue(const Place& place, std::string_view name);

/// The same for a REG_SZ of any bytes, which all come back even where texts are stored in another form.
RegistryError ReadVeiledText(const Place& place, std::string_view name, std::uint64_t most, Value& value);
RegistryError WriteVeiledText(const Place& place, std::string_view name, std::string_view data);

// ---------------------------------------------------------------------------------------------------------
// Trees

/// Copies a key's whole tree into a new key that does not outlive the system's run; a key of that place is
/// deleted first.
RegistryError SaveTree(const Place& source, const Place& scratch);
/// Copies the scratch key's tree over the target's, where values that the copy lacks stay, and deletes the
/// scratch key. Both keys must be there.
RegistryError RestoreTree(const Place& scratch, const Place& target);

}  // namespace brenta::registry_store
