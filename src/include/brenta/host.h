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

namespace brenta {

class CoreString;

/// The services of a host. New members are only ever added at the end.
struct HostServices {
    /// Size of the record that the host was compiled with; leave it as it is. A host built against an older,
    /// shorter record keeps working: the members it does not know count as null.
    std::size_t size = sizeof(HostServices);

    /// Handed to every service.
    void* context = nullptr;

    /// Shows `text` (never null, not a format) and returns the answer: IDOK for MB_OK; IDYES or IDNO for
    /// MB_YESNO (brenta/framework.h). Default: the text on standard error; a yes/no question is asked on the
    /// terminal and answered "no" where there is none.
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
};

/// Replaces all services at once with a copy of `services`; `HostServices{}` restores the defaults.
BRENTA_API void SetHostServices(const HostServices& services);

/// A copy of the services as they were last set.
BRENTA_API HostServices GetHostServices();

}  // namespace brenta
