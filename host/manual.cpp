#include "manual.h"

#include "console.h"
#include "help.h"

namespace brenta::host {
namespace {

/// The text as troff takes it: nothing in it is a request, and dashes are those that one types.
std::string Escaped(const std::string& text) {
    std::string escaped;
    bool isLineStart = true;
    for (const char c : text) {
        if (isLineStart && (c == '.' || c == '\'')) escaped += "\\&";
        if (c == '-') {
            escaped += "\\-";
        } else if (c == '\\') {
            escaped += "\\e";
        } else {
            escaped += c;
        }
        isLineStart = c == '\n';
    }
    return escaped;
}

/// The help as it stands, without the empty line at its end.
void PrintHelp(const CommandTree& tree, const CLI::App& command) {
    PrintLine(".nf\n" + Escaped(HelpText(tree, command)) + ".fi");
}

}  // namespace

int ManualCommand(const CommandTree& tree) {
    PrintLine(".TH BRENTA 1 \"\" \"Brenta Core " BRENTA_VERSION "\" \"User Commands\"");
    PrintLine(".SH NAME\nbrenta \\- lengths, scripts and documents of the Brenta circuit\\-board designer");
    PrintLine(".SH SYNOPSIS\n.B brenta\n.I COMMAND\n.RI [ WORD ]...");
    PrintLine(".SH DESCRIPTION");
    PrintHelp(tree, tree.app);
    PrintLine(".SH COMMANDS");
    for (const CLI::App* command : tree.app.get_subcommands({})) {
        PrintLine(".SS " + Escaped(FullName(*command)));
        PrintHelp(tree, *command);
        for (const CLI::App* action : command->get_subcommands({})) {
            PrintLine(".SS " + Escaped(FullName(*action)));
            PrintHelp(tree, *action);
        }
    }
    PrintLine(
        ".SH FILES\n.TP\n.I ~/.local/share/brenta\nthe settings file, and scripts in Scripts\n"
        ".TP\n.I ~/.local/state/brenta/history\nwhat was typed at the script prompt\n"
        ".SH ENVIRONMENT\n.TP\n.B NO_COLOR\nno colours, if it is not empty\n"
        ".TP\n.B BRENTA_APPDATA\nthe folder to use for ~/.local/share");
    return 0;
}

}  // namespace brenta::host
