// A host whose settings, names, clock and endpoints a test makes up.
#pragma once

#include <map>
#include <string>

#include "brenta/host.h"
#include "test_support.h"

namespace brenta::test {

/// While it lives the library sees this network, this clock, and a data folder of its own.
class MadeUpNetwork {
 public:
    MadeUpNetwork() {
        HostServices services;
        services.context = this;
        services.showMessage = [](void* self, const char* text, unsigned int) {
            Of(self).shown.emplace_back(text);
            return 1;
        };
        services.applicationDataFolder = [](void* self, CoreString& folder) {
            folder = (Of(self).m_folder / "data").c_str();
            return true;
        };
        services.currentTime = [](void* self) { return Of(self).time; };
        services.resolveHost = [](void* self, const char* host, CoreString& address) {
            Of(self).asked.emplace_back(host);
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
        SetHostServices(services);
    }
    ~MadeUpNetwork() { SetHostServices({}); }
    MadeUpNetwork(const MadeUpNetwork&) = delete;
    MadeUpNetwork& operator=(const MadeUpNetwork&) = delete;

    Texts shown;
    Texts asked;  ///< of the resolver
    std::map<std::string, std::string> addresses = {{"proxy", "10.0.0.1"}, {"a", "10.0.0.2"}};
    InternetSettings settings;
    bool hasSettings = true;
    long long time = 1'000'000;
    bool isOnline = true;
    int tests = 0;  ///< of isOnline
    std::map<Endpoint, std::string> endpoints;

 private:
    static MadeUpNetwork& Of(void* self) { return *static_cast<MadeUpNetwork*>(self); }

    Scratch m_folder;
};

}  // namespace brenta::test
