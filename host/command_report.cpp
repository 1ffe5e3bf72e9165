// brenta report: the packages of a part library, listed by the script that is shipped with the host.
#include <memory>

#include "brenta/files.h"
#include "brenta/script.h"
#include "brenta/settings.h"
#include "brenta/xml.h"
#include "command.h"
#include "console.h"

namespace brenta::host {
namespace {

constexpr const char* kScript = "part_report.scr";

/// The script in share/brenta of a folder above the program, installed or built; "" if it is nowhere.
std::string FindScript() {
    std::string folder(CoreNativePath(GetAppPath()));
    while (!folder.empty()) {
        std::string path = folder + "/share/brenta/" + kScript;
        if (FileExists(path.c_str())) return path;
        const std::size_t end = folder.find_last_of("/\\");
        folder.resize(end == std::string::npos ? 0 : end);
    }
    return "";
}

/// Says why the script could make nothing of the file.
void ComplainOfLibrary(const std::string& file) {
    CCoreXmlDom document;
    if (document.LoadDocument(file.c_str(), false)) {
        Complain("'" + file + "' is no part library: it has no drawing/library/packages");
    } else {
        ComplainOfFault(file, document);
    }
}

int Report(const std::string& file) {
    if (!CheckFile(file)) return 1;
    const std::string script = FindScript();
    if (script.empty()) {
        Complain(std::string("the script '") + kScript + "' is not where it was installed");
        return 1;
    }
    ConsoleStream messages;
    CCoreScriptEngine engine(TOrderedList<Var>(), &messages);
    if (!engine.LoadScriptModule(script.c_str())) return 1;
    TOrderedList<Var> arguments;
    arguments.Add(Var(file.c_str(), kNoName));
    Var packages;
    if (!engine.RunScript("Main", packages, arguments, false)) return 1;
    if (packages.GetInt() >= 0) return 0;
    ComplainOfLibrary(file);
    return 1;
}

void Define(Command& command) {
    const auto file = std::make_shared<std::string>();
    command.Word("LIBRARY", *file, WordKind::kLibrary, "The library");
    command.Explain(
        "Prints for each package its pads and pins, its smallest pitch and its size. A script does the "
        "work: "
        "part_report.scr in share/brenta.");
    command.Example("brenta report small_parts.lbr");
    command.Run([file] { return Report(*file); });
}

const CommandEntry entry("report", CommandGroup::kDocuments, "List the packages of a part library", &Define);

}  // namespace

}  // namespace brenta::host
