#include <cstdlib>
#include <fstream>

#include "host_process.h"
#include "test_support.h"

namespace brenta::test {
namespace {

std::string Quoted(const std::string& word) {
    std::string quoted = "'";
    for (const char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

}  // namespace

const char* const kFullFile = "/dev/full";
const char* const kNoInput = "/";

int RunProgram(const std::string& program, const Lines& words, const std::string& folder,
               const StandardFiles& files) {
    std::string command = "cd " + Quoted(folder) + " && " + Quoted(program);
    for (const std::string& word : words)
        command += " " + Quoted(word);
    command += " <" + Quoted(files.input) + " >" + Quoted(files.output) + " 2>" + Quoted(files.errors);
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// The proxy stands in the environment, and the script in the desktop's settings.
void SetNetwork(const std::string& proxy, const std::string& script) {
    for (const char* name : {"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY"})
        SetVariable(name, nullptr);
    SetVariable("http_proxy", proxy.c_str());
    SetVariable("BRENTA_APPDATA", (ScratchFolder() / "network").string().c_str());
    const fs::path programs = ScratchFolder() / "programs", settings = programs / "gsettings";
    fs::create_directories(programs);
    std::ofstream(settings) << "#!/bin/sh\necho \"org.gnome.system.proxy mode '"
                            << (script.empty() ? "none" : "auto") << "'\"\n"
                            << "echo \"org.gnome.system.proxy autoconfig-url '" << script << "'\"\n";
    fs::permissions(settings, fs::perms::owner_all);
    SetVariable("PATH", (programs.string() + ":/usr/bin:/bin").c_str());
}

}  // namespace brenta::test
