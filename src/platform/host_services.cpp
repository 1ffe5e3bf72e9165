#include "platform/host_services.h"

#include "os/programs.h"
#include "os/system.h"
#include "platform/command_words.h"

namespace brenta {

bool HostShellOpen(const char* target) {
    if (!target || *target == 0) return false;
    const HostServices services = GetHostServices();
    return services.shellOpen ? services.shellOpen(services.context, target) : os::OpenWithDesktop(target);
}

namespace {

/// `line` is null if there are only words.
bool Start(const std::vector<std::string>& words, const char* line, int& error) {
    error = os::kErrorNoSuchFile;
    if (words.empty() || words[0].empty()) return false;
    error = 0;
    std::vector<const char*> arguments;
    arguments.reserve(words.size());
    for (const std::string& word : words)
        arguments.push_back(word.c_str());
    const int count = static_cast<int>(arguments.size());
    const HostServices services = GetHostServices();
    return services.startProcess ? services.startProcess(services.context, arguments.data(), count, error)
                                 : os::StartProgram(arguments.data(), count, error, line);
}

}  // namespace

bool HostStartProcess(const std::vector<std::string>& words, int& error) {
    return Start(words, nullptr, error);
}

bool HostStartCommand(const std::string& line, int& error) {
    return Start(CommandWords(line), line.c_str(), error);
}

bool HostBrowseForFolder(const char* title, CoreString& folder) {
    const HostServices services = GetHostServices();
    CoreString chosen = folder;
    if (!services.browseForFolder || !services.browseForFolder(services.context, title ? title : "", chosen))
        return false;
    folder = chosen;
    return true;
}

long long HostTime() {
    const HostServices services = GetHostServices();
    return services.currentTime ? services.currentTime(services.context) : os::CurrentTime();
}

bool HostAskForLogin(const char* server, CoreString& user, CoreString& password) {
    const HostServices services = GetHostServices();
    CoreString givenUser = user, givenPassword = password;
    if (!services.askForLogin ||
        !services.askForLogin(services.context, server ? server : "", givenUser, givenPassword))
        return false;
    user = givenUser;
    password = givenPassword;
    return true;
}

bool HostEndpoint(Endpoint which, CoreString& url) {
    const HostServices services = GetHostServices();
    CoreString known;
    if (!services.endpoint || !services.endpoint(services.context, which, known)) return false;
    url = known;
    return true;
}

}  // namespace brenta
