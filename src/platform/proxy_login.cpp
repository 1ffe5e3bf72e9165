#include "platform/proxy_login.h"

#include "brenta/http.h"
#include "platform/host_services.h"

namespace brenta {

namespace {

constexpr int kProxyWantsLogin = 407;
constexpr int kMostLogins = 3;

HttpProxies ProxiesOf(const CNetworkManager& manager) {
    if (manager.m_accessType != kAccessNamedProxy) return {};
    const char *list = manager.m_proxyList, *bypass = manager.m_bypassList, *user = manager.m_userName,
               *password = manager.m_password;
    return {list, bypass, user, password};
}

/// Asks the person and keeps the answer; false, and nothing changed, if there is none.
bool AskForProxyLogin(CNetworkManager& manager) {
    CoreString user(static_cast<const char*>(manager.m_userName));
    CoreString password(static_cast<const char*>(manager.m_password));
    if (!HostAskForLogin(manager.m_proxyList, user, password) || user.IsEmpty()) return false;
    manager.m_userName = user();
    manager.m_password = password();
    // What cannot be stored is asked for again another day.
    manager.SaveAuthentication();
    return true;
}

bool LookUpLogin(CNetworkManager& manager) {
    const CString user = manager.m_userName, password = manager.m_password;
    if (manager.LookupAuthentication() && !manager.m_userName.IsEmpty()) return true;
    manager.m_userName = user;
    manager.m_password = password;
    return false;
}

bool IsStopped(const HttpRequest& request) {
    return request.pStop && request.pStop->load(std::memory_order_relaxed);
}

}  // namespace

bool CWinHTTP::GetProxyAuthentication(CNetworkManager& manager) {
    if (manager.m_accessType != kAccessNamedProxy || !manager.m_userName.IsEmpty()) return true;
    return LookUpLogin(manager) || AskForProxyLogin(manager);
}

HttpResult HttpGetThroughProxy(HttpRequest request, CNetworkManager& manager, HttpSink& sink) {
    for (int logins = 0;; ++logins) {
        request.proxies = ProxiesOf(manager);
        HttpResult result = HttpGet(request, sink);
        if (result.status != kProxyWantsLogin || logins == kMostLogins || IsStopped(request)) return result;
        const bool wasRefused = !request.proxies.user.empty();
        if (wasRefused ? !AskForProxyLogin(manager) : !CWinHTTP::GetProxyAuthentication(manager))
            return result;
    }
}

}  // namespace brenta
