// brenta config: the console host's own initialisation file.
#include <string>

#include "brenta/settings.h"
#include "commands.h"
#include "console.h"

namespace brenta::host {
namespace {

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
    for (const CoreString& name : names) {
        CoreString value;
        if (section) GetAppValue(section, name, value);
        PrintLine(section ? std::string(name) + "\t" + value() : std::string(name));
    }
    return 0;
}

}  // namespace

int ConfigCommand(const ConfigOptions& options) {
    if (options.action == "list") return List(options);
    if (options.action == "get") return Get(options);
    return Set(options, options.action == "set" ? options.value.c_str() : nullptr);
}

}  // namespace brenta::host
