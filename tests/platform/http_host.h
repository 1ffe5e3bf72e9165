// A host, while it lives, whose network is what a test says, and which keeps what the library does.
#pragma once

#include "brenta/framework.h"
#include "brenta/host.h"
#include "test_support.h"

namespace brenta::test {

struct HttpHost {
    HttpHost() {
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
        services.isOnline = [](void* self) { return Of(self).isOnline; };
        services.internetSettings = [](void* self, InternetSettings& result) {
            result = Of(self).settings;
            return true;
        };
        services.endpoint = [](void* self, Endpoint which, CoreString& url) {
            url = Of(self).server.c_str();
            return which == Endpoint::WebServer && !url.IsEmpty();
        };
        services.askForLogin = [](void* self, const char* proxy, CoreString& user, CoreString& password) {
            HttpHost& host = Of(self);
            host.asked.push_back(proxy + ("|" + std::string(user())));
            if (host.logins.empty()) return false;
            user = host.logins.front().first.c_str();
            password = host.logins.front().second.c_str();
            host.logins.erase(host.logins.begin());
            return true;
        };
        services.startProcess = [](void* self, const char* const* arguments, int count, int& error) {
            std::string line;
            for (int i = 0; i < count; ++i)
                line += std::string(i == 0 ? "" : "|") + arguments[i];
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
    ~HttpHost() { SetHostServices(HostServices{}); }
    HttpHost(const HttpHost&) = delete;
    HttpHost& operator=(const HttpHost&) = delete;

    static HttpHost& Of(void* self) { return *static_cast<HttpHost*>(self); }

    Scratch data;
    bool isOnline = true;
    InternetSettings settings;
    std::string server;  ///< of updates
    std::vector<std::pair<std::string, std::string>>
        logins;  ///< what the person answers, one after the other
    int startError = 0;
    Texts shown;  ///< messages as "text|type"
    Texts asked;  ///< for logins, as "server|user"
    Texts started;
};

}  // namespace brenta::test
