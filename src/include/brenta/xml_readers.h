/// @file
/// The library's own readers: a quick one for strict XML, and a forgiving one for HTML. Both make the tree of
/// brenta/xml.h without the platform's XML service.
///
///     CCoreXMLQuickReader reader;
///     if (!reader.LoadDocument("Resistors.lbr")) return;        // the person has seen why
///     for (auto root = reader.GetFirstElement(); root.Get(); root.Next()) Use(**root.Get());
///     for (CCoreXmlDomElement* root : reader.TakeElements()) delete root;
///
/// Which reader for what:
///
/// | Text                                                | Reader                                   |
/// |-----------------------------------------------------|------------------------------------------|
/// | What a program wrote: elements and attributes       | CCoreXMLQuickReader, or CCoreXmlDom with |
/// | only                                                | quickLoad (brenta/xml.h)                 |
/// | XML with text between tags, single quotes, DTDs     | CCoreXmlDom without quickLoad            |
/// | Pages                                               | CCoreHTMLReader                          |
///
/// Text is taken byte by byte, without an encoding. Names are interned (brenta/names.h) and stay in memory
/// until the library is unloaded; values and texts are interned when they are asked for as names or for good
/// (brenta/xml.h). Letters count as different in different case.
///
/// Ownership. No reader deletes an element of a finished parse: the caller takes them over and deletes them.
///
/// Cost. Time grows with the length of the text, whatever it holds: depth, attributes by the ten thousand and
/// unfinished constructs included. Neither reader recurses, or keeps anything beside the tree but the text:
/// the HTML reader as a whole, the quick reader a piece of it at a time.
///
/// Files. Regular files only: a folder, a pipe, a device, an address of a network, null, or a file that
/// cannot be read is false without a message. A NUL ends the text. A lack of memory, for names too, is false
/// as well.
///
/// Threads. A reader is used by one thread at a time; it shows messages (AfxMessageBox, MB_OK) on that
/// thread.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "brenta/containers.h"
#include "brenta/detail/class_name.h"
#include "brenta/export.h"
#include "brenta/heap.h"
#include "brenta/names.h"
#include "brenta/xml.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// The quick reader

/// Reads a narrow dialect of XML:
///
/// - Elements with a start and an end tag, or empty ones (`<via/>`), any number at the top level. An end tag
///   must repeat the name exactly: a blank before its `>` is part of the name.
/// - Attributes in double quotes. Of several with one name the last value counts.
/// - The entities `&lt;` `&gt;` `&quot;` `&apos;` `&amp;` in names of elements and in values, decoded once:
///   `&amp;lt;` becomes `&lt;`. Everything else after a `&` stays as it is, `&#10;` too.
/// - `<?...>` and `<!...>` are skipped up to the next `>`, wherever it stands: a comment that holds a `>`,
///   or a DTD with declarations of its own, is a fault.
/// - Text between tags is a fault, so no element has an inner text.
/// - A byte from 0x80 up ends a name. Values hold any byte, names in other alphabets need the other reader.
///
/// Each fault is shown in a message box where it is met, and ends the parse; there is no position in it. An
/// element around a faulty one takes the rest of that for text, and shows a message of its own: a fault n
/// levels below the top level shows n + 1 messages. The messages:
///
/// | Message                                 | The fault                                                |
/// |-----------------------------------------|----------------------------------------------------------|
/// | "Bad XML format."                       | text at the top level                                    |
/// | "Unexpected end-of-file."               | the text ends inside a tag                               |
/// | "Syntax error."                         | it ends in an element, just behind a tag or in `<?...>`  |
/// | "Inner text not valid in this reader."  | text in an element, or its end behind white space        |
/// | "Expecting '>' after empty element '/'" | another byte behind the `/` at the end of a name         |
/// | "Not a valid attribute."                | no `=` behind an attribute's name                        |
/// | "Missing quote for attribute value."    | no double quote behind the `=`                           |
/// | "Mismatched end tag."                   | another name in the end tag                              |
class BRENTA_API CCoreXMLQuickReader {
 public:
    /// A reader without elements.
    CCoreXMLQuickReader();
    /// Copies the pointers: both readers then name the same elements.
    CCoreXMLQuickReader(const CCoreXMLQuickReader& other);
    CCoreXMLQuickReader& operator=(const CCoreXMLQuickReader& other);
    virtual std::size_t SizeOf() const;
    virtual const char* GetClassName() const;
    /// "none"
    virtual const char* GetBaseClassName() const;
    /// Leaves the elements alone.
    virtual ~CCoreXMLQuickReader();

    BRENTA_HEAP_OPERATORS

    /// Reads a file and appends its top-level elements to those of earlier parses. False after a fault: what
    /// was built of this text is deleted, and the reader names no elements any more, so hold those of earlier
    /// parses yourself. A file that cannot be read changes nothing.
    bool LoadDocument(const char* path);

