/// @file
/// How the library reaches the internet from a person's machine: which proxy serves an address, the name and
/// password for it, and whether the machine is online.
///
/// Use it before a request of your own, so that it takes the way that a person's other programs take:
///
///     CNetworkManager network;                                   // with the stored name and password
///     GetClientInternetProxyInfo(L"https://parts.example/list", network, true);
///     if (network.m_accessType == kAccessNamedProxy)
///         UseProxy(network.m_proxyList, network.m_bypassList);
///     else
///         UseNoProxy();
///
/// What is asked of the surroundings (the internet settings, the resolver, the clock, the endpoints) can be
/// replaced through the services of brenta/host.h.
///
/// One manager is used by one thread at a time; ThreadSafeCopy hands one to another thread. Several managers
/// may be used side by side. A manager is some 300 bytes and its texts. Looking up a proxy costs a few
/// milliseconds; with a configuration script the script is fetched and run, which may take seconds.
#pragma once

#include "brenta/export.h"
#include "brenta/framework.h"
#include "brenta/host.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Values of the fields

inline constexpr int kAccessNoProxy = 1;     ///< servers are reached directly
inline constexpr int kAccessNamedProxy = 3;  ///< servers are reached through the proxy list

/// Why no proxy could be found automatically. Other values are error numbers of the system.
inline constexpr int kProxyInvalidUrl = 12005;        ///< the address is no address
inline constexpr int kProxyUnknownScheme = 12006;     ///< the address is neither http nor https nor ftp
inline constexpr int kProxyBadScript = 12166;         ///< the script does not run or its answer means nothing
inline constexpr int kProxyScriptNotFetched = 12167;  ///< the script could not be fetched
inline constexpr int kProxyScriptTimedOut = 12002;    ///< the script ran for too long and was stopped
inline constexpr int kProxyNoScriptEngine = 12178;    ///< this machine cannot run scripts
inline constexpr int kProxyNotDetected = 12180;       ///< the network names no script

// ---------------------------------------------------------------------------------------------------------
// CNetworkManager

/// What is known about the way to the internet. The fields are plain: read them after a look-up, and set the
/// name and password that a person typed.
class BRENTA_API CNetworkManager : public CObject {
 public:
    /// No proxy, offline until tested, and the name and password from LookupAuthentication.
    CNetworkManager();
    /// Copies all fields but the script's address: a new manager has none, an assigned one keeps its own.
    CNetworkManager(const CNetworkManager& other);
    CNetworkManager& operator=(const CNetworkManager& other);
    ~CNetworkManager() override;

    const CRuntimeClass* GetRuntimeClass() const override;
    static const CRuntimeClass kRuntimeClass;

    /// Assigns `from` to `to`. With a semaphore one pass is held meanwhile, for which it waits without limit;
    /// null assigns at once. All threads that share either manager must pass the same semaphore.
    static void ThreadSafeCopy(CNetworkManager& to, CNetworkManager& from, CSemaphore* lock);

    // -----------------------------------------------------------------------------------------------------
    // Connection

    /// Whether the internet can be reached. An answer stands for 60 seconds, and for as long as the clock
    /// shows a time before the test; then it is tested again, which may take ten seconds. It is reached when
    /// proxies are configured automatically or by name, and else if the web site among the endpoints takes a
    /// connection. Without endpoints it counts as not reached, save through a named proxy.
    bool IsConnectedToInternet();

    /// Looks up the proxy for the web service among the endpoints, and returns whether proxies are configured
    /// automatically: as at the last look-up, where the settings cannot be had. Nothing is tested, and the
    /// answer of IsConnectedToInternet stays as it was. False without that endpoint.
    bool AssumeConnectedToInternet();

    // -----------------------------------------------------------------------------------------------------
    // Name and password for the proxy, kept for the current user in the registry below "Software\Orvane
    // Works\Brenta V4\Settings\Proxy". The password is made unreadable there to a chance look, which is no
    // protection against anybody who wants to know it.

    /// Stores both fields; false if that failed, and then the name alone may have been stored.
    bool SaveAuthentication();
    /// Reads both into the fields; what is not there is "". False unless both are there.
    bool LookupAuthentication();
    /// Removes both from the registry. The fields stay.
    void DeleteAuthentication();

    // -----------------------------------------------------------------------------------------------------
    // Errors

    /// The text for the last error of the automatic proxy configuration, for a person to read; false, and "",
    /// if there was no error.
    bool GetWinHttpWPADErrorMessage(CString& message);

    // -----------------------------------------------------------------------------------------------------
    // Fields

    int m_accessType = kAccessNoProxy;  ///< kAccessNoProxy or kAccessNamedProxy
    /// Entries "host:port" or "scheme=host:port" separated by semicolons or blanks; an entry without a scheme
    /// serves all, and one of the scheme "socks" what no other does. Host names are replaced by their
    /// addresses where these are known.
    CString m_proxyList;
    /// Host names, with "*" for any characters, that are reached without the proxy; separated likewise.
    CString m_bypassList;
    CString m_userName;  ///< for the proxy
    CString m_password;  ///< for the proxy, readable
    /// The host's own; the library copies them and does nothing else with them.
    CString m_texts[5];
    int m_numbers[2] = {0, 0};     ///< likewise
    bool m_autoProxy = false;      ///< a script or detection was asked for the proxy at the last look-up
    bool m_connected = false;      ///< the last answer of IsConnectedToInternet
    long long m_lastTest = 0;      ///< when it was tested, in seconds since 1970
    int m_lastDiscoveryError = 0;  ///< of the automatic configuration; 0 after success
    CString m_scriptUrl;           ///< the configuration script's address, if one is set

 protected:
    /// The HTTP proxy of the list, in lower case: the first entry of the scheme "http", else the first entry
    /// of all if it has no scheme. The host's name is replaced by its address where that is known; an address
    /// in brackets keeps them. `host` is "" and `port` 0 if there is no such entry, or no host or port from 1
    /// to 65535 in it.
    void ParseClientProxyInfo(CString& host, int& port);

    /// Replaces the host names of a proxy list by their addresses, as far as these are known, and puts
    /// semicolons between the entries. A list in which any entry has no port stays as it was. Returns `list`.
    CString& ConvertToDottedDecimals(CString& list);

 private:
    void CopyFields(const CNetworkManager& other);
};

// ---------------------------------------------------------------------------------------------------------
// Looking up

/// Finds the proxy for an address (null counts as "") and fills the manager's access type, lists, script
/// address, auto-proxy flag and last error. A script, or detection by the network, comes first; if there is
/// neither, or it fails, the proxy that the settings name; else none. A name and password in the settings are
/// taken over if the manager has no name.
///
/// False if the internet settings cannot be had: the manager is then as it was, and with `showErrors` a
/// message box says so. A script that fails is no error here: see GetWinHttpWPADErrorMessage.
///
/// Scripts are fetched by http or https or read by file:, and run in a process of their own that can be
/// stopped: a script can neither hang nor crash the host. It is stopped after ten seconds.
BRENTA_API bool GetClientInternetProxyInfo(const wchar_t* url, CNetworkManager& manager, bool showErrors);

/// The internet settings as the look-up sees them: the host's, or else the platform's (on Linux the
/// environment's http_proxy and its like; if it names none the desktop's). False, and `settings` as it was,
/// if they cannot be had.
BRENTA_API bool GetInternetSettings(InternetSettings& settings);

}  // namespace brenta
