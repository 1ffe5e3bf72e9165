#include <algorithm>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "brenta/files.h"
#include "brenta/host.h"
#include "foundation/characters.h"
#include "os/os.h"

namespace brenta {

namespace {

using std::string_view;
namespace fs = std::filesystem;

constexpr string_view kSeparators = "\\/";

// ---------------------------------------------------------------------------------------------------------
// Patterns

bool FitsEverything(string_view pattern) {
    return pattern.empty() || pattern == "*" || pattern == "*.*";
}

/// Takes at most the product of both lengths: after a mismatch only the last "*" takes one byte more, since
/// what an earlier one could take, the last can.
bool Fits(string_view name, string_view pattern) {
    std::size_t n = 0, p = 0, starPattern = string_view::npos, starName = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            starPattern = ++p;
            starName = n;
        } else if (p < pattern.size() && (pattern[p] == '?' || ToLower(pattern[p]) == ToLower(name[n]))) {
            ++p;
            ++n;
        } else if (starPattern != string_view::npos) {
            p = starPattern;
            n = ++starName;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == string_view::npos;
}

// ---------------------------------------------------------------------------------------------------------
// Folders

struct Folder {
    std::string name;
    bool isLink;
};

struct FolderContent {
    std::vector<std::string> files;
    std::vector<Folder> folders;
};

bool HasSeparator(const std::string& name) {
    return name.find_first_of(kSeparators) != std::string::npos;
}

bool ReadFolder(const std::string& path, FolderContent& content) {
    std::error_code error;
    fs::directory_iterator entry(os::NativePath(path.empty() ? "." : path.c_str()), error);
    if (error) return false;
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        std::error_code unknown;
        std::string name = entry->path().filename().string();
        if (HasSeparator(name) || !entry->exists(unknown)) continue;
        if (entry->is_directory(unknown)) {
            content.folders.push_back({std::move(name), entry->is_symlink(unknown)});
        } else {
            content.files.push_back(std::move(name));
        }
    }
    // Texts of this kind compare their bytes as unsigned values.
    std::sort(content.files.begin(), content.files.end());
    std::sort(content.folders.begin(), content.folders.end(),
              [](const Folder& a, const Folder& b) { return a.name < b.name; });
    return !error;
}

std::string Joined(const std::string& folder, const std::string& name) {
    const bool separated = folder.empty() || kSeparators.find(folder.back()) != string_view::npos;
    return folder + (separated ? "" : "\\") + name;
}

/// Visits a folder, the folders in it and, if asked, all below, each before those in it; the content of those
/// that are not entered is empty. False if the first cannot be read. With a list of its own instead of
/// recursion: folders may be nested as deep as a path can tell.
template <class Visit>
bool Walk(const char* first, bool inSubDirectories, const Visit& visit) {
    std::vector<Folder> waiting{{first ? first : "", false}};
    for (bool isFirst = true; !waiting.empty(); isFirst = false) {
        const Folder folder = std::move(waiting.back());
        waiting.pop_back();
        FolderContent content;
        const bool isEntered = isFirst || (inSubDirectories && !folder.isLink);
        if (isEntered && !ReadFolder(folder.name, content) && isFirst) return false;
        visit(folder.name, content, isFirst);
        for (auto inner = content.folders.rbegin(); inner != content.folders.rend(); ++inner)
            waiting.push_back({Joined(folder.name, inner->name), inner->isLink});
    }
    return true;
}

// ---------------------------------------------------------------------------------------------------------
// Relative paths

struct PathParts {
    string_view root;
    std::vector<string_view> parts;
};

bool IsRootEqual(string_view a, string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return ToLower(x) == ToLower(y) ||
               (kSeparators.find(x) != string_view::npos && kSeparators.find(y) != string_view::npos);
    });
}

