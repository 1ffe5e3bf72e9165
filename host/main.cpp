// brenta: the console host of Brenta Core.
#include <CLI/CLI.hpp>
#include <map>

#include "command_line.h"
#include "commands.h"
#include "terminal.h"

namespace {

using brenta::CoreUnits;

void AddUnitsOption(CLI::App& command, CoreUnits& units) {
    static const std::map<std::string, CoreUnits> names = {{"in", brenta::kInches},
                                                           {"mil", brenta::kMils},
                                                           {"cm", brenta::kCentimeters},
                                                           {"mm", brenta::kMillimeters}};
    command.add_option("-u,--units", units, "Unit of numbers without a unit: in, mil, cm or mm")
        ->transform(CLI::Transformer(names, CLI::ignore_case).description(""))
        ->check(CLI::IsMember({brenta::kInches, brenta::kMils, brenta::kCentimeters, brenta::kMillimeters})
                    .description(""))
        ->type_name("UNIT");
}

/// The whole command line: options go into these variables, the chosen command's action runs and leaves its
/// status.
class CommandLine {
 public:
    CommandLine() : m_app("Brenta Core console host: dimensions, scripts and documents.", "brenta") {
        m_app.require_subcommand(1);
        m_app.allow_windows_style_options(false);  // what begins with "/" is a path everywhere
        m_app.set_version_flag("--version", "brenta " BRENTA_VERSION);
        m_app.footer(
            "Examples:\n  brenta eval 20mil+5mil\n  brenta run examples/board_panel.scr\n"
            "'brenta COMMAND --help' tells more about a command.");
        AddEval();
        AddExec();
        AddRun();
        AddCheck();
        AddRepl();
        AddXml();
        AddHtml();
        AddRecords();
        AddReport();
        AddZip();
        AddLog();
        AddConfig();
        AddRegistry();
        AddProxy();
        AddFetch();
    }

    int Run(std::vector<std::string> arguments) {
        arguments = brenta::host::SeparateOptions(arguments);
        std::reverse(arguments.begin(), arguments.end());  // the parser takes words from the back
        try {
            m_app.parse(arguments);
        } catch (const CLI::ParseError& error) {
            return m_app.exit(error) == 0 ? 0 : 2;
        }
        return m_status;
    }

 private:
    void AddEval() {
        CLI::App* command = m_app.add_subcommand("eval", "Evaluate dimension texts such as 20mil+5mm");
        command
            ->add_option("TEXT", m_texts, "Texts to evaluate; - reads them from standard input, one a line")
            ->required();
        AddUnitsOption(*command, m_evalUnits);
        command->footer(
            "Prints for each text: internal units (ten-millionths of an inch), inches, mils, centimetres,\n"
            "millimetres, separated by tabs. The default unit is mil.\n"
            "Example: brenta eval --units mm '(1in+2)/2' -25mil");
        command->callback([this] { m_status = brenta::host::EvalCommand(m_texts, m_evalUnits); });
    }

    void AddExec() {
        CLI::App* command = m_app.add_subcommand("exec", "Run one script command and print its result");
        command->add_option("TEXT", m_text, "The command text")->required();
        AddUnitsOption(*command, m_execUnits);
        command->footer(
            "With --units a result without a unit is converted to internal units.\n"
            "Example: brenta exec 'var x = 2; x * 21'");
        command->callback([this] { m_status = brenta::host::ExecCommand(m_text, m_execUnits); });
    }

    void AddRun() {
        CLI::App* command = m_app.add_subcommand("run", "Load a script module and call one of its functions");
        command->add_option("FILE", m_run.file, "The module")->required();
        command->add_option("FUNCTION", m_run.function,
                            "The function to call; default Main, if the module defines it");
        command->add_option("ARG", m_run.arguments, "Its arguments, passed as strings");
        command->add_flag("-r,--result", m_run.printResult, "Print the returned value");
        command->footer("Example: brenta run --result panel.scr CountBoards 3 4");
        command->callback([this] { m_status = brenta::host::RunCommand(m_run); });
    }

