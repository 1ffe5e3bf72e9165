// Classes, and the objects made of them.
//
// A class keeps one object of itself as an engine's value, and every new object is a copy of it: nothing is
// copied until a member is written, a member that is an object shares the other class's own, and all objects
// of a class have one list of member names. Classes are finished before scripts use them, but a host may add
// members at any time; a counter of such changes tells that an object was made before.
#include <algorithm>
#include <atomic>
#include <vector>

#include "brenta/dump.h"
#include "brenta/statements.h"
#include "foundation/lack_of_memory.h"
#include "script/symbol_access.h"
#include "script/value_limits.h"

namespace brenta {

namespace {

/// Counts changes to classes, of all engines; from 1, since 0 is the epoch of an object never made.
std::atomic<std::uint64_t> g_classEpoch{1};

constexpr std::uint64_t kCountedWeight = std::uint64_t{1} << 62;
constexpr std::uint32_t kCountedDepth = 1u << 30;

}  // namespace

void SymbolAccess::NoteClassChange() {
    g_classEpoch.fetch_add(1, std::memory_order_relaxed);
}

STRID SymbolAccess::MemberName(const ScriptSymbol& symbol) {
    // The name of the declared value, which is nearly always the symbol's.
    const STRID name = symbol.m_hasInitial ? symbol.m_initial.GetName() : kNoName;
    return name == kNoName || name == kFunctionName ? symbol.GetName() : name;
}

/// Makes the object that a class keeps.
class InstanceBuilder {
 public:
    /// Brings the object of a class up to date. Base classes come first, in a loop: a chain of them may be as
    /// long as a script. Classes of members recurse, as deep as objects may be nested.
    static void Update(const ClassSymbol& cls, std::uint32_t level = 1) {
        const std::uint64_t epoch = g_classEpoch.load(std::memory_order_relaxed);
        std::vector<const ClassSymbol*> outdated;
        for (const ClassSymbol* at = &cls; at != nullptr && at->m_instanceEpoch != epoch; at = at->m_pBase) {
            if (at->m_isBuilding) break;
            outdated.push_back(at);
        }
        for (auto at = outdated.rbegin(); at != outdated.rend(); ++at) {
            const BuildingMark mark(**at);
            Build(**at, level);
            (*at)->m_instanceEpoch = epoch;
        }
    }

 private:
    /// A class that is being built is not built again for its own members; also if memory runs out meanwhile.
    class BuildingMark {
     public:
        explicit BuildingMark(const ClassSymbol& cls) : m_cls(cls) { cls.m_isBuilding = true; }
        ~BuildingMark() { m_cls.m_isBuilding = false; }
        BuildingMark(const BuildingMark&) = delete;
        BuildingMark& operator=(const BuildingMark&) = delete;

     private:
        const ClassSymbol& m_cls;
    };

    static void Build(const ClassSymbol& cls, std::uint32_t level) {
        const ClassSymbol* base = cls.m_pBase;
        const bool hasBase = base != nullptr && base->m_pInstance != nullptr;
        Value object = hasBase ? *base->m_pInstance : Value::OfList(0);
        cls.m_weight = hasBase ? base->m_weight : 0;
        cls.m_depth = hasBase ? base->m_depth : 1;
        for (const DeclarationStatement* member : cls.m_members)
            AddMember(cls, *member->GetSymbol(), level, object);
        if (cls.m_pInstance == nullptr) cls.m_pInstance = new Value;
        *cls.m_pInstance = std::move(object);
    }

    static void AddMember(const ClassSymbol& cls, const ScriptSymbol& symbol, std::uint32_t level,
                          Value& object) {
        Value value = MemberValue(cls, symbol, level);
        const STRID name = SymbolAccess::MemberName(symbol);
        if (AppendItem(object, std::move(value), name) != ListLimit::None) AppendItem(object, Value(), name);
    }

    /// The member's value, its weight and depth without limits added to the class's.
    static Value MemberValue(const ClassSymbol& cls, const ScriptSymbol& symbol, std::uint32_t level) {
        const ClassSymbol* type = symbol.GetClass();
        if (type == nullptr) {
            const Value& declared = SymbolAccess::InitialValue(symbol);
            const bool isList = declared.IsList();
            Count(cls, 1 + (isList ? declared.List()->weight : 0), isList ? declared.List()->depth : 0);
            return declared;
        }
        if (type->m_isBuilding || level >= kMaxListDepth) {
            Count(cls, 1, level >= kMaxListDepth ? kMaxListDepth : 0);
            return Value();
        }
        Update(*type, level + 1);
        const auto size = static_cast<std::uint64_t>(symbol.GetArraySize());
        if (size == 0) {
            Count(cls, 1 + type->m_weight, type->m_depth);
            return *type->m_pInstance;
        }
        const bool isBeyond = type->m_weight >= kCountedWeight / (size + 1);
        Count(cls, isBeyond ? kCountedWeight : 1 + size * (1 + type->m_weight), 1 + type->m_depth);
        Value array;
        RepeatItem(size, *type->m_pInstance, array);
        return array;
    }

