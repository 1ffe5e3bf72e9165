// brenta fetch: a file from a web server.
#include <memory>
#include <utility>

#include "brenta/host.h"
#include "brenta/http.h"
#include "command.h"
#include "console.h"
#include "progress_bar.h"

namespace brenta::host {
namespace {

/// Moves a bar as the download goes on.
class DownloadBar : public CProgressCtrl {
 public:
    void SetRange32(int lower, int upper) override {
        m_lower = lower;
        m_upper = upper;
    }
    int SetPos(int position) override {
        if (m_upper > m_lower)
            m_bar.Show(static_cast<int>((position - m_lower) * 100LL / (m_upper - m_lower)));
        return std::exchange(m_position, position);
    }
    void Clear() { m_bar.Clear(); }

 private:
    ProgressBar m_bar;
    int m_lower = 0;
    int m_upper = 0;
    int m_position = 0;
};

/// The library's messages are lines of this program's here, and whether the server can be reached shows when
/// it is tried: a server on this machine can be, without any network.
class FetchHost {
 public:
    explicit FetchHost(DownloadBar& bar) : m_bar(bar) {
        HostServices services;
        services.context = this;
        services.isOnline = [](void*) { return true; };
        services.showMessage = [](void* self, const char* text, unsigned int) {
            static_cast<FetchHost*>(self)->m_bar.Clear();
            Complain(ReasonIn(text));
            return IDOK;
        };
        SetHostServices(services);
    }
    ~FetchHost() { SetHostServices(HostServices{}); }
    FetchHost(const FetchHost&) = delete;
    FetchHost& operator=(const FetchHost&) = delete;

 private:
    /// The library speaks of the download that it was made for; the reason behind it is all that matters.
    static std::string ReasonIn(const std::string& text) {
        const std::size_t end = text.rfind("\n\n");
        return end == std::string::npos ? text : text.substr(end + 2);
    }

    DownloadBar& m_bar;
};

int Fetch(const std::string& url, const std::string& file) {
    if (url.empty() || file.empty()) {
        Complain("an address and a file are needed");
        return 1;
    }
    DownloadBar bar;
    const FetchHost host(bar);
    const int isGood = DownloadFile(url.c_str(), file.c_str(), nullptr, &bar);
    bar.Clear();
    return isGood ? 0 : 1;
}

void Define(Command& command) {
    struct Options {
        std::string url, file;
    };
    const auto options = std::make_shared<Options>();
    command.Word("URL", options->url, WordKind::kText, "The http or https address");
    command.Word("FILE", options->file, WordKind::kFile,
                 "Where to put it; an old file stays until the new one is whole");
    command.Explain("The proxy is found as for 'brenta proxy'.");
    command.Example("brenta fetch https://parts.example/small.lbr small.lbr");
    command.Run([options] { return Fetch(options->url, options->file); });
}

const CommandEntry entry("fetch", CommandGroup::kData, "Download a file from a web server", &Define);

}  // namespace

}  // namespace brenta::host
