// A host whose network, clock and person are what a test says, and which keeps what the library does.
#pragma once

#include <map>

#include "brenta/framework.h"
#include "brenta/host.h"
#include "platform/data_folder.h"

namespace brenta::test {

/// While it lives the library sees this network, and a data folder of its own.
class MadeUpNetwork {
 public:
    MadeUpNetwork() {
        HostServices services;
        services.context = this;
        services.showMessage = [](void* self, const char* text, unsigned int type) {
            Of(self).shown.push_back(text + ("|" + std::to_string(type)));
            return IDOK;
        };
        services.applicationDataFolder = [](void* self, CoreString& folder) {
            folder = (Of(self).data / "data").c_str();
            return true;
        };
        services.currentTime = [](void* self) { return Of(self).time; };
        services.resolveHost = [](void* self, const char* host, CoreString& address) {
            Of(self).resolved.emplace_back(host);
            const auto position = Of(self).addresses.find(host);
            if (position != Of(self).addresses.end()) address = position->second.c_str();
            return position != Of(self).addresses.end();
        };
        services.internetSettings = [](void* self, InternetSettings& found) {
            found = Of(self).settings;
            return Of(self).hasSettings;
        };
        services.isOnline = [](void* self) {
            ++Of(self).tests;
            return Of(self).isOnline;
        };
        services.endpoint = [](void* self, Endpoint which, CoreString& url) {
            url = Of(self).endpoints[which].c_str();
            return !url.IsEmpty();
        };
        services.askForLogin = [](void* self, const char* proxy, CoreString& user, CoreString& password) {
            auto& answers = Of(self).logins;
            Of(self).asked.push_back(proxy + ("|" + std::string(user())));
            if (answers.empty()) return false;
            user = answers.front().first.c_str();
            password = answers.front().second.c_str();
            answers.erase(answers.begin());
            return true;
        };
        services.startProcess = [](void* self, const char* const* arguments, int count, int& error) {
            std::string line = arguments[0];
            for (int i = 1; i < count; ++i)
                line += std::string("|") + arguments[i];
            Of(self).started.push_back(line);
            error = Of(self).startError;
            return error == 0;
        };
        services.shellOpen = [](void* self, const char* target) {
            Of(self).started.push_back(std::string("desktop|") + target);
            return Of(self).startError == 0;
        };
        SetHostServices(services);
    }
    ~MadeUpNetwork() { SetHostServices({}); }

    const Scratch data;
    const OwnRegistry registry{data.Path(), true};
    std::map<std::string, std::string> addresses = {{"proxy", "10.0.0.1"}, {"a", "10.0.0.2"}};
    InternetSettings settings;
    bool hasSettings = true;
    long long time = 1'000'000;
    bool isOnline = true;
    std::map<Endpoint, std::string> endpoints;
    std::vector<std::pair<std::string, std::string>> logins;  ///< the person's answers, in turn
    int startError = 0;                                       ///< of every program

    int tests = 0;   ///< of isOnline
    Texts shown;     ///< messages as "text|type"
    Texts resolved;  ///< what the resolver was asked
    Texts asked;     ///< what the person was asked, as "server|user"
    Texts started;   ///< programs as "program|argument"

 private:
    static MadeUpNetwork& Of(void* self) { return *static_cast<MadeUpNetwork*>(self); }
};

}  // namespace brenta::test
