#include "brenta/failure.h"

#include <cstdio>
#include <new>
#include <utility>

#include "foundation/extension_module.h"
#include "os/os.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Joining the library

constinit CExtensionModule g_extensionModule;

namespace {

constinit os::Lock g_initLock;
constinit bool g_initialised = false;

}  // namespace

bool InitCoreLibrary() {
    {
        const os::LockGuard guard(g_initLock);
        if (std::exchange(g_initialised, true)) return true;
    }
    os::WatchProcessEnd();
    // The chain owns the object; it goes when the library's record ends.
    new (std::nothrow) CDynLinkLibrary(g_extensionModule);
    return true;
}

// ---------------------------------------------------------------------------------------------------------
// Forced crash

namespace {

/// The host's handler and its context, which are read and replaced together.
struct CrashHandler {
    ForcedCrashHandler pFunction = nullptr;
    void* pContext = nullptr;
};

constinit os::Lock g_handlerLock;
constinit CrashHandler g_handler;

CrashHandler CurrentHandler() {
    const os::LockGuard guard(g_handlerLock);
    return g_handler;
}

constinit thread_local bool t_insideHandler = false;

/// Marks the thread as being inside the handler, also when the handler throws.
class HandlerMark {
 public:
    HandlerMark() { t_insideHandler = true; }
    ~HandlerMark() { t_insideHandler = false; }
    HandlerMark(const HandlerMark&) = delete;
    HandlerMark& operator=(const HandlerMark&) = delete;
};

}  // namespace

void SetForcedCrashHandler(ForcedCrashHandler handler, void* context) {
    const os::LockGuard guard(g_handlerLock);
    g_handler = {handler, context};
}

void ForcedCrash(std::uintptr_t siteCode, const char* file, int line, const char* message) {
    const ForcedCrashRecord record{
        kForcedCrashCode,
        0,
        {siteCode, reinterpret_cast<std::uintptr_t>(file), static_cast<std::uintptr_t>(line),
         reinterpret_cast<std::uintptr_t>(message)}};
    const CrashHandler handler = CurrentHandler();
    if (!handler.pFunction || t_insideHandler) return os::RaiseForcedCrash(record);
    const HandlerMark mark;
    handler.pFunction(record, handler.pContext);
}

[[gnu::noinline]] void SoftError() {
    // Something that the compiler cannot see through, or it would leave the calls out.
    __asm__ volatile("");
}

void ReportLastError(const char* /*context*/) {
    os::FetchLastErrorText();
}

// ---------------------------------------------------------------------------------------------------------
// CoreException

CoreException::CoreException(CString& text, int code) : m_code(code), m_text(text) {}

CoreException::CoreException(const CoreException& other) : CException(other), m_code(other.m_code) {}

CoreException& CoreException::operator=(CoreException& other) {
    return *this = std::as_const(other);
}

CoreException& CoreException::operator=(const CoreException& other) {
    m_code = other.m_code;
    return *this;
}

CoreException::~CoreException() = default;

bool CoreException::GetErrorMessage(char* buffer, unsigned int size, unsigned int* helpContext) {
    const char* const message = GetErrorMessage(m_code);
    if (!message) return CException::GetErrorMessage(buffer, size, helpContext);
    const char* const text = m_text;
    if (buffer && size > 0) std::snprintf(buffer, size, "%s: %s", text, message);
    return true;
}

bool CoreException::GetErrorMessage(char* buffer, unsigned int size, unsigned int* helpContext) const {
    const char* const message = GetErrorMessage(m_code);
    if (!message) return CException::GetErrorMessage(buffer, size, helpContext);
    const char* const text = m_text;
    if (buffer && size > 0) std::snprintf(buffer, size, "%s%s", text, message);
    return true;
}

int CoreException::ReportError(unsigned int type, unsigned int messageId) {
    char buffer[256] = {};
    if (GetErrorMessage(m_code) && GetErrorMessage(buffer, sizeof buffer, nullptr)) {
        return AfxMessageBox(buffer, type, 0);
    }
    return AfxMessageBox(messageId, type, static_cast<unsigned int>(-1));
}

std::size_t CoreException::SizeOf() const {
    return sizeof(*this);
}
const char* CoreException::GetClassName() const {
    return "CoreException";
}
const char* CoreException::GetBaseClassName() const {
    return "CException";
}

const char* CoreException::GetErrorMessage(int code) const {
    static constexpr const char* kMessages[] = {
        "Attempting to write an unknown field type",
        "Internal error - Invalid atomic action type",
        "Internal error - unexpected NULL pointer",
        "Internal error - Attempting to add an invalid object type",
        "Internal error - Object not found",
        "Out of space.  Library is too large",
        "Internal error - unrecognized object class",
        "Internal error - duplicate reference designators",
    };
    return code >= 1 && code <= 8 ? kMessages[code - 1] : nullptr;
}

}  // namespace brenta
