// brenta zip: lists, tests, fills and unpacks archives.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <system_error>

#include "brenta/files.h"
#include "brenta/zip.h"
#include "command.h"
#include "console.h"
#include "style.h"

namespace brenta::host {
namespace {

namespace fs = std::filesystem;

struct ZipOptions {
    std::string archive;
    std::vector<std::string> names;  ///< files to add, entries to extract
    std::string folder = ".";        ///< to extract to
    bool namesOnly = false;
    bool overwrite = false;
};

std::string Quoted(const std::string& text) {
    return "'" + text + "'";
}

/// An entry and, where an earlier one has the same name but for case, that one: only the first can be
/// reached.
struct Entry {
    std::string name;
    std::uint32_t size = 0;
    std::string hiddenBy;
};

/// The archive's entries; complains if they cannot be had. An archive without entries is fine.
bool ReadDirectory(const std::string& archive, std::vector<Entry>& entries) {
    if (!CheckFile(archive)) return false;
    TOrderedList<ZipFileInfo> directory;
    const bool good = GetZipDirectory(archive.c_str(), directory);
    if (!good && !(directory.IsEmpty() && IsZipFile(archive.c_str()))) {
        Complain(Quoted(archive) + (directory.IsEmpty() ? " is no zip archive" : " has a damaged directory"));
        return false;
    }
    std::map<std::string, std::string> first;
    for (const ZipFileInfo& info : directory) {
        CoreString folded = info.name;
        folded.MakeLower();
        const auto [place, isFirst] = first.emplace(folded(), info.name());
        entries.push_back({info.name(), info.size, isFirst ? "" : place->second});
        if (!isFirst && entries.back().hiddenBy.empty()) entries.back().hiddenBy = "another without a name";
    }
    return true;
}

/// Reads an entry; complains if that fails.
bool ReadEntry(const std::string& archive, const Entry& entry, std::string& content) {
    if (!entry.hiddenBy.empty()) {
        Complain(Quoted(entry.name) + " cannot be reached behind " + Quoted(entry.hiddenBy));
        return false;
    }
    ZipFileInfo info;
    info.name = entry.name.c_str();
    const bool good = UnzipFile(archive.c_str(), info);
    const std::unique_ptr<unsigned char[]> data(info.data);
    if (good) {
        content.assign(info.data, info.data + info.size);
    } else {
        Complain(Quoted(entry.name) + " is damaged, or packed in a way that cannot be read");
    }
    return good;
}

int List(const ZipOptions& options) {
    std::vector<Entry> entries;
    if (!ReadDirectory(options.archive, entries)) return 1;
    Table table({{"bytes", 11, true}, {"name", 0}});
    for (const Entry& entry : entries)
        table.Row({std::to_string(entry.size), entry.name});
    return 0;
}

int Test(const ZipOptions& options) {
    const std::string& archive = options.archive;
    std::vector<Entry> entries;
    if (!ReadDirectory(archive, entries)) return 1;
    std::string content;
    const auto bad = std::count_if(entries.begin(), entries.end(),
                                   [&](const Entry& entry) { return !ReadEntry(archive, entry, content); });
    const std::string count = std::to_string(entries.size()) + (entries.size() == 1 ? " entry" : " entries");
    PrintLine(archive + ": " + count + ", " + (bad == 0 ? "all good" : std::to_string(bad) + " bad"));
    return bad == 0 ? 0 : 1;
}

int Add(const ZipOptions& options) {
    TOrderedList<CoreString> files;
    for (const std::string& file : options.names) {
        if (!CheckFile(file)) return 1;
        files.Add(file.c_str());
    }
    const bool isNew = !FileExists(options.archive.c_str());
    if (!isNew && !IsZipFile(options.archive.c_str())) {
        Complain(Quoted(options.archive) + " is no zip archive");
        return 1;
    }
    if (ZipFiles(options.archive.c_str(), files, options.namesOnly)) return 0;
    Complain(Quoted(options.archive) +
             " cannot be written, or is damaged, or one of the files cannot be read");
    return 1;
}

// ---------------------------------------------------------------------------------------------------------
// Unpacking

/// Where an entry goes below the target folder; empty if its name leads out of it. Both separators count on
/// every system: who packed the archive may have used another one.
fs::path PathBelow(const std::string& name) {
    std::string portable = name;
    std::replace(portable.begin(), portable.end(), '\\', '/');
    const fs::path path(portable);
    const bool leaves = portable.empty() || portable[0] == '/' || portable.find(':') != std::string::npos ||
                        std::find(path.begin(), path.end(), "..") != path.end();
    return leaves ? fs::path() : path.lexically_normal();
}

bool IsFolderName(const std::string& name) {
    return !name.empty() && (name.back() == '/' || name.back() == '\\');
}

bool WriteFile(const fs::path& path, const std::string& content, bool overwrite) {
    std::error_code error;
    if (!overwrite && fs::exists(fs::symlink_status(path, error))) {
        Complain(Quoted(path.string()) + " exists already (--overwrite replaces it)");
        return false;
    }
    fs::create_directories(path.parent_path(), error);
    std::ofstream file(path, std::ios::binary);
    file << content;
    file.close();
    if (!file) Complain(Quoted(path.string()) + " cannot be written");
    return static_cast<bool>(file);
}

bool ExtractOne(const ZipOptions& options, const Entry& entry) {
    const fs::path path = fs::path(options.folder) / PathBelow(entry.name);
    if (IsFolderName(entry.name)) {
        std::error_code error;
        fs::create_directories(path, error);
        if (error) Complain(Quoted(path.string()) + " cannot be made");
        return !error;
    }
    std::string content;
    return ReadEntry(options.archive, entry, content) && WriteFile(path, content, options.overwrite);
}

/// The entries that are asked for, all of them if none is named; complains about names that are not in the
/// archive.
bool Choose(const std::vector<std::string>& names, std::vector<Entry>& entries) {
    for (const std::string& name : names) {
        if (std::none_of(entries.begin(), entries.end(),
                         [&](const Entry& entry) { return entry.name == name; })) {
            Complain("there is no entry " + Quoted(name));
            return false;
        }
    }
    if (names.empty()) return true;
    std::erase_if(entries, [&](const Entry& entry) {
        return std::find(names.begin(), names.end(), entry.name) == names.end();
    });
    return true;
}

int Extract(const ZipOptions& options) {
    std::vector<Entry> entries;
    if (!ReadDirectory(options.archive, entries) || !Choose(options.names, entries)) return 1;
    for (const Entry& entry : entries) {
        if (!PathBelow(entry.name).empty()) continue;
        Complain(Quoted(entry.name) + " leads out of the folder; nothing was unpacked");
        return 1;
    }
    bool good = true;
    for (const Entry& entry : entries)
        good = ExtractOne(options, entry) && good;
    return good ? 0 : 1;
}

// ---------------------------------------------------------------------------------------------------------
// The command line

std::vector<std::string> SuggestEntries(const std::vector<std::string>& before) {
    TOrderedList<ZipFileInfo> directory;
    GetZipDirectory(before[0].c_str(), directory);
    std::vector<std::string> names;
    for (const ZipFileInfo& info : directory)
        names.emplace_back(info.name());
    return names;
}

Command DefineAction(Command& command, const std::shared_ptr<ZipOptions>& options, const char* name,
                     const char* summary, int (*run)(const ZipOptions&)) {
    Command action = command.Action(name, summary);
    action.Word("ARCHIVE", options->archive, WordKind::kArchive, "The archive");
    action.Run([options, run] { return run(*options); });
    return action;
}

void Define(Command& command) {
    const auto options = std::make_shared<ZipOptions>();
    command.Example("brenta zip list project.zip");
    command.Example("brenta zip add --names-only project.zip boards/main.brd");
    command.Example("brenta zip extract -d unpacked project.zip");

    DefineAction(command, options, "list", "Print the size and name of each entry", &List);
    DefineAction(command, options, "test", "Unpack each entry in memory and compare its checksum", &Test);

    Command add =
        DefineAction(command, options, "add", "Add files; an archive that is missing is created", &Add);
    add.OptionalWords("FILE", options->names, WordKind::kFile,
                      "The files; of two with one name only the first can be unpacked");
    add.Flag("-j,--names-only", options->namesOnly, "Leave the folders of the files out of their names");
    add.Example("brenta zip add --names-only project.zip boards/main.brd", "the entry is called main.brd");

    Command extract = DefineAction(command, options, "extract",
                                   "Unpack entries; names that lead out of the folder are refused", &Extract);
    extract.OptionalWords("NAME", options->names, WordKind::kText, "The entries; all without it");
    extract.Suggest(&SuggestEntries);
    extract.Option("-d,--directory", "FOLDER", options->folder, WordKind::kFolder,
                   "Where to; default the current folder");
    extract.Flag("-o,--overwrite", options->overwrite, "Replace files that exist");
    extract.Example("brenta zip extract -d unpacked project.zip boards/main.brd");
}

const CommandEntry entry("zip", CommandGroup::kData, "List, test, fill and unpack zip archives", &Define);

}  // namespace

}  // namespace brenta::host
