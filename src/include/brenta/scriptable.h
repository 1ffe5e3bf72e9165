/// @file
/// CCoreScriptable, the one door through which scripts reach host objects, the registry of the classes that
/// scripts can create, and the standard library CStdScriptLib.
///
/// Derive from CCoreScriptable to let scripts read and set properties of an object and call its methods:
///
///     class Lamp : public CCoreScriptable {
///         bool ScriptAction(IOB& request) override {
///             if (request.name != StrId("lit")) return false;
///             if (request.action == kGet) *request.result = m_lit;
///             if (request.action == kSet) m_lit = request.arguments->GetHead()->GetFloat() != 0;
///             return request.action == kGet || request.action == kSet;
///         }
///         ...                       // SizeOf, GetClassName, GetBaseClassName
///     };
///     environment.Add(Var(&lamp, StrId("lamp")));           // scripts: Env.lamp.lit = true;
///     RegisterScriptableClass("Lamp", &CreateLamp);         // scripts: var l as Lamp;
///
/// What a script writes, and the request that arrives:
///
///     obj.name                 action kGet, the name, no arguments; the result becomes the value
///     obj[i]                   action kGet, no name, one argument: the index
///     obj.name = v             action kSet, the name, one argument: the new value
///     obj.name += v            action kGet, then kSet with the combined value
///     obj.name(a, b)           action kCall, the name, the arguments in order; the result becomes the value
///     reflect(obj)             action kDescribe; the result, a value that describes the object, is printed
///
/// Arguments are what a script has written: any number of them, of any kind. Look at the kind first: GetInt
/// and GetBool of null are a broken contract (brenta/var.h), which would end the host; GetFloat and GetString
/// take null as 0 and "". A reference may hold an object of any class, so cast it with dynamic_cast.
///
/// Lifetime. Values hold bare pointers: an object must live as long as any script can reach it. An object
/// that a script creates belongs to nobody at first, and no engine ever deletes it; the library keeps a list
/// of such objects and deletes what is left when it is unloaded. Whoever takes one over calls AdoptScriptable
/// and then deletes it as its own; one that is deleted leaves the list by itself.
///
/// Threads. Requests arrive on the thread that runs the script. An object is used by one thread at a time.
#pragma once

#include <cstddef>

#include "brenta/containers.h"
#include "brenta/detail/class_name.h"
#include "brenta/export.h"
#include "brenta/heap.h"
#include "brenta/names.h"
#include "brenta/var.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Objects

/// Base of everything that scripts can reach. Has no data; copyable. Made with `new`, objects live on the
/// library's heap.
class BRENTA_API CCoreScriptable {
 public:
    /// Action codes of a request.
    enum Action : int {
        kGet = 1,       ///< read a property, or an element
        kSet = 2,       ///< set a property
        kCall = 3,      ///< call a method
        kDescribe = 4,  ///< describe yourself
    };

    /// The request record. Everything it points to is the caller's and good during the request only.
    struct IOB {
        TOrderedList<Var>* context = nullptr;  ///< the calling engine's value list
        int action = 0;                        ///< an Action; more may come
        STRID name = kNoName;                  ///< property or method; none for elements and descriptions
        bool flag = false;                     ///< always false when an engine asks
        TOrderedList<Var>* arguments =
            nullptr;            ///< kCall: the arguments; kSet: the value; element: the index
        Var* result = nullptr;  ///< where the answer goes; null before
    };

    CCoreScriptable() = default;
    CCoreScriptable(const CCoreScriptable&) = default;
    CCoreScriptable& operator=(const CCoreScriptable&) = default;

    /// Answers a request. False refuses it, and the script's expression fails (a call with a message, the
    /// others silently: report through the engine's message stream if the author should know why). The engine
    /// takes the result in either case. The base refuses everything.
    ///
    /// During a request the object may run other functions of the engine; see CCoreScriptEngine.
    virtual bool ScriptAction(IOB& request);

    /// The size of the object in bytes, the name of its class, the name of its base class ("CCoreScriptable"
    /// for a direct child).
    virtual std::size_t SizeOf() const = 0;
    virtual const char* GetClassName() const = 0;
    virtual const char* GetBaseClassName() const = 0;

    /// Takes the object off the library's list if a script created it.
    virtual ~CCoreScriptable();

    BRENTA_HEAP_OPERATORS
};

/// Tells the library that the caller owns an object from now on, which a script may have created: it will not
/// be deleted when the library is unloaded. Null and other objects are fine. Any thread.
BRENTA_API void AdoptScriptable(const CCoreScriptable* object);

// ---------------------------------------------------------------------------------------------------------
// Classes

/// Makes a new object, or null; called with no library lock held.
using ScriptableCreator = CCoreScriptable* (*)();

/// Makes a class creatable from scripts: `var x as Name;` calls `create` each time it is executed. Nothing
/// checks for duplicates; the latest registration of a name wins. `create` (null registers nothing) must stay
/// callable until the library is unloaded, and so must the destructors of its objects.
///
/// Register before scripts run: what an engine has parsed may or may not see a later change.
BRENTA_API void RegisterScriptableClass(const char* name, ScriptableCreator create);

/// Creates an object of a registered class, which the caller owns; null when the name is unknown or the
/// creator has failed. Any thread.
BRENTA_API CCoreScriptable* CreateScriptableObject(STRID className);

/// Whether a class of this name is registered. Any thread.
BRENTA_API bool IsScriptableClass(STRID className);

/// Base of static objects whose constructor registers a class; the library has one for each of its own.
class BRENTA_API CScriptFactoryBase {
 public:
    CScriptFactoryBase() = default;
    CScriptFactoryBase(const CScriptFactoryBase&) = delete;
    CScriptFactoryBase& operator=(const CScriptFactoryBase&) = delete;
    virtual ~CScriptFactoryBase();
};

// ---------------------------------------------------------------------------------------------------------
// The standard library

/// The class "CStdScriptLib", in every engine's environment as Env.StdLib. Its methods show a text in the
/// host's message box (brenta/host.h):
///
///     Prompt(msg)             an OK button; no result
///     PromptYesNo(msg)        Yes and No; true if Yes was pressed
///
/// An argument that is no string, or none at all, shows the empty text. The thread must be one that may open
/// a message box. There are no properties.
class BRENTA_API CStdScriptLib : public CCoreScriptable {
 public:
    bool ScriptAction(IOB& request) override;
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~CStdScriptLib() override;
};

/// A new CStdScriptLib, the caller's; null when the heap is exhausted.
BRENTA_API CCoreScriptable* CreateCStdScriptLibObject();

}  // namespace brenta
