#include "brenta/files.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "foundation/characters.h"
#include "os/os.h"

namespace brenta {

namespace {

using std::string_view;

constexpr string_view kSeparators = "\\/";

bool IsSeparator(char c) {
    return c == '\\' || c == '/';
}

bool StartsWithSeparator(string_view text) {
    return !text.empty() && IsSeparator(text.front());
}

bool EndsWithSeparator(string_view text) {
    return !text.empty() && IsSeparator(text.back());
}

/// An argument as a view; null counts as "".
string_view ViewOf(const char* text) {
    return text ? string_view(text) : string_view();
}

string_view WithoutLeadingDot(string_view ext) {
    return ext.starts_with('.') ? ext.substr(1) : ext;
}

string_view BehindLastSeparator(string_view path) {
    const std::size_t separator = path.find_last_of(kSeparators);
    return separator == string_view::npos ? path : path.substr(separator + 1);
}

string_view BeforeLastDot(string_view path) {
    return path.substr(0, path.rfind('.'));
}

/// Appends a part of a path and a "\" behind it unless it ends with a separator already.
void AppendFolder(CoreString& path, string_view folder) {
    path += folder;
    if (!EndsWithSeparator(path.View())) path += '\\';
}

CoreString AddExtension(string_view name, const char* ext) {
    CoreString result(name);
    if (name.find('.') == string_view::npos) {
        result += '.';
        result += WithoutLeadingDot(ViewOf(ext));
    }
    return result;
}

/// "con" and the others in lower case; one of them is stored in upper case and so never matches.
bool IsReservedName(string_view lowerName) {
    static constexpr string_view kPlain[] = {"con", "PRN", "aux", "nul"};
    if (std::find(std::begin(kPlain), std::end(kPlain), lowerName) != std::end(kPlain)) return true;
    const bool isPort = lowerName.starts_with("com") || lowerName.starts_with("lpt");
    return isPort && lowerName.size() == 4 && lowerName[3] >= '1' && lowerName[3] <= '9';
}

bool IsAboveBlank(char c) {
    return static_cast<unsigned char>(c) > ' ';
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Questions

bool DirectoryExists(const char* path) {
    return path && *path != 0 && os::KindOfPath(path) == os::PathKind::Directory;
}

bool FileExists(const char* path) {
    return path && *path != 0 && os::KindOfPath(path) == os::PathKind::File;
}

bool IsQualifiedFilename(const char* path) {
    const string_view text = ViewOf(path);
    return StartsWithSeparator(text) || text.find(':') != string_view::npos;
}

bool IsLegalFilename(const char* path) {
    const string_view name = BehindLastSeparator(ViewOf(path));
    if (name.empty() || !IsAboveBlank(name.front()) || !IsAboveBlank(name.back()) || name.front() == '.')
        return false;
    if (name.find_first_of("<>|?*\"\\/:") != string_view::npos) return false;
    CoreString lowerName(name);
    lowerName.MakeLower();
    return !IsReservedName(lowerName.View());
}

// ---------------------------------------------------------------------------------------------------------------------
// Taking paths apart

CoreString GetExtName(const char* path) {
    const string_view text = ViewOf(path);
    const std::size_t dot = text.rfind('.');
    return CoreString(dot == string_view::npos ? string_view() : text.substr(dot + 1));
}

CoreString StripExtName(const char* path) {
    return CoreString(BeforeLastDot(ViewOf(path)));
}

CoreString GetPathName(const char* path) {
    const string_view text = ViewOf(path);
    const std::size_t separator = text.find_last_of(kSeparators);
    return CoreString(separator == string_view::npos ? string_view("./") : text.substr(0, separator + 1));
}

CoreString StripPathName(const char* path) {
    return CoreString(BehindLastSeparator(ViewOf(path)));
}

CoreString GetFileName(const char* path, bool keepExt) {
    const string_view name = BehindLastSeparator(ViewOf(path));
    return CoreString(keepExt ? name : BeforeLastDot(name));
}

CoreString StripFileName(const char* path) {
    const string_view text = ViewOf(path);
    CoreString folder(text.substr(0, text.find_last_of(kSeparators)));
    if (folder.GetLength() < static_cast<int>(text.size())) folder.Replace('/', '\\');
    return folder;
}

CoreString GetDriveName(const char* path) {
    const string_view text = ViewOf(path);
    const std::size_t colon = text.find(':');
    if (colon == string_view::npos) return CoreString();
    CoreString drive(text.substr(0, colon + 1));
    drive += '\\';
    return drive;
}

CoreString StripDriveName(const char* path) {
    const string_view text = ViewOf(path);
    const std::size_t colon = text.find(':');
    return CoreString(colon == string_view::npos ? text : text.substr(colon + 1));
}

CoreString GetUrlHostName(const char* url) {
    const string_view text = ViewOf(url);
    const std::size_t scheme = text.find("://");
    if (scheme == string_view::npos) return CoreString();
    return CoreString(text.substr(0, text.find_first_of("/#?&", scheme + 3)));
}

// ---------------------------------------------------------------------------------------------------------------------
// Putting paths together

CoreString AddExt(const char* name, const char* ext) {
    return AddExtension(ViewOf(name), ext);
}

CoreString ReplaceExt(const char* name, const char* ext) {
    return AddExtension(BeforeLastDot(ViewOf(name)), ext);
}

CoreString AppendPaths(const char* first, const char* second) {
    CoreString path(first);
    if (!second) return path;
    string_view rest = ViewOf(second);
    if (EndsWithSeparator(path.View())) {
        if (StartsWithSeparator(rest)) rest.remove_prefix(1);
    } else if (!StartsWithSeparator(rest)) {
        path += '\\';
    }
    path += rest;
    return path;
}

CoreString BuildFilename(const char* root, const char* folder, const char* name, const char* ext) {
    CoreString path;
    const string_view rootPart = ViewOf(root);
    if (!rootPart.empty()) AppendFolder(path, rootPart);

    string_view folderPart = ViewOf(folder);
    if (!folderPart.empty()) {
        if (!path.IsEmpty() && EndsWithSeparator(folderPart) && StartsWithSeparator(folderPart)) {
            folderPart.remove_prefix(1);
        }
        AppendFolder(path, folderPart);
    }

    path += name;
    const string_view extension = ViewOf(ext);
    if (!extension.empty()) {
        if (!path.IsEmpty() && path.GetLastChar() != '.') path += '.';
        path += WithoutLeadingDot(extension);
    }
    return path;
}

// ---------------------------------------------------------------------------------------------------------------------
// Forms of a path

CoreString NormalizeFilename(const char* path, bool upper) {
    CoreString copy(path);
    if (upper) copy.MakeUpper();
    return copy;
}

CoreString CoreNativePath(const char* path) {
    return CoreString(string_view(os::NativePath(path)));
}

}  // namespace brenta
