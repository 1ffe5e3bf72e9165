/// @file
/// The XML tree: documents, elements and attributes; loading, saving and transforming them.
///
/// Every reader of the library (this header's LoadDocument, brenta/xml_readers.h) makes this tree, and
/// scripts drive it. Names, values and texts are interned, so that comparing two of them by STRID is one
/// comparison of addresses. A value that a reader found is interned when it is first asked for by GetValue,
/// GetValueId or the like; PeekValue, numbers, searches and saving leave it as it stands, which is faster and
/// leaves nothing behind.
///
///     CCoreXmlDom library;
///     if (!library.LoadDocument("Resistors.lbr", true)) return;
///     for (auto element = library.GetFirstElement(); element.Get(); element.Next()) {
///         CCoreXmlDomElement* found = (*element.Get())->FindElement("package", "name", "R0402", true);
///         if (found != nullptr) std::puts(found->GetAttributeValue("library", false));
///     }
///
/// Ownership. A document owns its top-level elements, an element its attributes and children; what is added
/// belongs to the tree from then on and is deleted with it. What is removed without being deleted belongs to
/// the caller. An object must sit in one tree only, and never below itself.
///
/// What a document keeps, and what it loses. The tree holds elements, attributes and, where a reader sets it,
/// inner text. Comments, instructions, character data and CDATA of a file are not kept by any reader of XML,
/// and inner text is never written.
///
/// The platform document. Beside its tree a CCoreXmlDom holds a document of the platform's XML service, which
/// loads (LoadDocument without quickLoad, LoadString), saves and transforms. It is separate from the tree:
///
/// - After a platform load it holds what was loaded. SaveDocument, GetString and TransformDocument then put
///   out that content: changes of the tree are not in it. **Call ResetCOMState before you save a tree that
///   was loaded and changed**, or load with quickLoad.
/// - A save, GetString or transform of a built tree adds the tree to the platform document, which takes one
///   root only: a second one puts out the first content again. ResetCOMState starts afresh here, too.
/// - One document, one root: of several top-level elements the first alone is put out.
///
/// On Windows the service is MSXML: messages and offsets, the layout of what is put out, and how deep, how
/// long or how much multiplied by entities a document may be, are its own affair. Each document makes its
/// thread ready for COM (CoInitialize) and is used on that thread; texts are in the process's code page, and
/// letters that this lacks become the closest ones or "?".
///
/// Cost. What a reader makes stands side by side in large blocks of the library's heap: a block is given back
/// when nothing in it is left. So an element that is taken out of a large document and kept for long keeps up
/// to 4 MB with it; a copy (elements copy deeply) does not.
///
/// Depth costs memory only; no operation recurses. Without memory an operation that adds something adds
/// nothing, and those that build a list or walk a tree may throw std::bad_alloc.
///
/// Threads. A document and everything in it is used by one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>

#include "brenta/containers.h"
#include "brenta/detail/class_name.h"
#include "brenta/export.h"
#include "brenta/heap.h"
#include "brenta/names.h"
#include "brenta/scriptable.h"
#include "brenta/string.h"

namespace brenta {

class PlatformDocument;
struct TreeAccess;
class TreeBuilder;
class TreeWrecker;

// ---------------------------------------------------------------------------------------------------------
// Texts that are interned late

/// A text that a reader found, until somebody asks for its identifier; or an identifier. One word.
class BRENTA_API CLateText {
 public:
    explicit CLateText(STRID id) : m_word(id) {}
    /// Copies have the identifier.
    CLateText(const CLateText& other) : m_word(other.GetId()) {}
    CLateText& operator=(const CLateText& other) {
        Set(other.GetId());
        return *this;
    }
    ~CLateText() {
        if (IsPending()) Drop();
    }

    /// Interns the text if it is not yet. When the string table is full, it reads as "" and stays as it is.
    STRID GetId() const { return IsPending() ? Intern() : m_word; }
    /// The text as it stands, valid until the identifier is asked for, or another text set.
    const char* Peek() const;
    void Set(STRID id) {
        if (IsPending()) Drop();
        m_word = id;
    }

 private:
    friend class LateTextWord;

    /// Identifiers are even, or have all bits set.
    bool IsPending() const {
        const auto bits = static_cast<std::uintptr_t>(m_word);
        return (bits & 1) != 0 && bits + 1 != 0;
    }
    STRID Intern() const;
    void Drop() const;

