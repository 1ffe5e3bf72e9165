#include <charconv>
#include <exception>
#include <string_view>

#include "brenta/system.h"
#include "foundation/characters.h"
#include "os/system.h"

namespace brenta {

namespace {

constexpr int kParts = 4;
constexpr int kLargest = 65535;

void SkipSpace(const char*& text, const char* end) {
    while (text != end && IsSpace(*text))
        ++text;
}

/// Reads a number with space around it.
bool ReadPart(const char*& text, const char* end, int& part) {
    SkipSpace(text, end);
    if (text == end || !IsDigit(*text)) return false;
    const auto [behind, error] = std::from_chars(text, end, part);
    text = behind;
    SkipSpace(text, end);
    return error == std::errc() && part <= kLargest;
}

}  // namespace

bool GetVersionFromString(const char* text, CoreVersion& version) {
    const std::string_view whole(text ? text : "");
    const char *position = whole.data(), *const end = position + whole.size();
    int parts[kParts] = {};
    for (int& part : parts) {
        if (!ReadPart(position, end, part)) return false;
        if (position == end) break;
        if (&part == &parts[kParts - 1] || (*position != '.' && *position != ',')) return false;
        ++position;
    }
    version = {parts[0], parts[1], parts[2], parts[3]};
    return true;
}

CoreString GetVersionString(const CoreVersion& version) {
    CoreString text;
    text << version.majorNumber << '.' << version.minorNumber << '.' << version.build << '.'
         << version.revision;
    return text;
}

int CompareVersions(const CoreVersion& first, const CoreVersion& second) {
    const auto order = [](int a, int b) { return (a > b) - (a < b); };
    if (const int result = order(first.majorNumber, second.majorNumber)) return result;
    if (const int result = order(first.minorNumber, second.minorNumber)) return result;
    if (const int result = order(first.build, second.build)) return result;
    return order(first.revision, second.revision);
}

bool GetModuleVersion(CoreVersion& version) {
    return GetVersionFromString(BRENTA_LIBRARY_VERSION, version);
}

bool GetModuleVersion(const char* path, CoreVersion& version) try {
    return GetVersionFromString(os::FileVersion(path).c_str(), version);
} catch (const std::exception&) {
    return false;
}

}  // namespace brenta
