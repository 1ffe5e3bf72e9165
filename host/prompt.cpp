#include "prompt.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <string_view>

#include "script_names.h"
#include "style.h"

namespace brenta::host {
namespace {

constexpr const char* kHelp =
    "An expression shows its value; a statement runs; function, class and include\n"
    "define names. An entry goes on over further lines while brackets are open.\n"
    "Tab completes names, and members behind a point. Ctrl-C gives up a line or\n"
    "stops a running script, Ctrl-D ends the prompt.\n"
    "\n"
    "  20mil + 5mm              a length in internal units, ten-millionths of an inch\n"
    "  var x = {1, 2}; x[0]     a variable, and a value\n"
    "\n"
    "  :load FILE               load a script, to call its functions\n"
    "  :reload                  forget everything, and load the same scripts again\n"
    "  :units in|mil|cm|mm|off  show numbers as lengths, too\n"
    "  :env                     the names that are defined, and their values\n"
    "  :help                    this text\n"
    "  :quit                    the end";

constexpr const char* kCommands[] = {":env", ":help", ":load ", ":quit", ":reload", ":units "};

CCoreScriptEngine* runningEngine = nullptr;  // what Ctrl-C stops

extern "C" void StopRunningScript(int) {
    if (runningEngine != nullptr) runningEngine->RequestStop();
}

/// While it lives, Ctrl-C stops the script instead of the program.
class InterruptScope {
 public:
    explicit InterruptScope(CCoreScriptEngine& engine) {
        engine.ClearStop();
        runningEngine = &engine;
        m_previous = std::signal(SIGINT, &StopRunningScript);
    }
    ~InterruptScope() {
        std::signal(SIGINT, m_previous);
        runningEngine = nullptr;
    }
    InterruptScope(const InterruptScope&) = delete;
    InterruptScope& operator=(const InterruptScope&) = delete;

 private:
    void (*m_previous)(int);
};

/// The text without blanks at its ends.
std::string Trimmed(std::string_view text) {
    const std::size_t start = std::min(text.find_first_not_of(" \t\n"), text.size());
    return std::string(text.substr(start, text.find_last_not_of(" \t\n") + 1 - start));
}

/// Definitions belong to a module; everything else is a command.
bool IsDefinition(std::string_view entry) {
    const std::size_t start = std::min(entry.find_first_not_of(" \t\n"), entry.size());
    const std::size_t end = std::min(entry.find_first_of(" \t\n\"", start), entry.size());
    const std::string_view word = entry.substr(start, end - start);
    return word == "function" || word == "class" || word == "include";
}

/// Words that other prompts take as commands; here they are names, perhaps not defined.
bool IsMeantForPrompt(std::string_view entry) {
    return entry == "help" || entry == "quit" || entry == "exit" || entry == "?";
}

}  // namespace

Prompt::Prompt() {
    Reload();
}

bool Prompt::Run(const std::string& entry) {
    const std::string text = Trimmed(entry);
    if (text.empty()) return true;
    if (text.front() == ':') return RunCommand(text);
    RunScript(entry);
    return true;
}

void Prompt::RunScript(const std::string& entry) {
    const InterruptScope interrupt(*m_engine);
    if (IsDefinition(entry)) {
        m_engine->InjectScript("prompt", entry.c_str());
        return;
    }
    Var result;
    const bool done = m_engine->Execute(entry.c_str(), result, kUnitsNone);
    if (done && result.GetKind() != VarKind::Null) PrintValue(result);
    if (!done && IsMeantForPrompt(Trimmed(entry))) Complain(":help and :quit begin with a colon");
}

bool Prompt::RunCommand(const std::string& entry) {
    const std::size_t end = std::min(entry.find_first_of(" \t"), entry.size());
    const std::string command = entry.substr(0, end), rest = Trimmed(std::string_view(entry).substr(end));
    if (command == ":quit" || command == ":q") return false;
    if (command == ":help") {
        PrintLine(kHelp);
    } else if (command == ":load") {
        Load(rest);
    } else if (command == ":reload") {
        Reload();
    } else if (command == ":units") {
        ChooseUnits(rest);
    } else if (command == ":env") {
        PrintNames();
    } else {
        Complain("there is no '" + command + "'; :help tells what there is");
    }
    return true;
}

void Prompt::Load(const std::string& file) {
    if (file.empty()) {
        Complain(":load needs a file");
    } else if (std::find(m_files.begin(), m_files.end(), file) != m_files.end()) {
        Complain("'" + file + "' is loaded already; :reload loads everything anew");
    } else if (CheckFile(file)) {
        const InterruptScope interrupt(*m_engine);
        m_files.push_back(file);
        m_engine->LoadScriptModule(file.c_str());
    }
}

void Prompt::Reload() {
    m_engine = std::make_unique<CCoreScriptEngine>(TOrderedList<Var>(), &m_messages);
    for (const std::string& file : std::exchange(m_files, {}))
        Load(file);
}

void Prompt::ChooseUnits(const std::string& name) {
    constexpr std::pair<std::string_view, CoreUnits> kKnown[] = {
        {"in", kInches}, {"mil", kMils}, {"cm", kCentimeters}, {"mm", kMillimeters}, {"off", kUnitsNone}};
    for (const auto& [known, unit] : kKnown) {
        if (known != name) continue;
        m_units = unit;
        return;
    }
    Complain(":units needs in, mil, cm, mm or off");
}

void Prompt::PrintNames() const {
    for (const std::string& line : DescribeNames(*m_engine)) {
        const std::size_t tab = line.find('\t');
        std::string name = line.substr(0, tab);
        name.resize(std::max<std::size_t>(name.size(), 24), ' ');
        PrintLine(name + "  " + line.substr(tab + 1));
    }
}

void Prompt::PrintValue(const Var& value) const {
    std::string text = TextOf(value);
    const double number = value.GetFloat();
    if (m_units != kUnitsNone && value.IsNumeric() && std::abs(number) <= INT32_MAX)
        text += "  " + StyledOutput(
                           Style::kMuted,
                           std::string("(") + UnitToString(static_cast<int>(number), m_units, true)() + ")");
    PrintLine(text);
}

Completion Prompt::Complete(std::string_view line) const {
    Completion completion;
    if (!line.starts_with(':')) {
        completion.words = NamesFor(*m_engine, line, completion.start);
    } else if (const std::size_t blank = line.find(' '); blank == std::string_view::npos) {
        completion.words.assign(std::begin(kCommands), std::end(kCommands));
    } else if (line.starts_with(":load ")) {
        completion.areFiles = true;
    } else if (line.starts_with(":units ")) {
        completion.start = blank + 1;
        completion.words = {"cm", "in", "mil", "mm", "off"};
    }
    return completion;
}

}  // namespace brenta::host