    mutable STRID m_word;  // or a text, an odd number
};

// ---------------------------------------------------------------------------------------------------------
// Attributes

/// A name and a value. Scripts reach both as properties "Name" and "Value", which they can read and set.
class BRENTA_API CCoreXmlDomAttribute : public CCoreScriptable {
 public:
    /// No name and no value: both read as "".
    CCoreXmlDomAttribute();
    CCoreXmlDomAttribute(STRID name, STRID value) : m_name(name), m_value(value) {}
    /// Interns both texts; null counts as "".
    CCoreXmlDomAttribute(const char* name, const char* value);
    CCoreXmlDomAttribute(const CCoreXmlDomAttribute& other);
    CCoreXmlDomAttribute& operator=(const CCoreXmlDomAttribute& other);

    bool ScriptAction(IOB& request) override;
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~CCoreXmlDomAttribute() override;

    /// The texts live as long as the library; never null.
    const char* GetName() const { return StrPtr(m_name); }
    const char* GetValue() const { return StrPtr(GetValueId()); }
    /// The value as it stands, valid until the value is asked for in another way, set or destroyed. A value
    /// that a reader found is not interned by this.
    const char* PeekValue() const { return m_value.Peek(); }
    STRID GetNameId() const { return m_name; }
    STRID GetValueId() const { return m_value.GetId(); }
    void SetName(const char* name) { m_name = StrId(name); }
    void SetName(STRID name) { m_name = name; }
    void SetValue(const char* value) { SetValue(StrId(value)); }
    void SetValue(STRID value) { m_value.Set(value); }

 private:
    friend struct TreeAccess;

    STRID m_name;
    CLateText m_value;
};

// ---------------------------------------------------------------------------------------------------------
// Elements

/// An element: a tag, attributes and child elements in document order, and an inner text.
///
/// For scripts: the properties "Name" and "InnerText" (read and set), "Parent", "ChildList" and "AttrList"
/// (read); the methods FindElement(elemName [, attrName, attrValue, bRecurse]), AddChild(pElem),
/// CreateChild(elemName), DeleteChild(pElem), RemoveChild(pElem), AddAttribute(pAttr),
/// AddAttribute(attrName, attrValue), DeleteAttribute(attrNameOrRef), DeleteAttributes() and
/// GetAttributeValue(attrName).
class BRENTA_API CCoreXmlDomElement : public CCoreScriptable {
 public:
    /// An element without a tag, which reads as "".
    CCoreXmlDomElement();
    explicit CCoreXmlDomElement(STRID tag)
        : m_tag(tag), m_innerText(kNoName), m_pParent(nullptr), m_flag(false), m_unseenAttributes(0) {}
    explicit CCoreXmlDomElement(const char* tag);
    /// A deep copy: tag, text, flag, attributes and children. The copy has no parent.
    CCoreXmlDomElement(const CCoreXmlDomElement& other);
    /// Deletes this element's attributes and children and copies the other's deeply; the parent stays. The
    /// other may be this element, or one below it.
    CCoreXmlDomElement& operator=(const CCoreXmlDomElement& other);

    bool ScriptAction(IOB& request) override;
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    /// Deletes the attributes and the children with all that is below them.
    ~CCoreXmlDomElement() override;

    const char* GetTagName() const { return StrPtr(m_tag); }
    STRID GetTagNameId() const { return m_tag; }
    void SetTagName(STRID tag) { m_tag = tag; }
    /// The text that was set; "" and kNoName if none was. The readers of XML set none.
    const char* GetInnerText() const { return StrPtr(GetInnerTextId()); }
    STRID GetInnerTextId() const { return m_innerText.GetId(); }
    /// The text as it stands; see CCoreXmlDomAttribute::PeekValue.
    const char* PeekInnerText() const { return m_innerText.Peek(); }
    void SetInnerText(const char* text) { SetInnerText(StrId(text)); }
    void SetInnerText(STRID text) { m_innerText.Set(text); }
    /// The element that this one was last added to, also after RemoveChildElement; null at the top level.
    CCoreXmlDomElement* GetParent() const { return m_pParent; }
    /// A mark for the caller's use: false at first, and the library never looks at it.
    bool GetFlag() const { return m_flag; }
    void SetFlag(bool flag) { m_flag = flag; }

    // ------------------------------------------------------------------------------------------------------
    // Children

    /// Number of children, by walking.
    int GetChildElementCount() const { return m_children.GetCount(); }
    /// Steps through the children in order. Adding at the end keeps the iterator valid; see TIter.
    TIter<CCoreXmlDomElement*> GetFirstChild() const { return TIter(m_children); }

    /// Appends an element, which this one owns from then on, and becomes its parent. Null and the element
    /// itself are ignored.
    void AddChildElement(CCoreXmlDomElement* child);
    /// Appends a new element and returns it; null if there is no memory.
    CCoreXmlDomElement* CreateChildElement(STRID tag);
    CCoreXmlDomElement* CreateChildElement(const char* tag);
    /// Takes a child out; it belongs to the caller then and keeps naming this element as its parent. One
    /// that is no child is ignored. Walks the children.
    void RemoveChildElement(CCoreXmlDomElement* child);
    /// Takes a child out and deletes it; one that is no child is ignored.
    void DeleteChildElement(CCoreXmlDomElement* child);
    /// Deletes all children from the last to the first, each after what is below it. (Elements of a reader
    /// without children may go before; only a host's own class among them could tell.)
    void DeleteChildren();

