#include <cstdlib>

#include "host_process.h"

namespace brenta::test {
namespace {

std::string Quoted(const std::string& word) {
    std::string quoted = "'";
    for (const char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

}  // namespace

int RunProgram(const std::string& program, const std::vector<std::string>& words, const std::string& folder,
               const StandardFiles& files) {
    std::string command = "cd " + Quoted(folder) + " && " + Quoted(program);
    for (const std::string& word : words)
        command += " " + Quoted(word);
    command += " <" + Quoted(files.input) + " >" + Quoted(files.output) + " 2>" + Quoted(files.errors);
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace brenta::test
