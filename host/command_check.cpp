// brenta check: errors and likely mistakes of scripts, without running them.
#include <cstdio>
#include <memory>

#include "brenta/script.h"
#include "command.h"
#include "console.h"
#include "style.h"

namespace brenta::host {
namespace {

struct CheckOptions {
    std::vector<std::string> files;
    bool isGnu = false;
};

/// Prints messages in the form of the language, "panel.scr(12): text", or in the one that most compilers and
/// editors share, "panel.scr:12: error: text".
class CheckStream : public CScriptMsgStream {
 public:
    explicit CheckStream(bool isGnu) : m_isGnu(isGnu) {}

    void OutputErrStream(const char* text) override {
        const ScriptPosition& position = GetErrorPosition();
        const std::string place = Place(position);
        const std::string message = text;
        if (m_isGnu && position.line > 0 && message.starts_with(place)) {
            Print(position, Style::kError, "error: ", message.substr(place.size()));
        } else {
            ConsoleStream().OutputErrStream(text);
        }
    }

    void Print(const ScriptPosition& position, Style style, const char* kind, const std::string& text) const {
        const std::string place =
            m_isGnu ? std::string(StrPtr(position.file)) + ":" + std::to_string(position.line) + ": "
                    : Place(position);
        std::fflush(stdout);
        std::fprintf(stderr, "%s%s%s\n", place.c_str(), StyledError(style, kind).c_str(), text.c_str());
    }

 private:
    static std::string Place(const ScriptPosition& position) {
        return std::string(StrPtr(position.file)) + "(" + std::to_string(position.line) + "): ";
    }

    const bool m_isGnu;
};

bool CheckOne(const std::string& file, bool isGnu) {
    if (!CheckFile(file)) return false;
    CheckStream messages(isGnu);
    TOrderedList<ScriptWarning> warnings;
    const bool good = CheckScriptModule(file.c_str(), messages, warnings);
    int count = 0;
    for (const ScriptWarning& warning : warnings) {
        messages.Print(warning.position, Style::kWarning, "warning: ", std::string(warning.text));
        ++count;
    }
    if (good)
        PrintLine(file + ": no errors, " + std::to_string(count) + (count == 1 ? " warning" : " warnings"));
    return good;
}

int Check(const CheckOptions& options) {
    bool good = true;
    for (const std::string& file : options.files)
        good = CheckOne(file, options.isGnu) && good;
    return good ? 0 : 1;
}

void Define(Command& command) {
    const auto options = std::make_shared<CheckOptions>();
    command.Words("FILE", options->files, WordKind::kScript, "The scripts");
    command.Flag("-g,--gnu", options->isGnu,
                 "Print places as file:line: for editors that know no other form");
    command.Explain(
        "Messages are lines such as\n"
        "  panel.scr(12): Symbol 'widht' not defined.\n"
        "  panel.scr(30): warning: ...\n"
        "on standard error. The exit status is 1 if a script has errors; warnings alone give 0.");
    command.Example("brenta check panel.scr");
    command.Example("brenta check *.scr 2>&1 | brenta log", "all messages as a web page");
    command.Example("vim -c 'compiler brenta' -c make panel.scr", "jumps to the first message");
    command.Run([options] { return Check(*options); });
}

const CommandEntry entry("check", CommandGroup::kScripts,
                         "Report errors and likely mistakes without running anything", &Define);

}  // namespace
}  // namespace brenta::host