/// The part of a path that no way leads out of: the drive with its ":" and the separators behind it, or the
/// computer and the folder that it shares, with the two separators before them.
string_view RootOf(string_view path) {
    const std::size_t separators = path.find_first_not_of(kSeparators);
    const std::size_t firstEnd = path.find_first_of(kSeparators, separators);
    if (separators == 2 && firstEnd != string_view::npos) {
        const std::size_t second = path.find_first_not_of(kSeparators, firstEnd);
        return path.substr(0, path.find_first_of(kSeparators, second));
    }
    const std::size_t colon = path.substr(0, path.find_first_of(kSeparators)).find(':');
    const std::size_t drive = colon == string_view::npos ? 0 : colon + 1;
    return path.substr(0, path.find_first_not_of(kSeparators, drive));
}

PathParts PartsOf(string_view path) {
    PathParts result{RootOf(path), {}};
    for (path.remove_prefix(result.root.size()); !path.empty();) {
        const std::size_t end = std::min(path.find_first_of(kSeparators), path.size());
        const string_view part = path.substr(0, end);
        path.remove_prefix(std::min(path.size(), end + 1));
        if (part.empty() || part == ".") continue;
        const bool takesBack = part == ".." && !result.parts.empty() && result.parts.back() != "..";
        if (takesBack) {
            result.parts.pop_back();
        } else if (part != ".." || result.root.empty()) {
            result.parts.push_back(part);  // above a root there is only the root
        }
    }
    return result;
}

std::string RelativePath(string_view path, string_view base) {
    const PathParts to = PartsOf(path), from = PartsOf(base);
    const auto [toRest, fromRest] =
        std::mismatch(to.parts.begin(), to.parts.end(), from.parts.begin(), from.parts.end());
    if (!IsRootEqual(to.root, from.root) || std::find(fromRest, from.parts.end(), "..") != from.parts.end())
        return std::string(path);
    std::string result;
    for (auto part = fromRest; part != from.parts.end(); ++part)
        result = Joined(result, "..");
    for (auto part = toRest; part != to.parts.end(); ++part)
        result = Joined(result, std::string(*part));
    return result.empty() ? "." : result;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// The exported functions

CoreString MakeRelativePath(const char* path, const char* base) try {
    return CoreString(string_view(RelativePath(path ? path : "", base ? base : "")));
} catch (const std::exception&) {
    return CoreString(path);
}

bool FindFiles(const char* folder, const char* pattern, TOrderedList<STRID>& out, bool inSubDirectories,
               bool fullPath) try {
    const string_view wanted(pattern ? pattern : "");
    const bool all = FitsEverything(wanted);
    return Walk(folder, inSubDirectories, [&](const std::string& path, const FolderContent& content, bool) {
        for (const std::string& name : content.files) {
            if (all || Fits(name, wanted)) out.Add(StrId((fullPath ? Joined(path, name) : name).c_str()));
        }
    });
} catch (const std::exception&) {
    return false;
}

bool FindSubDirectories(const char* folder, TOrderedList<STRID>& out, bool inSubDirectories) try {
    return Walk(folder, inSubDirectories, [&](const std::string& path, const FolderContent&, bool isFirst) {
        if (!isFirst) out.Add(StrId(path.c_str()));
    });
} catch (const std::exception&) {
    return false;
}

bool ExpandFilename(const char* pattern, TOrderedList<STRID>& out) try {
    const string_view whole(pattern ? pattern : "");
    const std::size_t nameStart = whole.find_last_of(kSeparators) + 1;  // npos + 1 is 0
    const string_view name = whole.substr(nameStart);
    if (name.find_first_of("*?") == string_view::npos) {
        if (!whole.empty()) out.Add(StrId(pattern));
        return !whole.empty();
    }
    TOrderedList<STRID> found;
    const bool isRead = FindFiles(std::string(whole.substr(0, nameStart)).c_str(), std::string(name).c_str(),
                                  found, false, true);
    const bool any = !found.IsEmpty();
    out.Splice(std::move(found));
    return isRead && any;
} catch (const std::exception&) {
    return false;
}

bool BrowseForDirectory(CoreString& folder) {
    const HostServices services = GetHostServices();
    CoreString chosen = folder;
    if (!services.browseForFolder || !services.browseForFolder(services.context, "", chosen)) return false;
    folder = chosen;
    return true;
}

}  // namespace brenta
