/// @file
/// The host's door: what the library shows to a person or asks of its surroundings, and how a host replaces
/// it.
///
/// Each service is a plain function pointer beside one `context` pointer that is handed back in every call. A
/// service left null keeps the built-in default, which is right for a console program. A desktop host that
/// shows its own message box:
///
///     int Show(void* window, const char* text, unsigned int type) {
///         return static_cast<MainWindow*>(window)->Ask(text, type == brenta::MB_YESNO);
///     }
///     brenta::HostServices services;
///     services.context = &mainWindow;
///     services.showMessage = &Show;
///     brenta::SetHostServices(services);
///
/// Set the services before other threads use the library, and keep the context alive as long as it does: a
/// service runs on whatever thread needs it. The library holds none of its locks during the call, so a
/// service may call the library. The forced-crash handler has a door of its own (brenta/failure.h).
#pragma once

#include <cstddef>

#include "brenta/export.h"
#include "brenta/string.h"

namespace brenta {

/// Flags of the internet settings; several may be set.
inline constexpr int kDirectConnection = 1;     ///< without a proxy
inline constexpr int kNamedProxy = 2;           ///< the proxy and bypass lists hold
inline constexpr int kConfigurationScript = 4;  ///< the script at scriptUrl tells the proxy for each address
inline constexpr int kDetectProxy = 8;          ///< the network tells where the script is

/// How a person's programs reach the internet.
struct InternetSettings {
    int flags = kDirectConnection;
    CoreString proxyList;   ///< "host:port" or "scheme=host:port", separated by semicolons or blanks
    CoreString bypassList;  ///< hosts that are reached without the proxy
    CoreString scriptUrl;   ///< "" if none is set
    CoreString user;        ///< name for the proxy, if the settings hold it
    CoreString password;    ///< password for the proxy, if the settings hold it
    CoreString source;      ///< where the settings come from, for a person to read: "environment"
};

/// What the library reaches of its own accord.
enum class Endpoint : int {
    WebService = 1,  ///< the service for which proxies are looked up
    WebSite = 2,     ///< the site by which the connection is tested
    WebServer = 3,   ///< the server that is asked for newer versions
};

/// The services of a host. New members are only ever added at the end.
struct HostServices {
    /// Size of the record that the host was compiled with; leave it as it is. A host built against an older,
    /// shorter record keeps working: the members it does not know count as null.
    std::size_t size = sizeof(HostServices);

    /// Handed to every service.
    void* context = nullptr;

    /// Shows `text` (never null, not a format) and returns the answer: IDOK for MB_OK; IDYES or IDNO for
    /// MB_YESNO (brenta/framework.h; MB_ICONWARNING may be added to the type). Default: the text on standard
    /// error; a yes/no question is asked on the terminal and answered "no" where there is none.
    int (*showMessage)(void* context, const char* text, unsigned int type) = nullptr;

    /// Stores the string resource with this number in `text`; false if there is none. Default: none.
    bool (*loadString)(void* context, unsigned int id, CoreString& text) = nullptr;

    /// Stores the folder for application data, in the platform's own form and without a separator at its end;
    /// false if it is unknown. Default: the environment's BRENTA_APPDATA; else on Linux $XDG_DATA_HOME or
    /// ~/.local/share, on Windows the common application-data folder.
    bool (*applicationDataFolder)(void* context, CoreString& folder) = nullptr;

    /// Stores the full path of the running executable, in the platform's own form; false if it is unknown.
    /// Default: the path that the system reports.
    bool (*executablePath)(void* context, CoreString& path) = nullptr;

    /// Opens a file or web address the way the desktop does when a person double-clicks it; false if that
    /// failed. Default: on Linux $BROWSER or xdg-open, without a shell in between; on Windows the shell.
    bool (*shellOpen)(void* context, const char* target) = nullptr;

    /// Starts a program and does not wait for it. `arguments` are `count` words, the program first. False
    /// if it could not be started; `error` is then the system's error number. Default: the system's way.
    bool (*startProcess)(void* context, const char* const* arguments, int count, int& error) = nullptr;

    /// Lets a person choose a folder and stores its path; false if nothing was chosen. Default: false.
    bool (*browseForFolder)(void* context, const char* title, CoreString& folder) = nullptr;

    /// The time in seconds since 1970, UTC. Default: the system's clock.
    long long (*currentTime)(void* context) = nullptr;

    /// The settings that the host application keeps itself (GetRegValue and SetRegValue in
    /// brenta/settings.h): reads one, "" if it is absent; writes one. False on failure. Default: the
    /// application's key in the registry of the current user.
    bool (*readProfile)(void* context, const char* section, const char* key, CoreString& value) = nullptr;
    bool (*writeProfile)(void* context, const char* section, const char* key, const char* value) = nullptr;

    /// The IPv4 address of a host name, in dotted decimals; false if there is none. `host` is never empty.
    /// Default: the system's resolver.
    bool (*resolveHost)(void* context, const char* host, CoreString& address) = nullptr;

    /// The internet settings of the person at the machine; false if they cannot be had. Default: on Linux the
    /// environment and the desktop's settings, on Windows the system's.
    bool (*internetSettings)(void* context, InternetSettings& settings) = nullptr;

    /// Whether the machine is connected to a network beyond itself. Default: whether it has a route there.
    bool (*isOnline)(void* context) = nullptr;

    /// Asks a person for the name and password that a proxy or server wants; false if they were not given.
    /// Both strings hold what is known already. Default: false.
    bool (*askForLogin)(void* context, const char* server, CoreString& user, CoreString& password) = nullptr;

    /// The addresses that the library reaches of its own accord. Default: none, and what needs one fails as
    /// if the machine were offline.
    bool (*endpoint)(void* context, Endpoint which, CoreString& url) = nullptr;
};

/// Replaces all services at once with a copy of `services`; `HostServices{}` restores the defaults.
BRENTA_API void SetHostServices(const HostServices& services);

/// A copy of the services as they were last set.
BRENTA_API HostServices GetHostServices();

}  // namespace brenta
