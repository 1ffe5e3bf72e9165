#include "command_line.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace brenta::host {
namespace {

struct FreeTextCommand {
    std::string_view name;
    std::vector<std::string_view> flags;         // options without a value
    std::vector<std::string_view> valueOptions;  // options followed by a value, or joined to it by "="
    std::size_t names = 1;                       // words that name it: two for those like "config get"
};

const FreeTextCommand* FindCommand(std::string_view name) {
    static const std::array<FreeTextCommand, 5> commands = {{
        {"config", {"-h", "--help"}, {}, 2},
        {"eval", {"-h", "--help"}, {"-u", "--units"}},
        {"exec", {"-h", "--help"}, {"-u", "--units"}},
        {"registry", {"-h", "--help"}, {"-t", "--type"}, 2},
        {"run", {"-h", "--help", "-r", "--result"}, {}},
    }};
    const auto* found = std::find_if(commands.begin(), commands.end(),
                                     [name](const FreeTextCommand& command) { return command.name == name; });
    return found == commands.end() ? nullptr : found;
}

bool Contains(const std::vector<std::string_view>& options, std::string_view word) {
    return std::find(options.begin(), options.end(), word) != options.end();
}

bool IsJoinedValueOption(const FreeTextCommand& command, std::string_view word) {
    const std::size_t equals = word.find('=');
    return equals != std::string_view::npos && Contains(command.valueOptions, word.substr(0, equals));
}

}  // namespace

std::vector<std::string> SeparateOptions(const std::vector<std::string>& arguments) {
    const FreeTextCommand* command = arguments.empty() ? nullptr : FindCommand(arguments.front());
    if (command == nullptr) return arguments;

    const std::size_t names = std::min(command->names, arguments.size());
    std::vector<std::string> options(arguments.begin(),
                                     arguments.begin() + static_cast<std::ptrdiff_t>(names));
    std::vector<std::string> words;
    for (std::size_t i = names; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        if (word == "--") {
            words.insert(words.end(), arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                         arguments.end());
            break;
        }
        if (Contains(command->valueOptions, word)) {
            options.push_back(word);
            if (i + 1 < arguments.size()) options.push_back(arguments[++i]);
        } else if (Contains(command->flags, word) || IsJoinedValueOption(*command, word)) {
            options.push_back(word);
        } else {
            words.push_back(word);
        }
    }
    options.emplace_back("--");
    options.insert(options.end(), words.begin(), words.end());
    return options;
}

}  // namespace brenta::host
