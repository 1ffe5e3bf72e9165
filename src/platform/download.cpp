#include "platform/download.h"

#include <cerrno>
#include <cstdio>
#include <exception>
#include <limits>
#include <memory>
#include <system_error>

#include "brenta/http.h"
#include "foundation/lack_of_memory.h"
#include "os/os.h"
#include "os/programs.h"
#include "platform/host_services.h"
#include "platform/network_backend.h"
#include "platform/proxy_discovery.h"
#include "platform/proxy_login.h"

namespace brenta {

namespace {

constexpr char kFailure[] = "Error downloading newer version of Brenta";
constexpr char kOffline[] = "\nNot connected to the Internet.";

bool Fail(const std::string& text, const std::string& reason) {
    CoreString message;
    message.Format("%1s\n\n%1s", text.c_str(), reason.c_str());
    AfxMessageBox(message, MB_OK | MB_ICONWARNING);
    return false;
}

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// Writes the body beside the file that it is to replace, and moves the progress on.
class FileSink : public HttpSink {
 public:
    explicit FileSink(CProgressCtrl* progress) : m_pProgress(progress) {}

    bool Create(const char* path) {
        if (!m_replacement.Create(path)) return false;
        m_file.reset(os::OpenStream(m_replacement.NewPath().c_str(), "r+b"));
        return m_file != nullptr;
    }

    bool Begin(std::int64_t length) override {
        // A control counts in int.
        m_isCounted = m_pProgress && length >= 0;
        m_unit = length / std::numeric_limits<int>::max() + 1;
        if (!m_isCounted) return true;
        m_pProgress->SetRange32(0, static_cast<int>(length / m_unit));
        m_pProgress->SetPos(0);
        return true;
    }

    bool Write(std::string_view piece) override {
        errno = 0;
        if (std::fwrite(piece.data(), 1, piece.size(), m_file.get()) != piece.size()) return Note(errno);
        m_taken += static_cast<std::int64_t>(piece.size());
        if (m_isCounted) m_pProgress->SetPos(static_cast<int>(m_taken / m_unit));
        return true;
    }

    std::string Reason() const override {
        const std::string reason = "The file could not be written";
        return m_error == 0 ? reason : reason + ": " + std::generic_category().message(m_error);
    }

    bool Commit() {
        errno = 0;
        if (std::fclose(m_file.release()) != 0) return Note(errno);
        return m_replacement.Commit();
    }

 private:
    bool Note(int error) {
        m_error = error;
        return false;
    }

    CProgressCtrl* const m_pProgress;
    os::Replacement m_replacement;
    std::unique_ptr<std::FILE, CloseFile> m_file;
    std::int64_t m_taken = 0;
    std::int64_t m_unit = 1;
    int m_error = 0;  ///< of the C library; 0 if it told none
    bool m_isCounted = false;
};

}  // namespace

bool DownloadWithin(const HttpLimits& limits, const char* url, const char* file, CNetworkManager& manager,
                    CProgressCtrl* progress) {
    FileSink sink(progress);
    if (!sink.Create(file)) return Fail(kFailure, sink.Reason());
    if (!HostIsOnline())
        return Fail(std::string(kFailure) + kOffline, PlatformErrorText(kErrorNetworkUnreachable));
    FindProxy(url, manager, true);
    // A named proxy is tried without asking first: not all want to know a name.
    if (manager.m_accessType != kAccessNamedProxy) CWinHTTP::GetProxyAuthentication(manager);

    HttpRequest request;
    request.url = url;
    request.userAgent = GetUserAgent()();
    request.reload = true;
    request.needsLength = true;
    request.limits = limits;
    const HttpResult result = HttpGetThroughProxy(request, manager, sink);
    if (!result.Ok()) return Fail(kFailure, result.error);
    return sink.Commit() || Fail(kFailure, sink.Reason());
}

int DownloadFile(const char* url, const char* file, CNetworkManager* manager, CProgressCtrl* progress) try {
    if (!url || *url == 0 || !file || *file == 0) return 0;
    if (manager) return DownloadWithin({}, url, file, *manager, progress);
    CNetworkManager own;
    return DownloadWithin({}, url, file, own, progress);
} catch (const std::exception&) {
    // There may not even be the memory to say so.
    return OrWithoutMemory(false, [] { return Fail(kFailure, PlatformErrorText(os::kErrorNoMemory)); });
}

}  // namespace brenta
