// Any bytes as an initialisation file: what is set is found again, what is removed is gone, and all other
// lines stay byte for byte. The input is a section, a key and a value, a line each, and the file behind them.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/ini_text.h"

namespace {

using brenta::IniText;
using std::string_view;

constexpr std::size_t kMaxInput = 2048;

void Check(bool holds) {
    if (!holds) std::abort();
}

string_view TakeLine(string_view& input) {
    const string_view line = input.substr(0, input.find('\n'));
    input.remove_prefix(std::min(line.size() + 1, input.size()));
    return line;
}

string_view WithoutBlanks(string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    return text;
}

/// The texts differ in one place only, which is no more than one line of each, or two that were added.
void CheckOnePlace(string_view before, string_view after) {
    while (!before.empty() && !after.empty() && before.front() == after.front()) {
        before.remove_prefix(1);
        after.remove_prefix(1);
    }
    while (!before.empty() && !after.empty() && before.back() == after.back()) {
        before.remove_suffix(1);
        after.remove_suffix(1);
    }
    Check(before.find('\n') == string_view::npos);
}

void CheckNames(const IniText& text) {
    string_view value;
    for (const string_view section : text.Sections())
        for (const string_view key : text.Keys(section))
            Check(text.Find(section, key, value));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > kMaxInput) return 0;
    string_view input(reinterpret_cast<const char*>(data), size);
    const string_view section = TakeLine(input), key = TakeLine(input), value = TakeLine(input);
    IniText text{std::string(input)};
    string_view found;
    CheckNames(text);
    text.Find(section, key, found);
    if (!IniText::CanSet(section, key, value)) return 0;

    text.Set(section, key, value);
    CheckOnePlace(input, text.Content());
    Check(text.Find(section, key, found));
    const string_view kept = WithoutBlanks(value);
    Check(found == kept || (kept.size() > 1 && found == kept.substr(1, kept.size() - 2)));
    CheckNames(text);

    const std::string once = text.Content();
    text.Set(section, key, value);
    Check(text.Content() == once);
    text.Remove(section, key);
    Check(!text.Find(section, key, found));
    Check(IniText(text.Content()).Content() == text.Content());
    return 0;
}
