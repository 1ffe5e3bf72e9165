// What the files of the MSXML backend share: owners of what COM hands out, and texts on their way there and
// back. Only *_msxml.cpp may include this header, and behind all others: the system's headers define macros
// that rename what they meet.
//
// MSXML's interfaces are those of the global namespace, and some of the library's own have their names:
// "::IXMLDOMNode" is MSXML's, "IXMLDOMNode" the library's.
#pragma once

#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "brenta/xml.h"
#include "brenta/xml_document.h"
#include "xml/platform_document.h"
#include "xml/sax_source.h"

#define WIN32_LEAN_AND_MEAN
#include <msxml2.h>
#include <objbase.h>
#include <oleauto.h>

namespace brenta {

/// Holds one count of an interface, or null.
template <class T>
class ComPointer {
 public:
    ComPointer() = default;
    ComPointer(ComPointer&& other) noexcept : m_pObject(std::exchange(other.m_pObject, nullptr)) {}
    /// From an interface that has this one's functions.
    template <class Derived>
    ComPointer(ComPointer<Derived>&& other) : m_pObject(other.Detach()) {}
    ComPointer& operator=(ComPointer&& other) noexcept {
        std::swap(m_pObject, other.m_pObject);
        return *this;
    }
    ~ComPointer() { Reset(); }

    T* Get() const { return m_pObject; }
    T* operator->() const { return m_pObject; }
    T& operator*() const { return *m_pObject; }
    explicit operator bool() const { return m_pObject != nullptr; }

    /// Where a function stores an interface that it hands out; lets go of the one before.
    T** Out() {
        Reset();
        return &m_pObject;
    }
    /// The interface, of which the caller holds the count from now on.
    T* Detach() { return std::exchange(m_pObject, nullptr); }

 private:
    void Reset() {
        if (T* const object = std::exchange(m_pObject, nullptr)) object->Release();
    }

    T* m_pObject = nullptr;
};

/// Makes an object of a class that lives in this process, on a thread that is made ready for COM before: it
/// stays so, as nothing tells when its last object has gone. Null if that fails.
template <class T>
ComPointer<T> MakeComObject(const CLSID& classId, const IID& interfaceId) {
    static_cast<void>(CoInitialize(nullptr));
    ComPointer<T> object;
    void* made = nullptr;
    if (CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, interfaceId, &made) == S_OK)
        *object.Out() = static_cast<T*>(made);
    return object;
}

// ---------------------------------------------------------------------------------------------------------
// Texts. The library's are in the process's code page, COM's in UTF-16. What the code page lacks becomes the
// letter that comes closest to it, or "?". All of these throw std::bad_alloc.

std::wstring ToWide(std::string_view text);

/// Appends a text to another.
void AppendNarrow(std::wstring_view text, std::string& out);

/// A text that COM hands out.
class ComText {
 public:
    ComText() = default;
    ComText(const ComText&) = delete;
    ComText& operator=(const ComText&) = delete;
    ~ComText() { SysFreeString(m_text); }

    /// For one function.
    BSTR* Out() { return &m_text; }
    bool IsNull() const { return m_text == nullptr; }
    std::wstring_view Wide() const;
    std::string Narrow() const;

 private:
    BSTR m_text = nullptr;
};

/// A text that is handed to COM, as itself or as a value.
class ComArgument {
 public:
    explicit ComArgument(std::wstring_view text);
    ComArgument(const ComArgument&) = delete;
    ComArgument& operator=(const ComArgument&) = delete;
    ~ComArgument() { VariantClear(&m_value); }

    BSTR Text() const { return m_value.bstrVal; }
    const VARIANT& Value() const { return m_value; }

 private:
    VARIANT m_value;
};

/// A value that COM hands out.
class ComValue {
 public:
    ComValue() { VariantInit(&m_value); }
    ComValue(const ComValue&) = delete;
    ComValue& operator=(const ComValue&) = delete;
    ~ComValue() { VariantClear(&m_value); }

    /// For one function.
    VARIANT* Out() { return &m_value; }
    /// A text as it is, anything else in the form of a text; "" if it has none.
    std::wstring_view Text();

 private:
    VARIANT m_value;
};

inline VARIANT ComFalse() {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BOOL;
    value.boolVal = VARIANT_FALSE;
    return value;
}

inline VARIANT ComNumber(int number) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_I4;
    value.lVal = number;
    return value;
}

// ---------------------------------------------------------------------------------------------------------
// Files (com_msxml.cpp)

/// Whether a name may be handed to MSXML, which fetches addresses from the network: a regular file, an
/// address of one, or nothing that is there, which MSXML has its own words for.
bool IsLocalFile(const char* path);

/// The name in the form in which MSXML loads from it and takes each of its characters for itself.
std::wstring FileName(const char* path);

/// A path without the mark by which the system is told to take it as it is, and which MSXML does not know.
/// MSXML saves to paths, not to addresses.
std::wstring PlainPath(std::wstring path);

// ---------------------------------------------------------------------------------------------------------
// Nodes (platform_nodes_msxml.cpp)

/// The type of a node; NODE_INVALID if it does not tell.
::DOMNodeType TypeOf(::IXMLDOMNode& node);
ComPointer<::IXMLDOMNode> FirstChild(::IXMLDOMNode& node);
ComPointer<::IXMLDOMNode> NextSibling(::IXMLDOMNode& node);

/// A node for others to hold, with one user; null for null.
IXMLDOMElement* MakeElementNode(ComPointer<::IXMLDOMNode> element);

/// Makes the library's elements of a document's and appends them. May throw std::bad_alloc; then nothing is
/// appended.
void ReadTree(::IXMLDOMDocument& document, TOrderedList<CCoreXmlDomElement*>& out);

// ---------------------------------------------------------------------------------------------------------
// Appending to a document (platform_write_msxml.cpp)

void AppendInstruction(::IXMLDOMDocument& document, std::string_view target, std::string_view data);
void AppendComment(::IXMLDOMDocument& document, std::string_view text);
void AppendElement(::IXMLDOMDocument& document, const CCoreXmlDomElement& element);

}  // namespace brenta
