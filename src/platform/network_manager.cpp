#include "brenta/network.h"

#include <string>
#include <string_view>
#include <system_error>

#include "brenta/registry.h"
#include "foundation/characters.h"
#include "platform/host_services.h"
#include "platform/network_backend.h"
#include "platform/proxy_discovery.h"
#include "platform/proxy_list.h"
#include "platform/registry_store.h"

namespace brenta {

namespace {

std::string_view View(const CString& text) {
    return {text, static_cast<std::size_t>(text.GetLength())};
}

CString ToText(std::string_view text) {
    return CString(text.data(), static_cast<int>(text.size()));
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// Life

const CRuntimeClass CNetworkManager::kRuntimeClass = {"CNetworkManager", sizeof(CNetworkManager),
                                                      &CObject::kRuntimeClass};

const CRuntimeClass* CNetworkManager::GetRuntimeClass() const {
    return &kRuntimeClass;
}

CNetworkManager::CNetworkManager() {
    LookupAuthentication();
}

CNetworkManager::CNetworkManager(const CNetworkManager& other) : CObject(other) {
    CopyFields(other);
}

CNetworkManager& CNetworkManager::operator=(const CNetworkManager& other) {
    if (this != &other) CopyFields(other);
    return *this;
}

CNetworkManager::~CNetworkManager() = default;

void CNetworkManager::CopyFields(const CNetworkManager& other) {
    m_accessType = other.m_accessType;
    m_proxyList = other.m_proxyList;
    m_bypassList = other.m_bypassList;
    m_userName = other.m_userName;
    m_password = other.m_password;
    for (int i = 0; i < 5; ++i)
        m_texts[i] = other.m_texts[i];
    for (int i = 0; i < 2; ++i)
        m_numbers[i] = other.m_numbers[i];
    m_autoProxy = other.m_autoProxy;
    m_connected = other.m_connected;
    m_lastTest = other.m_lastTest;
    m_lastDiscoveryError = other.m_lastDiscoveryError;
}

void CNetworkManager::ThreadSafeCopy(CNetworkManager& to, CNetworkManager& from, CSemaphore* lock) {
    struct Pass {
        explicit Pass(CSemaphore* semaphore) : m_pSemaphore(semaphore) {
            if (m_pSemaphore) m_pSemaphore->Lock();
        }
        ~Pass() {
            if (m_pSemaphore) m_pSemaphore->Unlock();
        }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        CSemaphore* m_pSemaphore;
    };
    const Pass pass(lock);
    to = from;
}

// ---------------------------------------------------------------------------------------------------------
// Connection

namespace {

constexpr unsigned long long kCacheSeconds = 61;
constexpr int kConnectSeconds = 10;

/// Whether an answer of that time still stands: it does for a minute, and while the clock is before it.
bool StillStands(long long tested, long long now) {
    // Without sign, as the difference of two times need not fit into one.
    return now < tested ||
           static_cast<unsigned long long>(now) - static_cast<unsigned long long>(tested) < kCacheSeconds;
}

bool CanReachSite() {
    if (!HostIsOnline()) return false;
    InternetSettings settings;
    if (HostInternetSettings(settings) && (settings.flags & kNamedProxy)) return true;
    CoreString site;
    if (!HostEndpoint(Endpoint::WebSite, site)) return false;
    const UrlTarget target = TargetOf(site.View());
    return !target.host.empty() && PlatformCanConnect(target.host, target.port, kConnectSeconds);
}

}  // namespace

bool CNetworkManager::IsConnectedToInternet() {
    if (StillStands(m_lastTest, HostTime())) return m_connected;
    m_connected = AssumeConnectedToInternet() || CanReachSite();
    m_lastTest = HostTime();
    return m_connected;
}

bool CNetworkManager::AssumeConnectedToInternet() {
    CoreString service;
    if (!HostEndpoint(Endpoint::WebService, service)) return false;
    // Where the settings cannot be had, what was known of them before still holds.
    FindProxy(service.View(), *this, false);
    return m_autoProxy;
}

// ---------------------------------------------------------------------------------------------------------
// The proxy list

void CNetworkManager::ParseClientProxyInfo(CString& host, int& port) {
    std::string list(View(m_proxyList));
    for (char& c : list)
        c = ToLower(c);
    const ProxyServer proxy = FindHttpProxy(list);
    host = ToText(proxy.host);
    port = proxy.port;
    CoreString address;
    if (HostResolve(proxy.host.c_str(), address)) host = ToText(address.View());
}

CString& CNetworkManager::ConvertToDottedDecimals(CString& list) {
    return list = ToText(WithAddresses(std::string(View(list))));
}

// ---------------------------------------------------------------------------------------------------------
// Name and password

namespace {

constexpr char kCredentialsKey[] = "Software\\Orvane Works\\Brenta V4\\Settings\\Proxy";
constexpr char kUserValue[] = "Username";
constexpr char kPasswordValue[] = "Password";
constexpr std::uint64_t kLongestStored = 1 << 16;

// Who has this source can read the password: it is veiled, not protected. Stored passwords are read by other
// versions of the library, so this may never change.
constexpr char kPasswordVeil[] = "Brenta proxy";

// A veiled password can hold any byte, 0 too, and be of any length. It is stored as a text with its
// terminator, but read by its size.

std::string Terminated(const CString& text) {
    std::string data(View(text));
    return data += '\0';
}

bool ReadText(const registry_store::Place& place, const char* name, decltype(&registry_store::ReadValue) read,
              CString& text) {
    registry_store::Value value;
    const RegistryError error = read(place, name, kLongestStored, value);
    if (error != RegistryError::None || value.type != REG_SZ || value.size > kLongestStored) return false;
    if (value.data.ends_with('\0')) value.data.pop_back();
    text = ToText(value.data);
    return true;
}

registry_store::Place PlaceOf(const RegistryPath& path) {
    return {registry_store::Root::CurrentUser, path};
}

}  // namespace

bool CNetworkManager::SaveAuthentication() try {
    const RegistryPath path(kCredentialsKey);
    const registry_store::Place place = PlaceOf(path);
    CString veil(kPasswordVeil), veiled;
    EncryptPassword(m_password, veil, veiled);
    return registry_store::CreateKey(place) == RegistryError::None &&
           registry_store::WriteValue(place, kUserValue, REG_SZ, Terminated(m_userName)) ==
               RegistryError::None &&
           registry_store::WriteVeiledText(place, kPasswordValue, Terminated(veiled)) == RegistryError::None;
} catch (const std::bad_alloc&) {
    return false;
}

bool CNetworkManager::LookupAuthentication() try {
    const RegistryPath path(kCredentialsKey);
    const registry_store::Place place = PlaceOf(path);
    CString veil(kPasswordVeil), veiled;
    m_userName.Empty();
    m_password.Empty();
    const bool hasUser = ReadText(place, kUserValue, &registry_store::ReadValue, m_userName);
    const bool hasPassword = ReadText(place, kPasswordValue, &registry_store::ReadVeiledText, veiled);
    if (hasPassword) DecryptPassword(m_password, veil, veiled);
    return hasUser && hasPassword;
} catch (const std::bad_alloc&) {
    return false;
}

void CNetworkManager::DeleteAuthentication() {
    CCoreRegistry registry(HKEY_CURRENT_USER);
    if (!registry.SetKey(kCredentialsKey, false)) return;
    registry.DeleteValue(kUserValue);
    registry.DeleteValue(kPasswordValue);
}

// ---------------------------------------------------------------------------------------------------------
// Errors

namespace {

/// The texts for the codes of brenta/network.h; null for others.
const char* DiscoveryText(int code) {
    switch (code) {
        case kProxyInvalidUrl:
            return "The address is invalid.";
        case kProxyUnknownScheme:
            return "The address does not use a recognized protocol.";
        case kProxyBadScript:
            return "The proxy configuration script is in error.";
        case kProxyScriptNotFetched:
            return "The proxy configuration script could not be downloaded.";
        case kProxyScriptTimedOut:
            return "The proxy configuration script took too long.";
        case kProxyNoScriptEngine:
            return "Proxy configuration scripts cannot be run on this machine.";
        case kProxyNotDetected:
            return "The network does not name a proxy configuration script.";
        default:
            return nullptr;
    }
}

}  // namespace

bool CNetworkManager::GetWinHttpWPADErrorMessage(CString& message) {
    message.Empty();
    if (m_lastDiscoveryError == 0) return false;
    const char* const known = DiscoveryText(m_lastDiscoveryError);
    const std::string system = PlatformErrorText(m_lastDiscoveryError);
    if (m_lastDiscoveryError == kProxyNotDetected) {
        message =
            "Could not discover auto-proxy configuration.\n\n"
            "Ensure that your proxy settings are correct and that your system is properly configured for "
            "auto-proxy discovery.\n\n";
        message += known;
    } else if (known) {
        message = "Unable to determine internet autoproxy details\n\n";
        message += known;
    } else if (!system.empty()) {
        message = "Unable to determine internet autoproxy details: ";
        message += system.c_str();
    } else {
        message = "Unable to determine internet autoproxy details: error ";
        message += std::to_string(m_lastDiscoveryError).c_str();
    }
    return true;
}

}  // namespace brenta