    static void Count(const ClassSymbol& cls, std::uint64_t weight, std::uint32_t depth) {
        cls.m_weight = std::min(kCountedWeight, cls.m_weight + weight);
        cls.m_depth = std::min(kCountedDepth, std::max(cls.m_depth, 1 + depth));
    }
};

const Value& SymbolAccess::Instance(const ClassSymbol& cls) {
    InstanceBuilder::Update(cls);
    static const Value none;
    return cls.m_pInstance != nullptr ? *cls.m_pInstance : none;
}

std::uint64_t ClassSymbol::GetInstanceWeight() const {
    InstanceBuilder::Update(*this);
    return m_weight;
}

std::uint32_t ClassSymbol::GetInstanceDepth() const {
    InstanceBuilder::Update(*this);
    return m_depth;
}

// ---------------------------------------------------------------------------------------------------------
// ClassSymbol

ClassSymbol::ClassSymbol(STRID name, ClassSymbol* base)
    : ScriptSymbol(name, SymbolKind::Class), m_pBase(base) {
    SetStart(Value::OfList(0));
}

ClassSymbol::~ClassSymbol() {
    delete m_pInstance;
    for (DeclarationStatement* member : m_members)
        delete member;
    for (FuncSymbol* function : m_functions)
        delete function;
}

std::size_t ClassSymbol::SizeOf() const {
    return sizeof(*this);
}

const char* ClassSymbol::GetClassName() const {
    return "ClassSymbol";
}

const char* ClassSymbol::GetBaseClassName() const {
    return "ScriptSymbol";
}

void ClassSymbol::Dump(DumpFormatter& out) const {
    out += "Class symbol ";
    out += GetName();
    if (m_pBase != nullptr) {
        out += " inherits ";
        out += m_pBase->GetName();
    }
    out.Push();
    GetValue().Dump(out, false);
    out.Pop();
}

bool ClassSymbol::AddMember(const char* where, CScriptMsgStream* messages, DeclarationStatement* member) {
    if (member == nullptr || member->GetSymbol() == nullptr) return false;
    ScriptSymbol& symbol = *member->GetSymbol();
    for (const DeclarationStatement* present : m_members) {
        if (present->GetSymbol()->GetName() != symbol.GetName()) continue;
        if (messages != nullptr)
            messages->Error(where, "Member '%s' already defined in class '%s'", StrPtr(symbol.GetName()),
                            StrPtr(GetName()));
        return false;
    }
    // The value first: if memory runs out, the member is still the caller's.
    SymbolAccess::AppendMemberValue(*this, symbol);
    AddOrThrow(m_members, member);
    return true;
}

void SymbolAccess::AppendMemberValue(ClassSymbol& cls, ScriptSymbol& member) {
    member.m_isMember = true;
    // An object made before is out of date, and so are those of the classes that build on this one.
    if (cls.m_instanceEpoch != 0) NoteClassChange();
    const Value value = InitialValue(member);
    const STRID name = MemberName(member);
    Value* bound = Table(cls) == nullptr ? nullptr : Table(cls)->ValueOf(cls);
    if (bound != nullptr && bound->IsList()) AppendItem(*bound, value, name);
    static_cast<void>(InitialValue(cls));
    if (cls.m_pStart->IsList()) AppendItem(*cls.m_pStart, value, name);
    cls.m_hasInitial = false;
}

bool ClassSymbol::AddFunction(const char* where, CScriptMsgStream* messages, FuncSymbol* function) {
    if (function == nullptr) return false;
    for (const FuncSymbol* present : m_functions) {
        if (present->GetName() != function->GetName()) continue;
        if (messages != nullptr)
            messages->Error(where, "Function '%s' already defined in class '%s'", StrPtr(function->GetName()),
                            StrPtr(GetName()));
        return false;
    }
    AddOrThrow(m_functions, function);
    return true;
}

TIter<DeclarationStatement*> ClassSymbol::GetFirstMember() const {
    return TIter<DeclarationStatement*>(m_members);
}

TIter<FuncSymbol*> ClassSymbol::GetFirstFunction() const {
    return TIter<FuncSymbol*>(m_functions);
}

}  // namespace brenta
