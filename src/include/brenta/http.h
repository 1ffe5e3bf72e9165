/// @file
/// Reaching web servers: downloads with a progress bar, the check for a newer version of the application, the
/// proxy's name and password, and the person's web browser.
///
/// Use it for what a person asked for or waits for. How the machine reaches the internet at all is the
/// business of brenta/network.h, and every function here looks that up by itself:
///
///     CNetworkManager network;
///     ReadUpdatePage(&network);                                         // at the start; returns at once
///     ...
///     if (DownloadFile("https://firm.example/setup.bin", "setup.bin", &network, &progressBar)) Install();
///     CString manual("https://firm.example/manual");
///     CWinHTTP::LaunchWebBrowser(manual);
///
/// Only http and https addresses are reached, and https only with a valid certificate. Up to five redirects
/// are followed, none of them from https to http. A server that takes 30 seconds to accept a connection, or
/// that for 60 seconds sends less than 64 bytes a second, has failed, and so has one whose answer is shorter
/// than it said.
///
/// What goes wrong is shown to the person in a message box (brenta/host.h: showMessage). Texts are 8-bit;
/// null counts as "". Addresses are ASCII, other characters in them percent-encoded by the caller.
#pragma once

#include "brenta/export.h"
#include "brenta/framework.h"
#include "brenta/network.h"
#include "brenta/string.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Proxy credentials, proxy discovery, browser

/// Helpers around a request. All static; any thread, each manager being used by one at a time.
class BRENTA_API CWinHTTP {
 public:
    /// Sees to it that the manager holds a name and password for its proxy: those it has, else the stored
    /// ones, else what a person gives when asked (brenta/host.h: askForLogin), which is then stored. True
    /// also if there is no proxy; false, and the manager unchanged, if nobody gave a name.
    static bool GetProxyAuthentication(CNetworkManager& manager);

    /// Shows a web page in the person's browser and does not wait for it. The browser is the program that the
    /// registry names under HKEY_LOCAL_MACHINE: "SOFTWARE\Classes\HTTP\shell\open\command" or
    /// "SOFTWARE\Classes\HTTPS\shell\open\command", else the program registered for ".htm" or ".html"; the
    /// address takes the place of "%1", "%l" and "%L" in its command, or stands behind it. Where nothing is
    /// registered the desktop chooses (brenta/host.h: shellOpen).
    ///
    /// An address that is neither http nor https, or holds a blank or control character, is refused; a double
    /// quote in it is passed as "%22", a backslash at its end as "%5C". False, and a message box, if no
    /// browser could be started. `url` stays as it is.
    static bool LaunchWebBrowser(CString& url);

    /// Asks the automatic proxy configuration for the proxy of an address: the script at `scriptUrl`, or with
    /// "" what the network itself names. Fills the manager's access type and both lists; false, and these
    /// unchanged, if no answer could be had. The manager's last discovery error tells why (brenta/network.h);
    /// it is 0 after success. Takes seconds when the script is far away.
    static bool GetWPADInternetProxyInfo(const wchar_t* url, const wchar_t* scriptUrl,
                                         CNetworkManager& manager);
};

/// How the library names itself to servers: "BRENTA_AGENT(4.0.0.0)", with the version of its own module.
BRENTA_API CoreString GetUserAgent();

// ---------------------------------------------------------------------------------------------------------
// Downloads

/// Fetches an address into a file and waits until it is there; nonzero on success. An old file is replaced
/// only by a whole new one: after every failure it is as it was. Caches on the way are passed over.
///
/// Both texts must be non-empty, else nothing happens and the result is 0. `manager` is told the proxy and,
/// if that asks for them, the person's name and password; null uses one of the function's own. `progress`
/// (null: none) receives the range and then the position, on the calling thread and in bytes, or in larger
/// units for more bytes than an int can count; nothing if the server does not tell the length. Any other
/// failure shows "Error downloading newer version of Brenta" with the reason.
BRENTA_API int DownloadFile(const char* url, const char* file, CNetworkManager* manager,
                            CProgressCtrl* progress);

// ---------------------------------------------------------------------------------------------------------
// Update check

/// Counts down to the next check for a newer version and, when it is due, makes it on a thread of the
/// library; returns at once either way. Call it at every start of the application, from one thread.
///
/// Nothing happens while the machine is offline. Otherwise the application value "CheckForUpdates" of the
/// section "Settings" (brenta/settings.h) is looked at: 1 or more is decremented, and that was all; below 1
/// the server is asked, unless there is no endpoint Endpoint::WebServer (brenta/host.h) or an earlier check
/// still runs. Nothing sets the value again but the host.
///
/// What the server answered is found in the section "Update": "UpdateVersion", "UpdateInstallStr",
/// "UpdateSize" and "UpdateInstallArgs". If its version is not newer than the library's own,
/// "UpdateVersion" is the library's own. An answer that is not understood to the last byte writes nothing. A
/// failure shows "Error checking for newer version of Brenta".
///
/// The check works on its own copy of the manager (null: a new one). Host services are then called on the
/// library's thread.
BRENTA_API void ReadUpdatePage(CNetworkManager* manager);

/// Ends a running check, without a message, and waits for its thread; does nothing if there is none. For
/// hosts that unload the library or want to end quickly: unloading and the end of the process do it, too.
/// Takes about a second at most, more only while a proxy is being looked up or a person is being asked; never
/// call it from a thread that a host service waits for.
BRENTA_API void StopUpdateCheck();

}  // namespace brenta
