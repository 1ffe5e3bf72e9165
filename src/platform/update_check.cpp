#include "platform/update_check.h"

#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "brenta/http.h"
#include "brenta/settings.h"
#include "os/os.h"
#include "platform/host_services.h"
#include "platform/own_version.h"
#include "platform/proxy_discovery.h"
#include "platform/proxy_login.h"

namespace brenta {

namespace {

constexpr char kFailure[] = "Error checking for newer version of Brenta";
constexpr char kPath[] = "/Brenta/UpdateCheckNew.ashx";
constexpr char kSection[] = "Update";

std::string PageAddress(std::string_view server) {
    while (server.ends_with('/'))
        server.remove_suffix(1);
    const bool hasScheme = server.find("://") != std::string_view::npos;
    return (hasScheme ? "" : "http://") + std::string(server) + kPath;
}

/// False if any of the values could not be stored. The version comes last: a host that looks at it first
/// finds the others in place.
bool Store(const UpdateOffer& offer) {
    const CoreString version =
        IsNewerThanOwn(offer.build.c_str()) ? CoreString(offer.build.c_str()) : OwnVersion();
    return SetAppValue(kSection, "UpdateInstallStr", offer.installString.c_str()) &&
           SetAppValue(kSection, "UpdateSize", offer.size.c_str()) &&
           SetAppValue(kSection, "UpdateInstallArgs", offer.installArguments.c_str()) &&
           SetAppValue(kSection, "UpdateVersion", version());
}

bool Fail(const std::atomic<bool>& stop, const std::string& reason) {
    if (!stop) AfxMessageBox((kFailure + (reason.empty() ? reason : "\n\n" + reason)).c_str());
    return false;
}

std::atomic<class UpdateWorker*> g_pWorker{nullptr};

/// The one thread for checks. Its object is built by the first check, behind libcurl's global state, and so
/// goes before it: at the end of the process as well as when the library is unloaded no thread is left that
/// could still be using it. (Where it could not be waited for, the library stays loaded.)
class UpdateWorker {
 public:
    UpdateWorker() {
        PrepareHttp();
        g_pWorker = this;
    }
    ~UpdateWorker() {
        g_pWorker = nullptr;
        Stop();
        // Still running only where a host service on the thread itself ends the process.
        if (m_thread.joinable()) m_thread.detach();
    }
    UpdateWorker(const UpdateWorker&) = delete;
    UpdateWorker& operator=(const UpdateWorker&) = delete;

    bool IsRunning() const { return m_isRunning; }

    /// False if there can be no thread. True also if another caller's check runs.
    bool Start(const std::string& server, const CNetworkManager& manager) try {
        auto copy = std::make_unique<CNetworkManager>(manager);
        const std::lock_guard lock(m_mutex);
        if (m_isRunning) return true;
        if (m_thread.joinable()) m_thread.join();
        m_stop = false;
        os::KeepLoaded();
        m_isRunning = true;
        m_thread = std::thread([this, server, own = std::move(copy)] { Run(server, *own); });
        return true;
    } catch (const std::exception&) {
        m_isRunning = false;
        return false;
    }

    void Stop() {
        m_stop = true;
        Wait();
    }

    void Wait() {
        // A host service on the thread itself cannot wait for its own end.
        if (m_id.load() == std::this_thread::get_id()) return;
        const std::lock_guard lock(m_mutex);
        if (m_thread.joinable()) m_thread.join();
    }

 private:
    void Run(const std::string& server, CNetworkManager& manager) {
        m_id = std::this_thread::get_id();
        try {
            CheckForUpdate(server, manager, UpdateLimits(), m_stop);
        } catch (const std::exception&) {
            Fail(m_stop, "");
        }
        m_id = std::thread::id();
        m_isRunning = false;
    }

    std::mutex m_mutex;
    std::thread m_thread;
    std::atomic<std::thread::id> m_id;
    std::atomic<bool> m_isRunning{false};
    std::atomic<bool> m_stop{false};
};

UpdateWorker& Worker() {
    static UpdateWorker worker;
    return worker;
}

/// Whether a check is due; counts down if not.
bool CountDown() {
    int remaining = 0;
    GetAppValue("Settings", "CheckForUpdates", remaining);
    if (remaining < 1) return true;
    SetAppValue("Settings", "CheckForUpdates", remaining - 1);
    return false;
}

}  // namespace

HttpLimits UpdateLimits() {
    HttpLimits limits;
    limits.bodyBytes = 65536;
    limits.totalSeconds = 300;
    return limits;
}

bool CheckForUpdate(const std::string& server, CNetworkManager& manager, const HttpLimits& limits,
                    const std::atomic<bool>& stop) {
    HttpRequest request;
    request.url = PageAddress(server);
    request.userAgent = GetUserAgent()();
    request.needsLength = true;
    request.limits = limits;
    request.pStop = &stop;
    FindProxy(request.url, manager, false);
    TextSink answer;
    const HttpResult result = HttpGetThroughProxy(request, manager, answer);
    if (!result.Ok()) return Fail(stop, result.error);
    UpdateOffer offer;
    if (stop) return false;
    return (ParseUpdateAnswer(answer.text, offer) && Store(offer)) || Fail(stop, "");
}

void ReadUpdatePage(CNetworkManager* manager) try {
    if (!HostIsOnline() || !CountDown()) return;
    CoreString server;
    if (!HostEndpoint(Endpoint::WebServer, server) || server.IsEmpty()) return;
    UpdateWorker& worker = Worker();
    if (worker.IsRunning()) return;
    if (!worker.Start(server(), manager ? *manager : CNetworkManager())) AfxMessageBox(kFailure);
} catch (const std::exception&) {
    AfxMessageBox(kFailure);
}

void StopUpdateCheck() {
    if (UpdateWorker* worker = g_pWorker) worker->Stop();
}

void WaitForUpdateCheck() {
    if (UpdateWorker* worker = g_pWorker) worker->Wait();
}

}  // namespace brenta
