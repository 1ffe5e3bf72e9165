/// @file
/// CCoreScriptable, the one door through which scripts reach host objects, and the registry of creatable classes.
#pragma once

#include <cstddef>

#include "brenta/containers.h"
#include "brenta/export.h"
#include "brenta/heap.h"
#include "brenta/names.h"
#include "brenta/var.h"

namespace brenta {

class BRENTA_API CCoreScriptable {
   public:
    /// Action codes of a request.
    enum Action : int { kGet = 1, kSet = 2, kCall = 3, kDescribe = 4 };

    /// The request record.
    struct IOB {
        TOrderedList<Var>* context = nullptr;
        int action = 0;
        STRID name = kNoName;
        bool flag = false;
        TOrderedList<Var>* arguments = nullptr;
        Var* result = nullptr;
    };

    CCoreScriptable() = default;
    CCoreScriptable(const CCoreScriptable&) = default;
    CCoreScriptable& operator=(const CCoreScriptable&) = default;

    virtual bool ScriptAction(IOB& request);
    virtual std::size_t SizeOf() const = 0;
    virtual const char* GetClassName() const = 0;
    virtual const char* GetBaseClassName() const = 0;
    virtual ~CCoreScriptable();

    BRENTA_HEAP_OPERATORS
};

using ScriptableCreator = CCoreScriptable* (*)();

/// Makes a class creatable from scripts (`var x as Name;`). The latest registration of a name wins.
BRENTA_API void RegisterScriptableClass(const char* name, ScriptableCreator create);

/// Creates an object of a registered class; null when the name is unknown. The caller owns the object.
BRENTA_API CCoreScriptable* CreateScriptableObject(STRID className);

/// Base of the static objects that register the library's own classes.
class BRENTA_API CScriptFactoryBase {
   public:
    virtual ~CScriptFactoryBase();
};

/// The standard library, `Env.StdLib` in every engine.
class BRENTA_API CStdScriptLib : public CCoreScriptable {
   public:
    bool ScriptAction(IOB& request) override;
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~CStdScriptLib() override;
};

BRENTA_API CCoreScriptable* CreateCStdScriptLibObject();

}  // namespace brenta
