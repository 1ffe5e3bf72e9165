// What the prompt works on: an engine, the modules loaded into it, and how values are shown.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "brenta/script.h"
#include "console.h"
#include "line_editor.h"

namespace brenta::host {

class Prompt {
 public:
    Prompt();

    /// Runs an entry: a command of the prompt (":help"), definitions, or statements. False after ":quit".
    bool Run(const std::string& entry);
    /// What may go on from the end of a line.
    Completion Complete(std::string_view line) const;

 private:
    void RunScript(const std::string& entry);
    bool RunCommand(const std::string& entry);
    void Load(const std::string& file);
    void Reload();
    void ChooseUnits(const std::string& name);
    void PrintNames() const;
    void PrintValue(const Var& value) const;

    ConsoleStream m_messages;
    std::unique_ptr<CCoreScriptEngine> m_engine;
    std::vector<std::string> m_files;  // in the order loaded
    CoreUnits m_units = kUnitsNone;    // in which numbers are shown, too
};

}  // namespace brenta::host
