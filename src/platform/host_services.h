// The host's services as the library calls them: each function asks the host and, where the host left the
// service to the library, uses the default that brenta/host.h promises. None may be called while a lock is
// held.
//
// A default stands with those who know about it: the comment behind a group names the file.
#pragma once

#include <string>
#include <vector>

#include "brenta/host.h"

namespace brenta {

// Programs, places and the clock (host_services.cpp). A null text counts as "", and a null, empty or unknown
// target or program is refused.

bool HostShellOpen(const char* target);
/// The program comes first. `error` is 0 on success and the system's error number otherwise.
bool HostStartProcess(const std::vector<std::string>& words, int& error);
/// The same for a command line, which a system whose programs are started by one gets as it stands.
bool HostStartCommand(const std::string& line, int& error);
/// On false `folder` is as it was.
bool HostBrowseForFolder(const char* title, CoreString& folder);
/// Seconds since 1970, UTC.
long long HostTime();

// What only a host can tell (host_services.cpp). On false the strings are as they were.

bool HostAskForLogin(const char* server, CoreString& user, CoreString& password);
bool HostEndpoint(Endpoint which, CoreString& url);

// The host application's own settings (host_profile.cpp). A value that cannot be read is "".

bool HostReadProfile(const char* section, const char* key, CoreString& value);
bool HostWriteProfile(const char* section, const char* key, const char* value);

// The network (host_network.cpp). On false the results are as they were.

bool HostResolve(const char* host, CoreString& address);
bool HostInternetSettings(InternetSettings& settings);
bool HostIsOnline();

}  // namespace brenta
