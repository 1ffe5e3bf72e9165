/// @file
/// The few types of the application framework that the library's interfaces name, with just the operations
/// that are used: texts, objects with run-time class, exceptions, the chain of loaded modules, message boxes,
/// windows that take messages, targets of commands, semaphores, progress.
/// They are the same on every platform.
///
/// Use them where an interface asks for them; for everything else CoreString (brenta/string.h) and the
/// containers (brenta/containers.h) do more.
///
///     CString name("R17");
///     name += " is not placed";
///     AfxMessageBox(name, MB_OK, 0);
///     if (AfxMessageBox("Place it now?", MB_YESNO, 0) == IDYES) Place();
///
/// CString owns its text and throws std::bad_alloc when there is no memory for it; the others own nothing.
/// One object is used by one thread at a time; AfxMessageBox may be called from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "brenta/export.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Types and answers of message boxes

// On Windows these names are those of <windows.h>. Where that header comes first, its macros stand for them.

#ifndef MB_OK

inline constexpr unsigned int MB_OK = 0;     ///< one button, "OK"
inline constexpr unsigned int MB_YESNO = 4;  ///< two buttons, "Yes" and "No"

inline constexpr unsigned int MB_ICONWARNING = 0x30;  ///< added to either: with the sign for a warning
inline constexpr unsigned int MB_TYPEMASK = 0xF;      ///< what tells the buttons of a type

#endif
#ifndef IDOK

inline constexpr int IDOK = 1;   ///< answer: "OK"
inline constexpr int IDYES = 6;  ///< answer: "Yes"
inline constexpr int IDNO = 7;   ///< answer: "No"

#endif

/// Shows `text` (null counts as "") through the host's message service (brenta/host.h) and returns the
/// answer. `help` is a help context and is not used.
BRENTA_API int AfxMessageBox(const char* text, unsigned int type = MB_OK, unsigned int help = 0);

/// The same with the host's string resource `id`; a resource that does not exist shows an empty text.
BRENTA_API int AfxMessageBox(unsigned int id, unsigned int type = MB_OK, unsigned int help = 0);

// ---------------------------------------------------------------------------------------------------------
// CString

/// An owned 8-bit text, always terminated. Its bytes may include NUL when it is made from a counted text;
/// GetLength counts them all, conversion to `const char*` shows the part before the first.
class BRENTA_API CString {
 public:
    CString() = default;
    /// A copy of a terminated text; null counts as "".
    CString(const char* text);
    /// A copy of exactly `length` bytes; null or a length below 1 gives the empty text.
    CString(const char* bytes, int length);
    CString& operator=(const char* text);

    /// The text, valid until the next change of the string.
    operator const char*() const { return m_text.c_str(); }
    /// Length in bytes.
    int GetLength() const { return static_cast<int>(m_text.size()); }
    bool IsEmpty() const { return m_text.empty(); }
    /// Makes the text empty.
    void Empty() { m_text.clear(); }
    /// The byte at `index`; 0 outside the text.
    char GetAt(int index) const;
    /// Replaces the byte at `index`; outside the text nothing happens.
    void SetAt(int index, char c);

    CString& operator+=(const CString& text);
    CString& operator+=(const char* text);
    CString& operator+=(char c);

    /// Equal length and equal bytes.
    bool operator==(const CString& other) const { return m_text == other.m_text; }
    /// Equal to a terminated text; null counts as "".
    bool operator==(const char* text) const;

 private:
    std::string m_text;
};

// ---------------------------------------------------------------------------------------------------------
// CObject and run-time classes

class CArchive;  // stands in the signature of Serialize only

/// Describes a class to the run-time; one static record per class.
struct CRuntimeClass {
    const char* name;           ///< the class's name
    std::size_t size;           ///< size of its objects in bytes
    const CRuntimeClass* base;  ///< null at CObject
};

/// Root of the framework's classes. Virtual slots: run-time class, destructor, serialize.
class BRENTA_API CObject {
 public:
    CObject() = default;
    CObject(const CObject&) = default;
    CObject& operator=(const CObject&) = default;

    virtual const CRuntimeClass* GetRuntimeClass() const;
    virtual ~CObject();
    /// Does nothing here.
    virtual void Serialize(CArchive& archive);

    /// Whether the object's run-time class is `type` or derives from it; false for null.
    bool IsKindOf(const CRuntimeClass* type) const;

    static const CRuntimeClass kRuntimeClass;
};

/// Base of the framework's exceptions. Its virtual slots follow CObject's.
class BRENTA_API CException : public CObject {
 public:
    const CRuntimeClass* GetRuntimeClass() const override;