    void AddCheck() {
        CLI::App* command =
            m_app.add_subcommand("check", "Report errors and likely mistakes without running anything");
        command->add_option("FILE", m_files, "The modules")->required();
        command->footer("Exit status 1 if a module has errors; warnings alone give 0.");
        command->callback([this] { m_status = brenta::host::CheckCommand(m_files); });
    }

    void AddRepl() {
        CLI::App* command = m_app.add_subcommand("repl", "Interactive script prompt; reads piped input too");
        command->callback([this] { m_status = brenta::host::ReplCommand(); });
    }

    void AddXml() {
        CLI::App* command = m_app.add_subcommand("xml", "Print the elements of an XML file, one a line");
        command->add_option("FILE", m_file, "The file")->required();
        CLI::Option* quick = command->add_flag("-q,--quick", m_quick, "Read with the library's quick reader");
        command->add_flag("-p,--platform", m_platform, "Read with the platform's reader (default)")
            ->excludes(quick);
        command->footer("Example: brenta xml examples/small_parts.lbr");
        command->callback([this] { m_status = brenta::host::XmlCommand(m_file, m_quick); });
    }

    void AddHtml() {
        CLI::App* command = m_app.add_subcommand("html", "Print the elements of an HTML file, one a line");
        command->add_option("FILE", m_file, "The file")->required();
        command->footer("Status 1 if the page was read in part only; the tree so far is printed.");
        command->callback([this] { m_status = brenta::host::HtmlCommand(m_file); });
    }

    void AddRecords() {
        CLI::App* command =
            m_app.add_subcommand("records", "List and count the records of an XML file of any size");
        command->add_option("FILE", m_file, "The file; the children of its root are the records")->required();
        command->footer("Example: brenta records board.xml");
        command->callback([this] { m_status = brenta::host::RecordsCommand(m_file); });
    }

    void AddReport() {
        CLI::App* command = m_app.add_subcommand("report", "List the packages of a part library");
        command->add_option("LIBRARY", m_file, "The library")->required();
        command->footer("Example: brenta report examples/small_parts.lbr");
        command->callback([this] { m_status = brenta::host::ReportCommand(m_file); });
    }

    void AddProxy() {
        CLI::App* command = m_app.add_subcommand("proxy", "Tell which proxy serves an address, and why");
        command->add_option("URL", m_text, "The address")->required();
        command->footer("Example: brenta proxy https://parts.example/list");
        command->callback([this] { m_status = brenta::host::ProxyCommand(m_text); });
    }

    void AddFetch() {
        CLI::App* command = m_app.add_subcommand("fetch", "Download a file from a web server");
        command->add_option("URL", m_text, "The http or https address")->required();
        command->add_option("FILE", m_file, "Where to put it; an old file stays until the new one is whole")
            ->required();
        command->footer("Example: brenta fetch https://parts.example/small.lbr small.lbr");
        command->callback([this] { m_status = brenta::host::FetchCommand(m_text, m_file); });
    }

    /// Adds one form of a command with actions, "brenta config get" for example.
    static CLI::App* AddAction(CLI::App& command, std::string& action, const char* name, const char* help) {
        CLI::App* form = command.add_subcommand(name, help);
        form->callback([&action, name] { action = name; });
        return form;
    }

    void AddConfig() {
        CLI::App* command = m_app.add_subcommand("config", "Read and write this program's settings file");
        command->require_subcommand(1);
        command->footer("Examples:\n  brenta config set Grid Step 25\n  brenta config get Grid Step");
        const auto add = [&](const char* name, const char* help) {
            return AddAction(*command, m_config.action, name, help);
        };
        CLI::App* get = add("get", "Print a value");
        CLI::App* set = add("set", "Write a value");
        CLI::App* remove = add("delete", "Remove a key");
        for (CLI::App* form : {get, set, remove}) {
            form->add_option("SECTION", m_config.section, "The section, without brackets")->required();
            form->add_option("KEY", m_config.key, "The key")->required();
        }
        set->add_option("VALUE", m_config.value, "The value, one line")->required();
        add("list", "Print the keys and values of a section, or all sections")
            ->add_option("SECTION", m_config.section, "The section; all sections without it");
        command->callback([this] { m_status = brenta::host::ConfigCommand(m_config); });
    }

