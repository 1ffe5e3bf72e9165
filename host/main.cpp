// brenta: the console host of Brenta Core.
#include <CLI/CLI.hpp>
#include <map>

#include "command_line.h"
#include "commands.h"

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

    CLI::App m_app;
    std::string m_file;
    bool m_quick = false;
    bool m_platform = false;
    std::vector<std::string> m_texts;
    std::string m_text;
    std::vector<std::string> m_files;
    brenta::host::RunOptions m_run;
    CoreUnits m_evalUnits = brenta::kMils;
    CoreUnits m_execUnits = brenta::kUnitsNone;
    int m_status = 0;
};

}  // namespace

int main(int argc, char** argv) {
    return CommandLine().Run(std::vector<std::string>(argv + 1, argv + argc));
}