    /// The base knows no message: writes "" into `buffer` (if there is one and `size` is not 0) and 0 into
    /// `helpContext` (if given), and returns false.
    virtual bool GetErrorMessage(char* buffer, unsigned int size, unsigned int* helpContext = nullptr);
    virtual bool GetErrorMessage(char* buffer, unsigned int size, unsigned int* helpContext = nullptr) const;

    /// Shows the error message, or the string resource `messageId` if there is none, and returns the answer.
    virtual int ReportError(unsigned int type = MB_OK, unsigned int messageId = 0);

    static const CRuntimeClass kRuntimeClass;
};

// ---------------------------------------------------------------------------------------------------------
// Messages and commands

/// What takes messages. The library sends some, progress for one, to a window that the application hands it:
/// derive from this, and pass the address.
class BRENTA_API CMessageWindow {
 public:
    CMessageWindow() = default;
    CMessageWindow(const CMessageWindow&) = default;
    CMessageWindow& operator=(const CMessageWindow&) = default;
    virtual ~CMessageWindow();

    /// Handles a message on the thread that sends it; what the parameters and the result mean is the
    /// message's affair. A message that means nothing to the window is answered with 0.
    virtual std::intptr_t OnMessage(unsigned int message, std::uintptr_t wParam, std::intptr_t lParam) = 0;
};

/// A window, or null for none. Whoever holds one owns nothing.
using HWND = CMessageWindow*;

/// Sends a message and waits for the answer; 0 from a null window.
BRENTA_API std::intptr_t SendMessageA(HWND window, unsigned int message, std::uintptr_t wParam,
                                      std::intptr_t lParam);

struct AFX_CMDHANDLERINFO;  // stands in the signature of OnCmdMsg only; the library passes null

/// What takes commands. Its virtual slot follows CObject's.
class BRENTA_API CCmdTarget : public CObject {
 public:
    const CRuntimeClass* GetRuntimeClass() const override;

    /// Takes command `id` with a notification code, and what belongs to the command; returns whether it was
    /// handled. The base handles none.
    virtual bool OnCmdMsg(unsigned int id, int code, void* extra, AFX_CMDHANDLERINFO* handlerInfo);

    static const CRuntimeClass kRuntimeClass;
};

// ---------------------------------------------------------------------------------------------------------
// Waiting and progress

/// A counting semaphore among the threads of one process. Any thread may use it.
class BRENTA_API CSemaphore : public CObject {
 public:
    /// `initial` of at most `maximum` passes are there at first.
    explicit CSemaphore(long initial = 1, long maximum = 1);
    ~CSemaphore() override;
    CSemaphore(const CSemaphore&) = delete;
    CSemaphore& operator=(const CSemaphore&) = delete;

    /// Takes a pass, waiting at most that many milliseconds, or without limit; false if there was none.
    bool Lock(unsigned long milliseconds = 0xFFFFFFFF);
    /// Gives a pass back; false if all are there.
    bool Unlock();

 private:
    struct State;
    State* m_pState;
};

/// Shows how far a long operation has come. The base shows nothing: derive from it. Called on the thread that
/// works.
class BRENTA_API CProgressCtrl : public CObject {
 public:
    virtual void SetRange32(int lower, int upper);
    /// Returns the position before.
    virtual int SetPos(int position);
};

// ---------------------------------------------------------------------------------------------------------
// Modules

/// The record that a library keeps about itself while it is loaded.
struct CExtensionModule {
    bool initialised = false;
};

/// Prepares the record of a library that is being loaded. False if it is in use already.
BRENTA_API bool AfxInitExtensionModule(CExtensionModule& module);

/// Ends the record and deletes every link object that was made for it.
BRENTA_API void AfxTermExtensionModule(CExtensionModule& module);

/// One link of the chain of modules in which resources and run-time classes are looked up. Constructing the
/// object puts it at the front of the chain; destroying it takes it out. The chain itself is safe from any
/// thread.
class BRENTA_API CDynLinkLibrary : public CObject {
 public:
    explicit CDynLinkLibrary(CExtensionModule& module);
    CDynLinkLibrary(const CDynLinkLibrary&) = delete;
    CDynLinkLibrary& operator=(const CDynLinkLibrary&) = delete;
    ~CDynLinkLibrary() override;

    /// First link of the chain; null when it is empty.
    static const CDynLinkLibrary* GetFirst();
    /// The link behind this one; null at the end.
    const CDynLinkLibrary* GetNext() const { return m_pNext; }
    /// The module that the link stands for.
    const CExtensionModule& GetModule() const { return *m_pModule; }

 private:
    CExtensionModule* m_pModule;
    CDynLinkLibrary* m_pNext;
};

}  // namespace brenta
