// Transforming with libxslt.
//
// Both documents are parsed anew from their text: libxslt changes the trees that it works on, needs the
// entities replaced, and the document without the blanks between its elements. The work is done on a thread
// of its own with a large stack, since libxslt and its expressions recurse by depth; the depth itself is
// limited, in the documents and in the calls of templates.
//
// What a sheet may do: read the sheets that it includes, regular local files, and nothing else. Documents
// that it names are not loaded, nothing is written, no network is reached.
//
// libxslt has one loader and one error function for the whole process. Ours are in place only while a sheet
// is compiled or run, one at a time, and pass on what comes from other threads, which may be the host's own
// transforms.
#include <libxml/uri.h>
#include <libxml/xmlerror.h>
#include <libxslt/documents.h>
#include <libxslt/security.h>
#include <libxslt/transform.h>
#include <libxslt/xsltInternals.h>
#include <libxslt/xsltutils.h>

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <new>

#include "os/os.h"
#include "xml/platform_libxml2.h"

namespace brenta {

namespace {

constexpr std::size_t kStackSize = 64u << 20;

/// Set on the threads of our own transforms.
thread_local bool t_transforming = false;

/// The process's loader and error function as they were before ours.
struct Previous {
    xsltDocLoaderFunc loader;
    xmlGenericErrorFunc error;
    void* errorContext;
};
constinit std::mutex g_mutex;
constinit Previous g_previous{};

/// A name of a document in the form of an address, and back.
std::string ToAddress(const std::string& path) {
    xmlChar* const escaped = xmlURIEscapeStr(AsXmlChars(path.c_str()), AsXmlChars("/:"));
    if (escaped == nullptr) throw std::bad_alloc();
    std::string address = AsChars(escaped);
    xmlFree(escaped);
    return address;
}

std::string FromAddress(const char* address) {
    char* const plain = xmlURIUnescapeString(address, 0, nullptr);
    if (plain == nullptr) throw std::bad_alloc();
    std::string path = plain;
    xmlFree(plain);
    return path;
}

xmlDoc* LoadIncludedSheet(const char* address, xmlDict* dictionary) {
    try {
        std::string bytes;
        ParseFault fault;
        if (!ReadXmlFile(FromAddress(address).c_str(), bytes)) return nullptr;
        // Parsed as a file for its encoding, and again for what libxslt needs.
        const std::shared_ptr<XmlTree> file = ParseXml(bytes, ParseUse::File, address, fault);
        if (file == nullptr) return nullptr;
        const std::shared_ptr<XmlTree> sheet =
            ParseXml(WriteTree(*file), ParseUse::Transform, address, fault, dictionary);
        return sheet == nullptr ? nullptr : std::exchange(sheet->m_pDoc, nullptr);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

xmlDoc* OnLoad(const xmlChar* address, xmlDict* dictionary, int options, void* context, xsltLoadType type) {
    if (!t_transforming) return g_previous.loader(address, dictionary, options, context, type);
    return type == XSLT_LOAD_STYLESHEET ? LoadIncludedSheet(AsChars(address), dictionary) : nullptr;
}

[[gnu::format(printf, 2, 3)]] void OnError(void*, const char* format, ...) {
    if (t_transforming || g_previous.error == nullptr) return;
    char text[4096];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    g_previous.error(g_previous.errorContext, "%s", text);
}

void Ignore(void*, const char*, ...) {}
void IgnoreStructured(void*, xmlError*) {}

/// While it lives, the process's handlers are ours.
class Handlers {
 public:
    Handlers() : m_lock(g_mutex) {
        g_previous = {xsltDocDefaultLoader, xsltGenericError, xsltGenericErrorContext};
        xsltSetLoaderFunc(&OnLoad);
        xsltSetGenericErrorFunc(nullptr, &OnError);
        t_transforming = true;
        // These two are the thread's own.
        xmlSetGenericErrorFunc(nullptr, &Ignore);
        xmlSetStructuredErrorFunc(nullptr, &IgnoreStructured);
    }
    ~Handlers() {
        t_transforming = false;
        xsltSetLoaderFunc(g_previous.loader);
        xsltSetGenericErrorFunc(g_previous.errorContext, g_previous.error);
    }
    Handlers(const Handlers&) = delete;
    Handlers& operator=(const Handlers&) = delete;

 private:
    std::lock_guard<std::mutex> m_lock;
};

template <class T, void (*Free)(T*)>
struct Freer {
    void operator()(T* object) const { Free(object); }
};
using Stylesheet = std::unique_ptr<xsltStylesheet, Freer<xsltStylesheet, xsltFreeStylesheet>>;
using Context = std::unique_ptr<xsltTransformContext, Freer<xsltTransformContext, xsltFreeTransformContext>>;
using Security = std::unique_ptr<xsltSecurityPrefs, Freer<xsltSecurityPrefs, xsltFreeSecurityPrefs>>;
using Document = std::unique_ptr<xmlDoc, Freer<xmlDoc, xmlFreeDoc>>;

// ---------------------------------------------------------------------------------------------------------
// The documents

bool IsBlank(const xmlNode& node) {
    return node.type == XML_TEXT_NODE && xmlIsBlankNode(&node) != 0 &&
           xmlNodeGetSpacePreserve(node.parent) != 1;
}

/// Drops the blanks between elements; false if the document is too deep.
bool PrepareSource(xmlDoc& document) {
    int depth = 1;
    xmlNode* node = document.children;
    while (node != nullptr) {
        xmlNode* next = node->type == XML_ELEMENT_NODE ? node->children : nullptr;
        if (next != nullptr && ++depth > kDeepestTransform) return false;
        for (xmlNode* up = node; next == nullptr && up != nullptr && up->type != XML_DOCUMENT_NODE;
             up = up->parent) {
            next = up->next;
            if (next == nullptr) --depth;
        }
        if (IsBlank(*node)) {
            xmlUnlinkNode(node);
            xmlFreeNode(node);
        }
        node = next;
    }
    return true;
}

// ---------------------------------------------------------------------------------------------------------
// The transform

struct Job {
    const std::string& document;
    const std::string& sheet;
    const std::string& sheetPath;
    std::string result;
};

Stylesheet Compile(const Job& job) {
    ParseFault fault;
    const std::shared_ptr<XmlTree> tree =
        ParseXml(job.sheet, ParseUse::Transform, ToAddress(job.sheetPath).c_str(), fault);
    if (tree == nullptr) return nullptr;
    Stylesheet sheet(xsltParseStylesheetDoc(tree->m_pDoc));
    if (sheet == nullptr) return nullptr;
    tree->m_pDoc = nullptr;  // the sheet's now
    if (sheet->errors != 0) return nullptr;
    // The result is wanted in UTF-8 whatever the sheet says.
    xmlFree(sheet->encoding);
    sheet->encoding = xmlStrdup(AsXmlChars("UTF-8"));
    return sheet;
}

Security ForbidAll() {
    Security security(xsltNewSecurityPrefs());
    if (security == nullptr) throw std::bad_alloc();
    for (const xsltSecurityOption option :
         {XSLT_SECPREF_READ_FILE, XSLT_SECPREF_WRITE_FILE, XSLT_SECPREF_CREATE_DIRECTORY,
          XSLT_SECPREF_READ_NETWORK, XSLT_SECPREF_WRITE_NETWORK})
        if (xsltSetSecurityPrefs(security.get(), option, &xsltSecurityForbid) != 0) throw std::bad_alloc();
    return security;
}

/// While it lives, a transform that touches the reserve ends: its instructions by its state, its expressions,
/// which go on over all nodes of a document regardless of that, by XPath's own limit.
class StopWhenTouched {
 public:
    explicit StopWhenTouched(xsltTransformContext& context) {
        XmlMemoryReserve::WhenTouched(&Stop, &context);
    }
    ~StopWhenTouched() { XmlMemoryReserve::WhenTouched(nullptr, nullptr); }
    StopWhenTouched(const StopWhenTouched&) = delete;
    StopWhenTouched& operator=(const StopWhenTouched&) = delete;

 private:
    static void Stop(void* self) {
        xsltTransformContext& context = *static_cast<xsltTransformContext*>(self);
        context.state = XSLT_STATE_STOPPED;
        context.xpathCtxt->opLimit = context.xpathCtxt->opCount = 1;
    }
};

void Run(Job& job) {
    ReadyXmlThread();
    const Handlers handlers;
    const XmlMemoryReserve reserve;
    const Stylesheet sheet = Compile(job);
    if (sheet == nullptr || reserve.IsTouched()) return;
    ParseFault fault;
    const std::shared_ptr<XmlTree> source = ParseXml(job.document, ParseUse::Transform, nullptr, fault);
    if (source == nullptr || !PrepareSource(*source->m_pDoc)) return;
    const Security security = ForbidAll();
    const Context context(xsltNewTransformContext(sheet.get(), source->m_pDoc));
    if (context == nullptr || xsltSetCtxtSecurityPrefs(security.get(), context.get()) != 0) return;
    xsltSetTransformErrorFunc(context.get(), nullptr, &Ignore);
    const StopWhenTouched stop(*context);
    if (reserve.IsTouched()) return;
    const Document result(
        xsltApplyStylesheetUser(sheet.get(), source->m_pDoc, nullptr, nullptr, nullptr, context.get()));
    if (result == nullptr || context->state != XSLT_STATE_OK) return;
    xmlChar* text = nullptr;
    int size = 0;
    if (xsltSaveResultToString(&text, &size, result.get(), sheet.get()) == 0 && text != nullptr) {
        const std::unique_ptr<xmlChar, decltype(xmlFree)> owner(text, xmlFree);
        if (!reserve.IsTouched()) job.result.assign(AsChars(text), static_cast<std::size_t>(size));
    }
}

}  // namespace

std::string TransformXml(const std::string& document, const std::string& sheet,
                         const std::string& sheetPath) {
    Job job{document, sheet, sheetPath, ""};
    const auto work = [](void* context) {
        try {
            Run(*static_cast<Job*>(context));
        } catch (const std::bad_alloc&) {
            static_cast<Job*>(context)->result.clear();
        }
    };
    if (!os::RunOnStack(kStackSize, work, &job)) return "";
    return job.result;
}

}  // namespace brenta
