// The SAX parser over MSXML: its events, told on to the library's handler.
//
// No exception may pass through MSXML's frames: it is kept, the parse stopped by the answer to the event, and
// thrown when the parser has returned.
#include <algorithm>
#include <exception>
#include <vector>

#include "os/os.h"

#include "xml/com_msxml.h"

namespace brenta {

namespace {

constexpr CLSID kReaderClass = {0x3124C396, 0xFB13, 0x4836, {0xA6, 0xAD, 0x13, 0x17, 0xF1, 0x71, 0x36, 0x88}};
constexpr IID kReader = {0xA4F96ED0, 0xF829, 0x476E, {0x81, 0xC0, 0xCD, 0xC7, 0xBD, 0x2A, 0x08, 0x02}};
constexpr IID kContentHandler = {
    0x1545CDFA, 0x9E4E, 0x4497, {0xA8, 0xA4, 0x2B, 0xF7, 0xD0, 0x11, 0x2C, 0x44}};

using Chars = const wchar_t*;

std::wstring_view View(Chars text, int length) {
    return text == nullptr ? std::wstring_view() : std::wstring_view(text, static_cast<std::size_t>(length));
}

/// Where the parser stands in the file.
class Locator final : public ISAXLocator {
 public:
    void Set(::ISAXLocator* locator) { m_pLocator = locator; }

    std::int64_t GetLineNumber() const override { return Ask(&::ISAXLocator::getLineNumber); }
    std::int64_t GetColumnNumber() const override { return Ask(&::ISAXLocator::getColumnNumber); }

 private:
    template <class Question>
    std::int64_t Ask(Question question) const {
        int number = 0;
        return (m_pLocator->*question)(&number) == S_OK ? number : 0;
    }

    ::ISAXLocator* m_pLocator = nullptr;
};

/// The attributes of one element in the library's code page.
class Attributes {
 public:
    /// Namespace declarations, which have no local name or that of their prefix, are left out.
    std::span<const SaxAttribute> Read(::ISAXAttributes& attributes) {
        m_text.clear();
        m_ends.clear();
        int count = 0;
        attributes.getLength(&count);
        for (int i = 0; i < count; ++i) {
            const std::wstring_view name = Part(attributes, &::ISAXAttributes::getLocalName, i);
            const std::wstring_view full = Part(attributes, &::ISAXAttributes::getQName, i);
            if (name.empty() || full == L"xmlns" || full.starts_with(L"xmlns:")) continue;
            Add(name);
            Add(Part(attributes, &::ISAXAttributes::getValue, i));
        }
        m_attributes.clear();
        for (std::size_t i = 0, start = 0; i < m_ends.size(); i += 2) {
            const std::string_view all = m_text;
            m_attributes.push_back(
                {all.substr(start, m_ends[i] - start), all.substr(m_ends[i], m_ends[i + 1] - m_ends[i])});
            start = m_ends[i + 1];
        }
        return m_attributes;
    }

 private:
    /// A part of an attribute; "" if it cannot be had.
    template <class Getter>
    static std::wstring_view Part(::ISAXAttributes& attributes, Getter getter, int index) {
        Chars text = nullptr;
        int length = 0;
        return (attributes.*getter)(index, &text, &length) == S_OK ? View(text, length) : std::wstring_view();
    }

    void Add(std::wstring_view text) {
        AppendNarrow(text, m_text);
        m_ends.push_back(m_text.size());
    }

