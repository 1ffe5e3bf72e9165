// brenta log: messages from standard input as a report.
#include <algorithm>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <string_view>

#include "brenta/error_log.h"
#include "brenta/files.h"
#include "command.h"
#include "console.h"

namespace brenta::host {
namespace {

/// A message such as "panel.scr(12): warning: text"; the place may be missing, and with it everything that is
/// no warning counts as an error, as scripts report theirs.
struct Message {
    std::string file;
    int line = 0;
    bool isWarning = false;
    std::string text;
};

/// Takes a word off the start of a text, with the blanks around it.
bool Take(std::string_view& text, std::string_view word) {
    const std::size_t start = std::min(text.find_first_not_of(' '), text.size());
    if (!text.substr(start).starts_with(word)) return false;
    text.remove_prefix(start + word.size());
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return true;
}

/// Takes "file(line):" off the start of a text.
bool TakePlace(std::string_view& text, Message& message) {
    constexpr std::size_t kMostDigits = 9;
    for (std::size_t open = text.find('('); open != std::string_view::npos; open = text.find('(', open + 1)) {
        const std::size_t close = text.find_first_not_of("0123456789", open + 1);
        const std::size_t digits = close == std::string_view::npos ? 0 : close - open - 1;
        std::string_view rest = text.substr(std::min(close, text.size()));
        if (open == 0 || digits == 0 || digits > kMostDigits || !Take(rest, ")") || !Take(rest, ":"))
            continue;
        message.file = text.substr(0, open);
        message.line = std::stoi(std::string(text.substr(open + 1, digits)));
        text = rest;
        return true;
    }
    return false;
}

std::optional<Message> ParseMessage(std::string_view text) {
    Message message;
    const bool hasPlace = TakePlace(text, message);
    const std::string_view whole = text;
    message.isWarning = Take(text, "warning:");
    if (!message.isWarning && !Take(text, "error:") && !hasPlace) return std::nullopt;
    // The log says of messages with a place what they are; the others keep their own word for it.
    message.text = hasPlace ? text : whole;
    return message;
}

/// The report escapes nothing, and the lines are somebody else's.
CoreString Escaped(const std::string& text) {
    CoreString escaped(std::string_view{text});
    escaped.Replace("&", "&amp;");
    escaped.Replace("<", "&lt;");
    return escaped;
}

bool CanBeWritten(const std::string& file) {
    if (std::ofstream(CoreNativePath(file.c_str())(), std::ios::app)) return true;
    Complain("'" + file + "' cannot be written");
    return false;
}

std::string Count(int count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

int Log(const std::string& title, const std::string& report) {
    CErrorLog log;
    int warnings = 0, errors = 0;
    for (std::string line; std::getline(std::cin, line);) {
        const std::optional<Message> message = ParseMessage(line);
        if (!message) {
            PrintLine(line);
            continue;
        }
        log.SetCurrentFileName(Escaped(message->file));
        log.SetCurrentLineNumber(message->line);
        ++(message->isWarning ? warnings : errors);
        message->isWarning ? log.Warning(Escaped(message->text)) : log.Error(Escaped(message->text));
    }
    if (!log.AnyWarningsOrErrors()) {
        PrintLine("no warnings, no errors, no report");
        return 0;
    }
    if (!CanBeWritten(report)) return 1;
    log.ShowLog(report.c_str(), Escaped(title));
    PrintLine(report + ": " + Count(warnings, "warning") + ", " + Count(errors, "error"));
    return 0;
}

void Define(Command& command) {
    struct Options {
        std::string title = "Warnings and errors";
        std::string report = "brenta-log.html";
    };
    const auto options = std::make_shared<Options>();
    command.Option("-t,--title", "TEXT", options->title, WordKind::kText, "The page's title");
    command.Option("-r,--report", "FILE", options->report, WordKind::kHtml,
                   "The file to write; default brenta-log.html");
    command.Explain(
        "Takes lines such as 'panel.scr(12): warning: text', and prints all others. The page is opened in "
        "the "
        "browser.");
    command.Example("brenta check *.scr 2>&1 | brenta log");
    command.Run([options] { return Log(options->title, options->report); });
}

const CommandEntry entry("log", CommandGroup::kData,
                         "Show the warnings and errors of standard input as a web page", &Define);

}  // namespace

}  // namespace brenta::host
