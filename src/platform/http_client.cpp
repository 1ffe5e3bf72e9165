#include "platform/http_client.h"

#include <exception>

#include "foundation/characters.h"
#include "platform/http_transfer.h"
#include "platform/http_url.h"
#include "platform/proxy_list.h"

namespace brenta {

namespace {

using Text = std::string_view;

/// Whether a host has the form of a pattern in which "*" stands for any text.
bool HasForm(Text host, Text pattern) {
    std::size_t inHost = 0, inPattern = 0, star = Text::npos, behindStar = 0;
    while (inHost < host.size()) {
        if (inPattern < pattern.size() && pattern[inPattern] == '*') {
            star = inPattern++;
            behindStar = inHost;
        } else if (inPattern < pattern.size() && ToLower(pattern[inPattern]) == ToLower(host[inHost])) {
            ++inPattern;
            ++inHost;
        } else if (star != Text::npos) {
            // The last star takes one byte more; what earlier ones took need never change.
            inPattern = star + 1;
            inHost = ++behindStar;
        } else {
            return false;
        }
    }
    return inPattern + 1 >= pattern.size() && pattern.find_first_not_of('*', inPattern) == Text::npos;
}

bool IsBypassed(const HttpUrl& url, Text bypass) {
    for (Text entry = TakeProxyEntry(bypass, kBypassSeparators); !entry.empty();
         entry = TakeProxyEntry(bypass, kBypassSeparators)) {
        if (EqualIgnoringCase(entry, "<local>") ? url.host.find_first_of(".:") == Text::npos
                                                : HasForm(url.host, entry))
            return true;
        // The environment's way: ".firm.com" is the firm and all below it.
        if (entry.front() == '.' &&
            (EqualIgnoringCase(url.host, entry.substr(1)) ||
             (url.host.size() > entry.size() &&
              EqualIgnoringCase(url.host.substr(url.host.size() - entry.size()), entry))))
            return true;
    }
    return false;
}

/// The proxy for an address: the first entry for its scheme, else the first without a scheme, else the first
/// of SOCKS; "" for none.
std::string ChooseProxy(const HttpUrl& url, const HttpProxies& proxies) {
    if (IsBypassed(url, proxies.bypass)) return {};
    Text list = proxies.list, forAll, socks;
    for (Text entry = TakeProxyEntry(list); !entry.empty(); entry = TakeProxyEntry(list)) {
        const std::size_t equals = entry.find('=');
        const Text scheme = entry.substr(0, equals), server = entry.substr(equals + 1);  // npos + 1 is 0
        if (equals != Text::npos && EqualIgnoringCase(scheme, url.scheme)) return std::string(server);
        if (equals == Text::npos && forAll.empty()) forAll = server;
        if (equals != Text::npos && EqualIgnoringCase(scheme, "socks") && socks.empty()) socks = server;
    }
    // Names of hosts are the proxy's to find: those of the inner network may be unknown here.
    return forAll.empty() && !socks.empty() ? "socks5h://" + std::string(socks) : std::string(forAll);
}

/// Judges one answer and hands the good part of it to the sink.
class Judge : public HttpReceiver {
 public:
    Judge(const HttpRequest& request, HttpSink& sink) : m_request(request), m_sink(sink) {}

    bool TakeHead(const HttpHead& head) override {
        m_status = head.status;
        m_length = head.length;
        if (!head.redirection.empty()) {
            m_redirection = head.redirection;
            return false;
        }
        if (head.status < 200 || head.status > 299)
            return Refuse("The server answered with status " + std::to_string(head.status));
        if (m_request.needsLength && !head.endIsMarked)
            return Refuse("The server did not say how long its answer is");
        if (head.length > m_request.limits.bodyBytes) return RefuseSize();
        return m_sink.Begin(head.length) || Refuse(m_sink.Reason());
    }

    bool TakeBody(Text piece) override {
        if (static_cast<std::int64_t>(piece.size()) > m_request.limits.bodyBytes - m_taken)
            return RefuseSize();
        m_taken += static_cast<std::int64_t>(piece.size());
        return m_sink.Write(piece) || Refuse(m_sink.Reason());
    }

    /// What is wrong with the answer, once it is complete; "" if nothing is.
    std::string Verdict() const {
        if (!m_refusal.empty() || !m_redirection.empty()) return m_refusal;
        if (m_status == 0) return "The server did not answer";
        return m_length >= 0 && m_taken != m_length ? "The answer ended too early" : "";
    }

    int Status() const { return m_status; }
    const std::string& Redirection() const { return m_redirection; }

 private:
    bool Refuse(std::string reason) {
        m_refusal = reason.empty() ? "The answer could not be taken" : std::move(reason);
        return false;
    }
    bool RefuseSize() {
        return Refuse("The answer is longer than " + std::to_string(m_request.limits.bodyBytes) + " bytes");
    }

    const HttpRequest& m_request;
    HttpSink& m_sink;
    int m_status = 0;
    std::int64_t m_length = -1;
    std::int64_t m_taken = 0;
    std::string m_redirection;
    std::string m_refusal;
};

HttpResult Get(const HttpRequest& request, HttpSink& sink) {
    HttpResult result;
    std::string url = request.url;
    bool isSecure = false;
    for (int redirects = 0;; ++redirects) {
        HttpUrl parts;
        if (!SplitHttpUrl(url, parts)) {
            result.error =
                redirects == 0 ? "The address is not one of the web" : "The server leads elsewhere";
            return result;
        }
        if (isSecure && parts.scheme != "https") {
            result.error = "The server leads to an address that is not secure";
            return result;
        }
        isSecure = parts.scheme == "https";
        Judge judge(request, sink);
        result.error = Exchange({request, url, ChooseProxy(parts, request.proxies)}, judge);
        result.status = judge.Status();
        if (result.error.empty()) result.error = judge.Verdict();
        if (!result.error.empty() || judge.Redirection().empty()) return result;
        if (redirects == request.limits.redirects) {
            result.error = "The server redirects without end";
            return result;
        }
        url = judge.Redirection();
    }
}

}  // namespace

HttpResult HttpGet(const HttpRequest& request, HttpSink& sink) try {
    return Get(request, sink);
} catch (const std::exception&) {
    return {0, "There is no memory"};
}

bool TextSink::Write(Text piece) try {
    text += piece;
    return true;
} catch (const std::exception&) {
    return false;
}

HttpResult HttpGetText(const HttpRequest& request, std::string& text) {
    TextSink sink;
    HttpResult result = HttpGet(request, sink);
    if (result.Ok()) text.swap(sink.text);
    return result;
}

}  // namespace brenta