    // ------------------------------------------------------------------------------------------------------
    // Attributes. Where several have one name, which only AddAttribute of an object and the platform's
    // loader can bring about, the first counts.

    /// Steps through the attributes in order.
    TIter<CCoreXmlDomAttribute*> GetFirstAttribute() const {
        m_unseenAttributes = kSeen;
        return TIter(m_attributes);
    }

    /// Sets the value of the attribute with this name, or appends one.
    void AddAttribute(STRID name, STRID value);
    void AddAttribute(const char* name, const char* value);
    /// The number in decimal.
    void AddAttribute(const char* name, int value);
    /// Appends an attribute as it is, which this element owns from then on. Null is ignored.
    void AddAttribute(CCoreXmlDomAttribute* attribute);
    /// Takes an attribute out without deleting it; it belongs to the caller then. The forms by name drop the
    /// only pointer to it: keep your own, or use DeleteAttributes. One that is not there is ignored.
    void DeleteAttribute(CCoreXmlDomAttribute* attribute);
    void DeleteAttribute(STRID name);
    void DeleteAttribute(const char* name);
    /// Deletes every attribute.
    void DeleteAttributes();

    /// The value of an attribute; "" or kNoName if there is none of that name. By text the letters A to Z of
    /// the name match in any case if ignoreCase is set. A null text matches nothing.
    const char* GetAttributeValue(STRID name) const;
    STRID GetAttributeValueId(STRID name) const;
    const char* GetAttributeValue(const char* name, bool ignoreCase) const;
    /// The integer at the start of the value, limited to the range of an int; 0 if there is none.
    int GetIntAttributeValue(STRID name) const;
    int GetIntAttributeValue(const char* name, bool ignoreCase) const;
    /// Whether the value is "1", "true" or "True", exactly.
    bool GetBoolAttributeValue(STRID name) const;
    bool GetBoolAttributeValue(const char* name, bool ignoreCase) const;

    // ------------------------------------------------------------------------------------------------------
    // Searches. The result stays the tree's; null if nothing matches. Tags match exactly.

    /// The first child with this tag; with `recurse` the first element below this one, a child's own
    /// descendants coming before its next sibling.
    CCoreXmlDomElement* FindElement(STRID tag, bool recurse);
    CCoreXmlDomElement* FindElement(const char* tag, bool recurse);

    /// The same for a tag that has a certain attribute: present, if `attrValue` is null or "", or else with
    /// this value, the letters A to Z in any case. The element itself is looked at first, then all children,
    /// and only then, with `recurse`, what is below each child in turn. With a `const char*` tag the
    /// attribute's name, too, matches in any case.
    CCoreXmlDomElement* FindElement(STRID tag, STRID attrName, const char* attrValue, bool recurse);
    CCoreXmlDomElement* FindElement(const char* tag, const char* attrName, const char* attrValue,
                                    bool recurse);

    /// Appends every child with this tag to `out`; with `recurse` every element below this one, in document
    /// order. What is in `out` stays.
    void FindAllElements(STRID tag, TOrderedList<CCoreXmlDomElement*>& out, bool recurse);

 private:
    friend struct TreeAccess;
    friend class TreeBuilder;
    friend class TreeWrecker;

    static constexpr std::uint32_t kSeen = ~std::uint32_t{0};

    void CopyContent(const CCoreXmlDomElement& other);
    void Append(CCoreXmlDomAttribute* attribute);

    STRID m_tag;
    CLateText m_innerText;
    TOrderedList<CCoreXmlDomElement*> m_children;
    TOrderedList<CCoreXmlDomAttribute*> m_attributes;
    CCoreXmlDomElement* m_pParent;
    bool m_flag;
    /// How many attributes a reader made of which nobody outside has got hold of any; kSeen otherwise.
    mutable std::uint32_t m_unseenAttributes;
};

// ---------------------------------------------------------------------------------------------------------
// Documents

// <windows.h> has a macro of the name of one of the operations.
#pragma push_macro("LoadString")
#undef LoadString

/// A document: top-level elements, and the platform document described at the head of this file.
///
/// For scripts: the property "ElementList" (read); the methods AddElement(pElem), CreateElement(elemName),
/// FindElement(elemName [, attrName, attrValue, bRecurse]), LoadDocument(xmlName, bQuickLoad),
/// SaveDocument(xmlName [, schemaName [, xslName]]), TransformDocument(xslName) and LoadString(strData).
class BRENTA_API CCoreXmlDom : public CCoreScriptable {
 public:
    /// An empty document. Where the platform has no XML service, every load, save and transform is false, and
    /// the tree works all the same.
    CCoreXmlDom();
    /// A deep copy of the elements, beside a fresh platform document.
    CCoreXmlDom(const CCoreXmlDom& other);
    /// Deletes this document's elements and copies the other's deeply. The platform document, the parse error
    /// and what was loaded into them stay this document's own.
    CCoreXmlDom& operator=(const CCoreXmlDom& other);