    std::string m_text;
    std::vector<std::size_t> m_ends;  ///< of each name and value
    std::vector<SaxAttribute> m_attributes;
};

/// What MSXML tells its events to. Whoever made it holds one count.
class Events final : ::ISAXContentHandler {
 public:
    void SetHandler(brenta::ISAXContentHandler* handler) { m_pHandler = handler; }
    ::ISAXContentHandler* Interface() { return this; }
    void BeginParse() {
        m_stopped = false;
        m_thrown = nullptr;
    }
    /// Whether the handler let the parse go on to its end; throws what it has thrown.
    bool EndParse() {
        m_locator.Set(nullptr);
        if (m_thrown) std::rethrow_exception(std::exchange(m_thrown, nullptr));
        return !m_stopped;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** object) override {
        if (object == nullptr) return E_POINTER;
        const bool known = IsEqualIID(wanted, IID_IUnknown) || IsEqualIID(wanted, kContentHandler);
        *object = known ? Interface() : nullptr;
        if (!known) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_users; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --m_users;
        if (left == 0) delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE putDocumentLocator(::ISAXLocator* locator) override {
        m_locator.Set(locator);
        m_pHandler->PutDocumentLocator(locator == nullptr ? nullptr : &m_locator);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE startDocument() override {
        return Tell([this] { return m_pHandler->StartDocument(); });
    }
    HRESULT STDMETHODCALLTYPE endDocument() override {
        return Tell([this] { return m_pHandler->EndDocument(); });
    }
    HRESULT STDMETHODCALLTYPE startElement(Chars, int, Chars localName, int length, Chars, int,
                                           ::ISAXAttributes* attributes) override {
        return Tell([&] {
            m_name.clear();
            AppendNarrow(View(localName, length), m_name);
            return m_pHandler->StartElement(m_name, m_attributes.Read(*attributes));
        });
    }
    HRESULT STDMETHODCALLTYPE endElement(Chars, int, Chars, int, Chars, int) override {
        return Tell([this] { return m_pHandler->EndElement(); });
    }
    HRESULT STDMETHODCALLTYPE characters(Chars, int) override {
        return Tell([this] { return m_pHandler->Characters(); });
    }

    HRESULT STDMETHODCALLTYPE startPrefixMapping(Chars, int, Chars, int) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE endPrefixMapping(Chars, int) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE ignorableWhitespace(Chars, int) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE processingInstruction(Chars, int, Chars, int) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE skippedEntity(Chars, int) override { return S_OK; }

 private:
    ~Events() = default;

    /// After one event that is answered by no, none is told any more, whether the parser goes on or not.
    template <class Event>
    HRESULT Tell(Event event) {
        if (m_thrown) return E_FAIL;
        try {
            m_stopped = m_stopped || !event();
            return m_stopped ? S_FALSE : S_OK;
        } catch (...) {
            m_thrown = std::current_exception();
            return E_FAIL;
        }
    }

    ULONG m_users = 1;
    brenta::ISAXContentHandler* m_pHandler = nullptr;
    Locator m_locator;
    Attributes m_attributes;
    std::string m_name;
    bool m_stopped = false;
    std::exception_ptr m_thrown;
};

class MsxmlSaxReader final : public ISAXXMLReader {
 public:
    explicit MsxmlSaxReader(ComPointer<::ISAXXMLReader> reader) : m_reader(std::move(reader)) {
        *m_events.Out() = new Events;
    }
    ~MsxmlSaxReader() override { m_reader->putContentHandler(nullptr); }

    bool PutContentHandler(ISAXContentHandler* handler) override {
        m_events->SetHandler(handler);
        return m_reader->putContentHandler(handler == nullptr ? nullptr : m_events->Interface()) == S_OK;
    }

    bool ParseURL(const char* path) override {
        if (!os::FileReader().Open(path)) return false;
        m_events->BeginParse();
        const HRESULT result = m_reader->parseURL(FileName(path).c_str());
        return m_events->EndParse() && result == S_OK;
    }

 private:
    ComPointer<::ISAXXMLReader> m_reader;
    ComPointer<Events> m_events;
};

}  // namespace

std::unique_ptr<ISAXXMLReader> MakeSaxReader() {
    auto reader = MakeComObject<::ISAXXMLReader>(kReaderClass, kReader);
    if (!reader) return nullptr;
    // Entities of other files are empty; a DTD in the file itself is read. Some services refuse one, or deep
    // files, by themselves.
    for (const wchar_t* feature :
         {L"http://xml.org/sax/features/external-general-entities",
          L"http://xml.org/sax/features/external-parameter-entities", L"prohibit-dtd"})
        reader->putFeature(feature, VARIANT_FALSE);
    reader->putProperty(L"max-element-depth", ComNumber(0));
    return std::make_unique<MsxmlSaxReader>(std::move(reader));
}

}  // namespace brenta
