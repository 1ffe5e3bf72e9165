// brenta config: the console host's own initialisation file.
#include <memory>
#include <string>

#include "brenta/settings.h"
#include "command.h"
#include "console.h"
#include "style.h"

namespace brenta::host {
namespace {

struct ConfigOptions {
    std::string section, key, value;
};

int Get(const ConfigOptions& options) {
    CoreString value;
    if (GetAppValue(options.section.c_str(), options.key.c_str(), value)) {
        PrintLine(value());
        return 0;
    }
    Complain("there is no value '" + options.key + "' in section '" + options.section + "'");
    return 1;
}

int Set(const ConfigOptions& options, const char* value) {
    if (SetAppValue(options.section.c_str(), options.key.c_str(), value)) return 0;
    Complain("'" + options.key + "' in section '" + options.section +
             "' cannot be written: sections, keys and values are single lines, a key has no '=' and begins "
             "with neither ';' nor '[', and the data folder must be writable");
    return 1;
}

int List(const ConfigOptions& options) {
    const char* const section = options.section.empty() ? nullptr : options.section.c_str();
    TOrderedList<CoreString> names;
    GetAppNames(section, names);
    Table table({{"key", 16}, {"value", 16}});
    for (const CoreString& name : names) {
        CoreString value;
        if (section) GetAppValue(section, name, value);
        section ? table.Row({name(), value()}) : PrintLine(name());
    }
    return 0;
}

/// Sections, and the keys of one.
std::vector<std::string> SuggestNames(const std::vector<std::string>& before) {
    TOrderedList<CoreString> names;
    GetAppNames(before.empty() ? nullptr : before[0].c_str(), names);
    std::vector<std::string> suggestions;
    for (const CoreString& name : names)
        suggestions.emplace_back(name());
    return suggestions;
}

/// An action on one value; `run` does it.
Command DefineAction(Command& command, const std::shared_ptr<ConfigOptions>& options, const char* name,
                     const char* summary, int (*run)(const ConfigOptions&)) {
    Command action = command.Action(name, summary);
    action.TakeDashesAsWords();
    action.Word("SECTION", options->section, WordKind::kText, "The section, without brackets");
    action.Suggest(&SuggestNames);
    action.Word("KEY", options->key, WordKind::kText, "The key");
    action.Suggest(&SuggestNames);
    action.Run([options, run] { return run(*options); });
    return action;
}

void Define(Command& command) {
    const auto options = std::make_shared<ConfigOptions>();
    command.Explain(
        "The file has sections of lines such as Step=25; case does not matter in sections and keys.");
    command.Example("brenta config set Grid Step 25");
    command.Example("brenta config get Grid Step");
    command.Example("brenta config list", "the sections; 'brenta config list Grid' the keys of one");

    DefineAction(command, options, "get", "Print a value", &Get).Example("brenta config get Grid Step");
    Command set = DefineAction(command, options, "set", "Write a value",
                               [](const ConfigOptions& o) { return Set(o, o.value.c_str()); });
    set.Word("VALUE", options->value, WordKind::kText, "The value, one line");
    set.Example("brenta config set Grid Step -5");
    DefineAction(command, options, "delete", "Remove a key", [](const ConfigOptions& o) {
        return Set(o, nullptr);
    }).Example("brenta config delete Grid Step");

    Command list = command.Action("list", "Print the sections, or the keys and values of one");
    list.TakeDashesAsWords();
    list.OptionalWord("SECTION", options->section, WordKind::kText, "The section; all sections without it");
    list.Suggest(&SuggestNames);
    list.Example("brenta config list Grid");
    list.Run([options] { return List(*options); });
}

const CommandEntry entry("config", CommandGroup::kData, "Read and write this program's settings file",
                         &Define);

}  // namespace

}  // namespace brenta::host