    /// The same with a terminated text; null counts as "". An empty text is read successfully.
    bool ParseStream(const char* text);

    /// Steps through the top-level elements in order.
    TIter<CCoreXmlDomElement*> GetFirstElement() const { return TIter(m_elements); }

    /// Hands the elements over in constant time: the reader names none then.
    TOrderedList<CCoreXmlDomElement*> TakeElements();

 private:
    TOrderedList<CCoreXmlDomElement*> m_elements;
};

// ---------------------------------------------------------------------------------------------------------
// The HTML reader

/// Makes a tree of a page's tags, without knowing what they mean. `<p>one <i>two</i> three</p>` gives
///
///     Root
///       p
///         Text        inner text "one "
///         i
///           Text      inner text "two"
///
/// - Only text right behind a start tag is kept, without the white space before it, as a first child "Text".
///   Text behind an end tag, an empty element or a comment is dropped.
/// - Every end tag closes the innermost open element, whatever its name. An element without an end tag, such
///   as `<br>` or `<li>`, takes in what follows it; so does `<br/>`, whose name is "br/" (`<br />` is empty).
/// - An element whose end tag follows at once takes that for its text and goes on: `<td></td>`.
/// - "input", "meta" and "img" in lower case and "LINK" in upper case leave nothing, also not the text behind
///   them.
/// - Values stand in double quotes or in none; unquoted they end at white space, `>` or `/`. A `/` that is
///   not followed by `>` ends the parse: an unquoted address is such a case. An attribute without a value has
///   the value "1" and, unless it is the last, swallows the one behind it. Bytes from 0x80 up end the name of
///   an attribute. Of several with one name the last value counts.
/// - The entities `&lt;` `&gt;` `&quot;` `&apos;` `&amp;`, and `&nbsp;` as a blank, `&reg;` as "(R)",
///   `&trade;` as "(TM)", `&copy;` as "(C)", are decoded everywhere. Since `&amp;` goes first, `&amp;nbsp;`
///   is a blank.
/// - `<?...>` and `<!...>` are skipped up to the next `>`.
///
/// False without a message means that the text ends, or has such a `/`, inside a construct. Take a look at
/// the tree all the same: a page that ends with a comment, with a start tag or with one of the four dropped
/// tags is complete, and still false. "Bad XML format." is shown where there is no `<` at the start, or where
/// tags follow an end tag for which nothing is open.
class BRENTA_API CCoreHTMLReader {
 public:
    /// A reader without a root and without a position.
    CCoreHTMLReader();
    /// Copies the pointer: both readers then name the same root. Each has its own position in the same text.
    CCoreHTMLReader(const CCoreHTMLReader& other);
    CCoreHTMLReader& operator=(const CCoreHTMLReader& other);
    virtual const char* GetClassName() const;
    /// Leaves the root alone.
    virtual ~CCoreHTMLReader();

    BRENTA_HEAP_OPERATORS

    /// Reads a page into a new root element "Root". An earlier root is let go, not deleted: take it over
    /// first. False also leaves a root, with what was read so far, unless the file could not be read, which
    /// changes nothing, or there was no memory for a root, which is null then.
    bool LoadDocument(const char* path);

    /// The root of the last parse, which the caller takes over; null before the first.
    CCoreXmlDomElement* GetRootElement() const { return m_pRoot; }

    // ------------------------------------------------------------------------------------------------------
    // The cursor. The text of a parse is kept until the next one or until the last reader that names it goes,
    // and the position stands where the parse ended: at the end of the text, or where it could not go on.

    /// The byte at the position; 0 at the end of the text and without a position.
    char Cur() const { return m_pPosition != nullptr ? *m_pPosition : '\0'; }
    /// The byte behind it; 0 if there is none, and without a position.
    char LookAhead() const { return Cur() != '\0' ? m_pPosition[1] : '\0'; }
    /// Steps to the next byte; at the end of the text and without a position nothing happens. A byte that is
    /// not a carriage return counts as a column, and a line feed begins a line.
    void Next() {
        if (Cur() == '\0') return;
        ++m_pPosition;
        if (*m_pPosition != '\r') ++m_column;
        if (*m_pPosition == '\n') {
            ++m_line;
            m_column = 1;
        }
    }
    /// Marks the position as the start of a piece; the next parse clears the mark.
    void Mark() { m_pMark = m_pPosition; }

 private:
    bool ParseLoop(const char* buffer);
    void StandAt(const char* buffer, const char* position);

    CCoreXmlDomElement* m_pRoot;
    const char* m_pPosition;
    const char* m_pMark;
    int m_line;
    int m_column;
    std::shared_ptr<const std::string> m_pText;
};

}  // namespace brenta
