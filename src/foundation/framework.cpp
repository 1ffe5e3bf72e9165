#include "brenta/framework.h"

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <utility>

#include "brenta/host.h"
#include "brenta/string.h"
#include "os/os.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// The host's services

namespace {

constinit os::Lock g_servicesLock;
constinit HostServices g_services;

}  // namespace

void SetHostServices(const HostServices& services) {
    HostServices complete;
    std::memcpy(&complete, &services, services.size < sizeof complete ? services.size : sizeof complete);
    complete.size = sizeof complete;
    const os::LockGuard guard(g_servicesLock);
    g_services = complete;
}

HostServices GetHostServices() {
    const os::LockGuard guard(g_servicesLock);
    return g_services;
}

// ---------------------------------------------------------------------------------------------------------
// Message boxes

namespace {

/// The message box of a console program.
int ShowOnTerminal(const char* text, unsigned int type) {
    std::string line(text);
    if ((type & MB_TYPEMASK) != MB_YESNO) {
        os::WriteError(line += '\n');
        return IDOK;
    }
    const bool canAsk = os::HasTerminal();
    os::WriteError(line += canAsk ? " [y/N] " : "\n");
    std::string answer;
    if (canAsk) os::ReadTerminalLine(answer);
    return answer.starts_with('y') || answer.starts_with('Y') ? IDYES : IDNO;
}

}  // namespace

int AfxMessageBox(const char* text, unsigned int type, unsigned int /*help*/) {
    if (!text) text = "";
    const HostServices services = GetHostServices();
    return services.showMessage ? services.showMessage(services.context, text, type)
                                : ShowOnTerminal(text, type);
}

int AfxMessageBox(unsigned int id, unsigned int type, unsigned int help) {
    const HostServices services = GetHostServices();
    CoreString text;
    if (services.loadString && !services.loadString(services.context, id, text)) text = "";
    return AfxMessageBox(static_cast<const char*>(text), type, help);
}

// ---------------------------------------------------------------------------------------------------------
// CString

CString::CString(const char* text) : m_text(text ? text : "") {}

CString::CString(const char* bytes, int length)
    : m_text(bytes && length > 0 ? std::string(bytes, static_cast<std::size_t>(length)) : std::string()) {}

CString& CString::operator=(const char* text) {
    // Through a temporary: the text may be part of this one.
    m_text = std::string(text ? text : "");
    return *this;
}

char CString::GetAt(int index) const {
    return index >= 0 && index < GetLength() ? m_text[static_cast<std::size_t>(index)] : '\0';
}

void CString::SetAt(int index, char c) {
    if (index >= 0 && index < GetLength()) m_text[static_cast<std::size_t>(index)] = c;
}

CString& CString::operator+=(const CString& text) {
    m_text += text.m_text;
    return *this;
}

CString& CString::operator+=(const char* text) {
    if (text) m_text += text;
    return *this;
}

CString& CString::operator+=(char c) {
    m_text += c;
    return *this;
}

bool CString::operator==(const char* text) const {
    return m_text == (text ? text : "");
}

// ---------------------------------------------------------------------------------------------------------
// Messages and commands

CMessageWindow::~CMessageWindow() = default;

std::intptr_t SendMessageA(HWND window, unsigned int message, std::uintptr_t wParam, std::intptr_t lParam) {
    return window ? window->OnMessage(message, wParam, lParam) : 0;
}

const CRuntimeClass CCmdTarget::kRuntimeClass = {"CCmdTarget", sizeof(CCmdTarget), &CObject::kRuntimeClass};

const CRuntimeClass* CCmdTarget::GetRuntimeClass() const {
    return &kRuntimeClass;
}

bool CCmdTarget::OnCmdMsg(unsigned int, int, void*, AFX_CMDHANDLERINFO*) {
    return false;
}

// ---------------------------------------------------------------------------------------------------------
// CObject and CException

const CRuntimeClass CObject::kRuntimeClass = {"CObject", sizeof(CObject), nullptr};
const CRuntimeClass CException::kRuntimeClass = {"CException", sizeof(CException), &CObject::kRuntimeClass};

