// The text that the server for newer versions answers.
#include <algorithm>
#include <utility>

#include "brenta/system.h"
#include "foundation/characters.h"
#include "platform/update_check.h"

namespace brenta {

namespace {

using Text = std::string_view;

constexpr Text kSeparators = " \t;&\r\n";
constexpr Text kLineBreaks = "\r\n";
constexpr std::size_t kLongestValue = 259;  // more than that is never read back

struct Key {
    Text name;
    std::string UpdateOffer::*member;
};
constexpr Key kKeys[] = {{"build=", &UpdateOffer::build},
                         {"install=", &UpdateOffer::installString},
                         {"size=", &UpdateOffer::size},
                         {"installargs=", &UpdateOffer::installArguments}};
constexpr std::size_t kKeyCount = std::size(kKeys);

/// Moves the start of `rest` to the next key that counts and returns which; null at the end. `first` tells
/// whether rest starts where a key may stand.
const Key* FindKey(Text& rest, bool first) {
    for (bool mayStand = first; !rest.empty(); rest.remove_prefix(1)) {
        if (mayStand) {
            for (const Key& key : kKeys) {
                if (rest.starts_with(key.name)) return &key;
            }
        }
        mayStand = kSeparators.find(rest.front()) != Text::npos;
    }
    return nullptr;
}

bool IsOnlySeparators(Text text) {
    return text.find_first_not_of(kSeparators) == Text::npos;
}

Text Trimmed(Text text) {
    text = text.substr(0, text.find_last_not_of(kSeparators) + 1);  // npos + 1 is 0
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    return text;
}

bool IsStorable(Text value) {
    return value.size() <= kLongestValue && std::none_of(value.begin(), value.end(), &IsControl);
}

}  // namespace

bool ParseUpdateAnswer(Text answer, UpdateOffer& offer) {
    UpdateOffer found;
    bool isThere[kKeyCount] = {};
    Text rest = answer;
    const Key* key = FindKey(rest, true);
    if (!IsOnlySeparators(answer.substr(0, answer.size() - rest.size()))) return false;
    while (key) {
        if (std::exchange(isThere[key - kKeys], true)) return false;
        rest.remove_prefix(key->name.size());
        const Text field = rest;
        const Key* next = FindKey(rest, false);
        const Text content = field.substr(0, field.size() - rest.size());
        const std::size_t lineEnd = std::min(content.find_first_of(kLineBreaks), content.size());
        const Text value = Trimmed(content.substr(0, lineEnd));
        if (!IsStorable(value) || !IsOnlySeparators(content.substr(lineEnd))) return false;
        found.*key->member = value;
        key = next;
    }
    if (CoreVersion version; !GetVersionFromString(found.build.c_str(), version)) return false;
    offer = found;
    return true;
}

}  // namespace brenta
