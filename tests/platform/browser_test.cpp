#include <system_error>

#include "brenta/http.h"
#include "brenta/registry.h"
#include "made_up_network.h"
#include "os/programs.h"
#include "platform/registry_store.h"

namespace brenta::test {
namespace {

void SetMachineValue(const char* key, const std::string& value) {
    const std::string name = std::string("SOFTWARE\\Classes\\") + key;
    const RegistryPath path(name.c_str());
    const registry_store::Place place{registry_store::Root::LocalMachine, path};
    const DWORD type = value.starts_with('%') ? REG_EXPAND_SZ : REG_SZ;
    ASSERT_EQ(registry_store::CreateKey(place), RegistryError::None);
    ASSERT_EQ(registry_store::WriteValue(place, "", type, value + '\0'), RegistryError::None);
}

TEST(Browser, CommandOfTheRegistry) {
    constexpr char http[] = "HTTP\\shell\\open\\command", https[] = "HTTPS\\shell\\open\\command",
                   page[] = "page\\shell\\open\\command";
    using Values = std::vector<std::pair<const char*, const char*>>;
    // Values of the machine; address; the words of the command.
    const std::tuple<Values, const char*, const char*> rows[] = {
        {{}, "http://h/", "desktop|http://h/"},
        {{{http, "web"}}, "http://h/?a=1&b=2", "web|http://h/?a=1&b=2"},
        {{{http, "\"C:\\My Web\\web.exe\" -url \"%1\" --last"}},
         "https://h/",
         "C:\\My Web\\web.exe|-url|https://h/|--last"},
        {{{https, "secure"}, {".htm", "page"}, {page, "reader"}}, "http://h/", "secure|http://h/"},
        {{{".htm", "page"}, {page, "reader --url=%1"}}, "http://h/", "reader|--url=http://h/"},
        {{{".htm", "none"}, {".html", "page"}, {page, "reader"}}, "http://h/", "reader|http://h/"},
        {{{http, "web"}}, "http://h/\" --run evil", ""},
        {{{http, "web"}}, "http://h/\"x", "web|http://h/%22x"},
        {{{http, "web \"%1\""}}, "http://h/%1", "web|http://h/%1"},
        {{{http, " \"a web%1\" %l --url=%L%2"}}, "http://h/", "a web%1|http://h/|--url=http://h/%2"},
        {{{http, "\"web.bat\"/url:\"%1\""}}, "http://h/", "desktop|http://h/"},
        {{{http, "web \"%1\" x"}}, "http://h/\\\\", "web|http://h/%5C%5C|x"},
        {{{http, "%BRENTA_WEB% %none% %%1"}}, "http://h/", "a|web|%none%|%http://h/"},
        {{{http, "web %BRENTA_WEB%"}}, "http://h/", "web|%BRENTA_WEB%|http://h/"}};
    SetVariable("BRENTA_WEB", "a web");
    for (const auto& [values, address, words] : rows) {
        MadeUpNetwork host;
        for (const auto& [key, value] : values)
            SetMachineValue(key, value);
        CString url(address);
        EXPECT_EQ(CWinHTTP::LaunchWebBrowser(url), *words != 0) << address;
        EXPECT_EQ(host.started, *words ? Texts{words} : Texts{});
        EXPECT_STREQ(url, address);
    }
}

TEST(Browser, Failures) {
    const auto message = [](int error) {
        return "Error launching web browser.  CreateProcess( ) failed with error " + std::to_string(error) +
               ": " + std::system_category().message(error) + "|0";
    };
    MadeUpNetwork host;
    for (const char* address :
         {"", "file:///etc/passwd", "-opt", "http://", "javascript:x", "http://h/\n", "http://h/ x"}) {
        CString url(address);
        host.shown.clear();
        EXPECT_FALSE(CWinHTTP::LaunchWebBrowser(url));
        EXPECT_EQ(host.shown, Texts{message(os::kErrorBadArgument)}) << address;
    }
    EXPECT_EQ(host.started, Texts{});
    CString url("http://h/");
    SetMachineValue("HTTP\\shell\\open\\command", "web");
    host.startError = 13;
    host.shown.clear();
    EXPECT_FALSE(CWinHTTP::LaunchWebBrowser(url));
    EXPECT_EQ(host.shown, Texts{message(13)});
}

}  // namespace
}  // namespace brenta::test
