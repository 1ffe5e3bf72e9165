#include "platform/ini_file.h"

#include <memory>
#include <utility>

#include "foundation/process_cache.h"
#include "os/data_files.h"
#include "os/os.h"
#include "platform/ini_text.h"

namespace brenta {

namespace {

constexpr std::size_t kLargestFile = std::size_t{64} << 20;

/// The file that was read last.
struct Cache {
    std::string path;
    os::FileStamp stamp;
    std::shared_ptr<const IniText> text;
};

bool ReadText(const std::string& path, std::string& content) {
    return os::ReadWholeFile(path.c_str(), content, kLargestFile) == os::FileStatus::Ok;
}

/// Null if there is no such file, or it cannot be read.
std::shared_ptr<const IniText> TextOf(const std::string& path) {
    os::FileStamp stamp;
    if (!os::StampOfFile(path.c_str(), stamp)) return nullptr;
    return ProcessCache<Cache>::With([&](Cache& cache) -> std::shared_ptr<const IniText> {
        if (cache.text && cache.stamp == stamp && cache.path == path) return cache.text;
        std::string content;
        if (!ReadText(path, content)) return nullptr;
        auto text = std::make_shared<const IniText>(std::move(content));
        // If what was read is newer than the stamp, the next stamp will differ, as the clock has ticked
        // since.
        if (os::IsSettled(stamp)) cache = {path, stamp, text};
        return text;
    });
}

/// The file's text as it is now, "" if there is none; false if there is one that cannot be read.
bool ReadForChange(const std::string& path, std::string& content) {
    return ReadText(path, content) || os::IsAbsent(path.c_str());
}

}  // namespace

std::string ReadIniValue(const std::string& path, std::string_view section, std::string_view key) {
    std::string_view value;
    const std::shared_ptr<const IniText> text = TextOf(path);
    if (text) text->Find(section, key, value);
    return std::string(value);
}

std::vector<std::string> ListIniNames(const std::string& path, const std::string_view* section) {
    const std::shared_ptr<const IniText> text = TextOf(path);
    if (!text) return {};
    const std::vector<std::string_view> names = section ? text->Keys(*section) : text->Sections();
    return {names.begin(), names.end()};
}

bool ChangeIniFile(const std::string& path, std::string_view section, std::string_view key,
                   const std::string_view* value) {
    std::string content;
    if (!ReadForChange(path, content)) return false;
    IniText text(content);
    if (value)
        text.Set(section, key, *value);
    else
        text.Remove(section, key);
    if (text.Content() == content) return true;
    return os::CreatePrivateFile(path.c_str()) && os::ReplaceWholeFile(path.c_str(), text.Content());
}

}  // namespace brenta
