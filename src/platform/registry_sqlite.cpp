// The registry in a database: each function of the store is one transaction.
#include <algorithm>
#include <limits>
#include <unordered_set>
#include <utility>

#include "brenta/registry.h"
#include "os/data_files.h"
#include "platform/registry_database_sqlite.h"
#include "platform/registry_roots.h"
#include "platform/registry_store.h"

namespace brenta::registry_store {

namespace {

struct Key {
    std::int64_t id = 0;
    bool isVolatile = false;
};

std::int64_t IdOfRoot(Root root) {
    if (root == Root::CurrentUser) return 1;
    return root == Root::Users ? 3 : 2;
}

RegistryError FindChild(Database& database, std::string_view name, Key& key) {
    const std::string folded = FoldedName(name);
    Query query(database, Sql::FindKey);
    query.With(1, key.id).With(2, folded);
    if (query.Next()) {
        key = {query.Number(0), query.Number(1) != 0};
        return RegistryError::None;
    }
    const RegistryError error = query.Finish();
    return error == RegistryError::None ? RegistryError::NotFound : error;
}

RegistryError Find(Database& database, const Place& place, Key& key) {
    key = {IdOfRoot(place.root)};
    for (const std::string_view name : NamesFromHive(place)) {
        const RegistryError error = FindChild(database, name, key);
        if (error != RegistryError::None) return error;
    }
    return RegistryError::None;
}

/// Adds a key below `key` and goes there. `run` is the system's run that it does not outlive; null for a key
/// that lasts. What is below such a key does not outlive the run either.
RegistryError AddChild(Database& database, std::string_view name, const std::string* run, Key& key) {
    const std::string folded = FoldedName(name);
    Query query(database, Sql::AddKey);
    query.With(1, key.id).With(2, name).With(3, folded);
    if (run) query.With(4, *run);
    const RegistryError error = query.Finish();
    return error == RegistryError::None ? FindChild(database, name, key) : error;
}

RegistryError FindOrAdd(Database& database, std::string_view name, Key& key) {
    const RegistryError error = FindChild(database, name, key);
    return error == RegistryError::NotFound ? AddChild(database, name, nullptr, key) : error;
}

RegistryError Create(Database& database, const Place& place) {
    Key key{IdOfRoot(place.root)};
    for (const std::string_view name : NamesFromHive(place)) {
        RegistryError error = FindChild(database, name, key);
        if (error == RegistryError::NotFound) {
            if (key.isVolatile) return RegistryError::ParentIsVolatile;
            error = AddChild(database, name, nullptr, key);
        }
        if (error != RegistryError::None) return error;
    }
    return RegistryError::None;
}

RegistryError Delete(Database& database, const Key& key) {
    return Query(database, Sql::DeleteKey).With(1, key.id).Finish();
}

RegistryError Count(Database& database, Sql sql, const Key& key, int& count) {
    Query query(database, sql);
    if (query.With(1, key.id).Next()) count = static_cast<int>(query.Number(0));
    return query.Finish();
}

struct Child {
    std::string name;
    std::int64_t id;
};

RegistryError SubKeysOf(Database& database, std::int64_t id, std::vector<Child>& children) {
    Query query(database, Sql::ListSubKeys);
    query.With(1, id);
    while (query.Next())
        children.push_back({std::string(query.Bytes(0)), query.Number(1)});
    return query.Finish();
}

/// A key that is still to be copied, and the one that it is copied to.
struct CopyStep {
    std::int64_t from;
    Key to;
};

RegistryError CopyKey(Database& database, const CopyStep& step, std::vector<CopyStep>& steps) {
    RegistryError error = Query(database, Sql::CopyValues).With(1, step.from).With(2, step.to.id).Finish();
    std::vector<Child> children;
    if (error == RegistryError::None) error = SubKeysOf(database, step.from, children);
    for (const Child& child : children) {
        if (error != RegistryError::None) break;
        Key to = step.to;
        error = FindOrAdd(database, child.name, to);
        steps.push_back({child.id, to});
    }
    return error;
}

/// In a file that somebody has meddled with, a key may be above itself: none is copied twice.
RegistryError CopyTree(Database& database, const Key& source, const Key& target) {
    std::vector<CopyStep> steps{{source.id, target}};
    std::unordered_set<std::int64_t> copied;
    while (!steps.empty()) {
        const CopyStep step = steps.back();
        steps.pop_back();
        if (!copied.insert(step.from).second) return RegistryError::BadDatabase;
        const RegistryError error = CopyKey(database, step, steps);
        if (error != RegistryError::None) return error;
    }
    return RegistryError::None;
}

/// A new and empty scratch key.
RegistryError CreateScratch(Database& database, const Place& scratch, Key& key) {
    RegistryError error = Find(database, scratch, key);
    if (error == RegistryError::None) error = Delete(database, key);
    if (error != RegistryError::None && error != RegistryError::NotFound) return error;
    key = {IdOfRoot(scratch.root)};
    const std::string run = os::BootId();
    return AddChild(database, scratch.path.Names().front(), &run, key);
}

bool IsText(std::uint32_t type) {
    return type == REG_SZ || type == REG_EXPAND_SZ;
}

RegistryError Read(Database& database, const Key& key, std::string_view name, std::uint64_t most,
                   Value& value) {
    constexpr std::uint64_t kAll = std::numeric_limits<std::int32_t>::max();
    const std::string folded = FoldedName(name);
    Query query(database, Sql::ReadValue);
    query.With(1, key.id).With(2, folded).With(3, static_cast<std::int64_t>(std::min(most, kAll)));
    if (!query.Next()) {
        const RegistryError error = query.Finish();
        return error == RegistryError::None ? RegistryError::NotFound : error;
    }
    value.type = static_cast<std::uint32_t>(query.Number(0));
    value.size = static_cast<std::uint64_t>(query.Number(1));
    value.data = query.Bytes(2);
    const bool isTerminated = value.size == 0 || query.Bytes(3) == std::string_view("\0", 1);
    if (IsText(value.type) && !isTerminated) ++value.size;
    return RegistryError::None;
}

/// To write below a key that every registry has, a file is created; without a file no other key is there.
Purpose PurposeOfWriting(const Place& place) {
    return IsProtected(place) ? Purpose::Create : Purpose::Change;
}

/// Finds the place in a session of its own and calls action(database, key) there.
template <class Action>
RegistryError At(Purpose purpose, const Place& place, const Action& action) {
    Session session(purpose);
    if (session.Error() != RegistryError::None) return session.Error();
    Key key;
    const RegistryError error = Find(session.Get(), place, key);
    return session.Finish(error == RegistryError::None ? action(session.Get(), key) : error);
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// Keys

RegistryError FindKey(const Place& place) {
    return At(Purpose::Read, place, [](Database&, const Key&) { return RegistryError::None; });
}

RegistryError CreateKey(const Place& place) {
    // Most keys are there, and finding one keeps no other process waiting.
    const RegistryError error = FindKey(place);
    if (error != RegistryError::NotFound) return error;
    Session session(Purpose::Create);
    if (session.Error() != RegistryError::None) return session.Error();
    return session.Finish(Create(session.Get(), place));
}

RegistryError DeleteKey(const Place& place) {
    if (IsProtected(place)) return RegistryError::AccessDenied;
    // A key that is not there needs no right to write, nor any waiting for it.
    const RegistryError error = FindKey(place);
    return error == RegistryError::None ? At(Purpose::Change, place, &Delete) : error;
}

RegistryError CountKey(const Place& place, Counts& counts) {
    return At(Purpose::Read, place, [&](Database& database, const Key& key) {
        const RegistryError error = Count(database, Sql::CountValues, key, counts.values);
        return error == RegistryError::None ? Count(database, Sql::CountSubKeys, key, counts.subKeys) : error;
    });
}

RegistryError ListSubKeys(const Place& place, std::vector<std::string>& names) {
    return At(Purpose::Read, place, [&](Database& database, const Key& key) {
        std::vector<Child> children;
        const RegistryError error = SubKeysOf(database, key.id, children);
        for (Child& child : children)
            names.push_back(std::move(child.name));
        return error;
    });
}

RegistryError ListValues(const Place& place, std::vector<std::string>& names) {
    return At(Purpose::Read, place, [&](Database& database, const Key& key) {
        Query query(database, Sql::ListValues);
        query.With(1, key.id);
        while (query.Next())
            names.emplace_back(query.Bytes(0));
        return query.Finish();
    });
}

// ---------------------------------------------------------------------------------------------------------
// Values

RegistryError ReadValue(const Place& place, std::string_view name, std::uint64_t most, Value& value) {
    return At(Purpose::Read, place,
              [&](Database& database, const Key& key) { return Read(database, key, name, most, value); });
}

RegistryError WriteValue(const Place& place, std::string_view name, std::uint32_t type,
                         std::string_view data) {
    return At(PurposeOfWriting(place), place, [&](Database& database, const Key& key) {
        const std::string folded = FoldedName(name);
        Query query(database, Sql::WriteValue);
        query.With(1, key.id).With(2, name).With(3, folded).With(4, std::int64_t{type}).WithBytes(5, data);
        return query.Finish();
    });
}

RegistryError FindValue(const Place& place, std::string_view name) {
    Value value;
    return ReadValue(place, name, 0, value);
}

RegistryError DeleteValue(const Place& place, std::string_view name) {
    return At(Purpose::Change, place, [&](Database& database, const Key& key) {
        Value value;
        const RegistryError error = Read(database, key, name, 0, value);
        if (error != RegistryError::None) return error;
        const std::string folded = FoldedName(name);
        Query query(database, Sql::DeleteValue);
        return query.With(1, key.id).With(2, folded).Finish();
    });
}

RegistryError ReadVeiledText(const Place& place, std::string_view name, std::uint64_t most, Value& value) {
    return ReadValue(place, name, most, value);
}

RegistryError WriteVeiledText(const Place& place, std::string_view name, std::string_view data) {
    return WriteValue(place, name, REG_SZ, data);
}

// ---------------------------------------------------------------------------------------------------------
// Trees

RegistryError SaveTree(const Place& source, const Place& scratch) {
    return At(PurposeOfWriting(source), source, [&](Database& database, const Key& key) {
        Key copy;
        const RegistryError error = CreateScratch(database, scratch, copy);
        return error == RegistryError::None ? CopyTree(database, key, copy) : error;
    });
}

RegistryError RestoreTree(const Place& scratch, const Place& target) {
    return At(Purpose::Change, target, [&](Database& database, const Key& key) {
        Key copy;
        RegistryError error = Find(database, scratch, copy);
        if (error == RegistryError::None) error = CopyTree(database, copy, key);
        return error == RegistryError::None ? Delete(database, copy) : error;
    });
}

}  // namespace brenta::registry_store