const CRuntimeClass* CObject::GetRuntimeClass() const {
    return &kRuntimeClass;
}

CObject::~CObject() = default;

void CObject::Serialize(CArchive& /*archive*/) {}

bool CObject::IsKindOf(const CRuntimeClass* type) const {
    const CRuntimeClass* own = GetRuntimeClass();
    while (own && own != type)
        own = own->base;
    return own != nullptr;
}

const CRuntimeClass* CException::GetRuntimeClass() const {
    return &kRuntimeClass;
}

bool CException::GetErrorMessage(char* buffer, unsigned int size, unsigned int* helpContext) {
    return std::as_const(*this).CException::GetErrorMessage(buffer, size, helpContext);
}

bool CException::GetErrorMessage(char* buffer, unsigned int size, unsigned int* helpContext) const {
    if (buffer && size > 0) *buffer = '\0';
    if (helpContext) *helpContext = 0;
    return false;
}

int CException::ReportError(unsigned int type, unsigned int messageId) {
    char buffer[256] = {};
    if (GetErrorMessage(buffer, sizeof buffer)) return AfxMessageBox(buffer, type, 0);
    return AfxMessageBox(messageId, type, static_cast<unsigned int>(-1));
}

// ---------------------------------------------------------------------------------------------------------
// Modules

namespace {

constinit os::Lock g_chainLock;
constinit CDynLinkLibrary* g_pChain = nullptr;

}  // namespace

bool AfxInitExtensionModule(CExtensionModule& module) {
    const os::LockGuard guard(g_chainLock);
    return !std::exchange(module.initialised, true);
}

void AfxTermExtensionModule(CExtensionModule& module) {
    const os::LockGuard guard(g_chainLock);
    for (const CDynLinkLibrary* link = g_pChain; link;) {
        const CDynLinkLibrary* const next = link->GetNext();
        if (&link->GetModule() == &module) delete link;
        link = next;
    }
    module.initialised = false;
}

CDynLinkLibrary::CDynLinkLibrary(CExtensionModule& module) : m_pModule(&module) {
    const os::LockGuard guard(g_chainLock);
    m_pNext = std::exchange(g_pChain, this);
}

CDynLinkLibrary::~CDynLinkLibrary() {
    const os::LockGuard guard(g_chainLock);
    CDynLinkLibrary** link = &g_pChain;
    while (*link && *link != this)
        link = &(*link)->m_pNext;
    if (*link) *link = m_pNext;
}

const CDynLinkLibrary* CDynLinkLibrary::GetFirst() {
    const os::LockGuard guard(g_chainLock);
    return g_pChain;
}

// ---------------------------------------------------------------------------------------------------------
// Waiting and progress

struct CSemaphore::State {
    std::mutex mutex;
    std::condition_variable changed;
    long passes = 0;
    long maximum = 0;
};

CSemaphore::CSemaphore(long initial, long maximum) : m_pState(new State) {
    m_pState->passes = initial;
    m_pState->maximum = maximum;
}

CSemaphore::~CSemaphore() {
    delete m_pState;
}

bool CSemaphore::Lock(unsigned long milliseconds) {
    constexpr unsigned long kWithoutLimit = 0xFFFFFFFF;
    std::unique_lock<std::mutex> lock(m_pState->mutex);
    const auto hasPass = [this] { return m_pState->passes > 0; };
    if (milliseconds == kWithoutLimit) {
        m_pState->changed.wait(lock, hasPass);
    } else if (!m_pState->changed.wait_for(lock, std::chrono::milliseconds(milliseconds), hasPass)) {
        return false;
    }
    --m_pState->passes;
    return true;
}

bool CSemaphore::Unlock() {
    {
        const std::lock_guard<std::mutex> lock(m_pState->mutex);
        if (m_pState->passes >= m_pState->maximum) return false;
        ++m_pState->passes;
    }
    m_pState->changed.notify_one();
    return true;
}

void CProgressCtrl::SetRange32(int, int) {}

int CProgressCtrl::SetPos(int) {
    return 0;
}

}  // namespace brenta