    void AddRegistry() {
        CLI::App* command = m_app.add_subcommand("registry", "Read and write the registry");
        command->require_subcommand(1);
        command->footer(
            "Examples:\n  brenta registry set 'HKCU\\Software\\Demo' Step 25 --type int\n"
            "  brenta registry list 'HKCU\\Software\\Demo'");
        const auto add = [&](const char* name, const char* help) {
            CLI::App* form = AddAction(*command, m_registry.action, name, help);
            form->add_option("PATH", m_registry.path, "HKCU, HKLM, HKCR or HKU, and names behind \\")
                ->required();
            return form;
        };
        const auto addName = [this](CLI::App* form, const char* help) {
            return form->add_option("NAME", m_registry.name, help);
        };
        addName(add("get", "Print a value and its type"), "The value's name; the default value without it");
        CLI::App* set = add("set", "Write a value; a key that is missing is created");
        addName(set, "The value's name; '' is the key's default value")->required();
        set->add_option("VALUE", m_registry.value, "The value")->required();
        set->add_option("-t,--type", m_registry.type, "string (default), int, dword, bool or float")
            ->check(CLI::IsMember({"string", "int", "dword", "bool", "float"}).description(""))
            ->type_name("TYPE");
        addName(add("delete", "Delete a value, or a key with all below it"), "The value; without it the key")
            ->each([this](const std::string&) { m_registry.hasName = true; });
        add("list", "Print the names of sub-keys, and names, types and values");
        command->callback([this] { m_status = brenta::host::RegistryCommand(m_registry); });
    }

    void AddZip() {
        CLI::App* command = m_app.add_subcommand("zip", "List, test, fill and unpack zip archives");
        command->require_subcommand(1);
        command->footer("Example: brenta zip add --names-only project.zip boards/main.brd");
        const auto add = [&](const char* name, const char* help) {
            CLI::App* form = AddAction(*command, m_zip.action, name, help);
            form->add_option("ARCHIVE", m_zip.archive, "The archive")->required();
            return form;
        };
        add("list", "Print the size and name of each entry");
        add("test", "Unpack each entry in memory and compare its checksum");
        CLI::App* fill = add("add", "Add files; an archive that is missing is created");
        fill->add_option("FILE", m_zip.names,
                         "The files; of two with one name only the first can be unpacked");
        fill->add_flag("-j,--names-only", m_zip.namesOnly,
                       "Leave the folders of the files out of their names");
        CLI::App* unpack = add("extract", "Unpack entries; names that lead out of the folder are refused");
        unpack->add_option("NAME", m_zip.names, "The entries; all without it");
        unpack->add_option("-d,--directory", m_zip.folder, "Where to; default the current folder");
        unpack->add_flag("-o,--overwrite", m_zip.overwrite, "Replace files that exist");
        command->callback([this] { m_status = brenta::host::ZipCommand(m_zip); });
    }

    void AddLog() {
        CLI::App* command =
            m_app.add_subcommand("log", "Show the warnings and errors of standard input as a web page");
        command->add_option("-t,--title", m_title, "The page's title");
        command->add_option("-r,--report", m_report, "The file to write; default brenta-log.html");
        command->footer(
            "Takes lines such as 'panel.scr(12): warning: text', and prints all others. The page is opened "
            "in\n"
            "the browser.\nExample: brenta check *.scr 2>&1 | brenta log");
        command->callback([this] { m_status = brenta::host::LogCommand(m_title, m_report); });
    }

    CLI::App m_app;
    std::string m_file;
    bool m_quick = false;
    bool m_platform = false;
    std::vector<std::string> m_texts;
    std::string m_text;
    std::vector<std::string> m_files;
    brenta::host::RunOptions m_run;
    brenta::host::ConfigOptions m_config;
    brenta::host::RegistryOptions m_registry;
    CoreUnits m_evalUnits = brenta::kMils;
    CoreUnits m_execUnits = brenta::kUnitsNone;
    brenta::host::ZipOptions m_zip;
    std::string m_title = "Warnings and errors";
    std::string m_report = "brenta-log.html";
    int m_status = 0;
};

}  // namespace

int main(int argc, char** argv) {
    brenta::host::PrepareStreams();
    return CommandLine().Run(std::vector<std::string>(argv + 1, argv + argc));
}