    bool ScriptAction(IOB& request) override;
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    /// Deletes the elements.
    ~CCoreXmlDom() override;

    // ------------------------------------------------------------------------------------------------------
    // The tree

    /// Steps through the top-level elements in order.
    TIter<CCoreXmlDomElement*> GetFirstElement() const { return TIter(m_elements); }
    /// Number of top-level elements, by walking.
    int GetElementCount() const { return m_elements.GetCount(); }
    /// Appends an element, which the document owns from then on; its parent is left as it is. Null is
    /// ignored.
    void AddElement(CCoreXmlDomElement* element);
    /// Lets go of all elements without deleting them: they belong to the caller then.
    void RemoveDom();
    /// Appends a new top-level element and returns it; null if there is no memory.
    CCoreXmlDomElement* CreateElement(STRID tag);
    CCoreXmlDomElement* CreateElement(const char* tag);
    /// The first top-level element with this tag; null if there is none.
    CCoreXmlDomElement* FindElement(const char* tag);
    /// Asks each top-level element in turn with its own search of the same arguments.
    CCoreXmlDomElement* FindElement(const char* tag, const char* attrName, const char* attrValue,
                                    bool recurse);

    // ------------------------------------------------------------------------------------------------------
    // Loading. Elements are appended to those already there. Nothing is fetched from a network, and no file
    // beside the given one is opened.

    /// Loads a file: with the quick reader (brenta/xml_readers.h), which shows its messages, or with the
    /// platform's. False if the file cannot be read or is malformed; the tree is unchanged then. The
    /// platform's reason can be asked with GetParseError.
    bool LoadDocument(const char* path, bool quickLoad);
    /// Loads a text with the platform's reader. The encoding that its declaration names does not count.
    bool LoadString(const char* text);
    /// The same where <windows.h> has renamed the call.
    bool LoadStringA(const char* text) { return LoadString(text); }
    bool LoadStringW(const char* text) { return LoadString(text); }
    /// Why the last platform load that failed did so, and at which byte (0 if unknown); "" and 0 before one.
    const char* GetParseError(int& offset) const;

    // ------------------------------------------------------------------------------------------------------
    // Saving. Read about the platform document at the head of this file. The first top-level element gains
    // the attribute "xmlns:xsi", and with a schema "xsi:noNamespaceSchemaLocation", in the tree, too.
    // Elements and attributes whose names are no XML names are left out, an element with all that is below
    // it.

    /// Saves to a file: the declaration, the stylesheet instruction if `xslName` is given, a comment, the
    /// tree. Null and "" are names not given. True even if the file could not be written; the old file is
    /// then as it was. False if the platform has no XML service.
    bool SaveDocument(const char* path, const char* schemaName, const char* xslName);
    /// Stores the text of the document in `out`. False, and `out` as it was, as for SaveDocument.
    bool GetString(CoreString& out);
    /// Stores in `out` what a stylesheet file makes of the document, "" if it fails on the way. False, and
    /// `out` as it was, if the stylesheet cannot be loaded. A stylesheet can write no file and reach no
    /// network.
    bool TransformDocument(const char* xslName, CoreString& out);
    /// Replaces the platform document by an empty one, so that the next save puts out the tree as it is now.
    /// After a platform load neither declaration nor comment is written then.
    void ResetCOMState();

 private:
    bool LoadThroughPlatform(const char* path, const char* text);
    bool Build(const char* schemaName, const char* xslName);
    bool Append(CCoreXmlDomElement* element);
    void CopyElements(const CCoreXmlDom& other);
    void DeleteElements();

    PlatformDocument* m_pDocument;
    CoreString m_parseError;
    int m_parseErrorOffset;
    TOrderedList<CCoreXmlDomElement*> m_elements;
    bool m_loaded;
};

#pragma pop_macro("LoadString")

// ---------------------------------------------------------------------------------------------------------
// What the script engine's classes of these names create: an empty document, element or attribute, the
// caller's; null when the heap is exhausted.

BRENTA_API CCoreScriptable* CreateCCoreXmlDomObject();
BRENTA_API CCoreScriptable* CreateCCoreXmlDomElementObject();
BRENTA_API CCoreScriptable* CreateCCoreXmlDomAttributeObject();

}  // namespace brenta
