// Finding entries by their names.
//
// An archive's directory is a list, and has to be walked. Who unpacks all entries one by one would walk it
// once for each: hours for 50,000. So the archive that is read for the second time in a row gets an index,
// which stays, together with what minizip knows of the archive, until another archive is read or the file
// changes. The first reading makes none: it may be the only one, and then stops where the entry is found.
#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "files/zip_archive.h"
#include "foundation/characters.h"
#include "foundation/process_cache.h"
#include "os/data_files.h"

namespace brenta {

namespace {

bool SameName(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return ToLower(x) == ToLower(y); });
}

/// Where the entries stand in the directory, by the hashes of their names.
class ZipIndex {
 public:
    explicit ZipIndex(ZipReader& archive);
    /// False if the directory could not be read to its end, now or ever.
    bool IsWhole() const { return m_isWhole; }
    bool Find(ZipReader& archive, std::string_view name) const;

 private:
    struct Entry {
        std::size_t hash;
        unz64_file_pos place;
    };

    /// Of names that differ in case only, too. `folded` is a buffer for further use.
    static std::size_t HashOf(std::string_view name, std::string& folded) {
        folded.resize(name.size());
        std::transform(name.begin(), name.end(), folded.begin(), [](char c) { return ToLower(c); });
        return std::hash<std::string_view>()(folded);
    }

    bool m_isWhole;
    std::vector<Entry> m_entries;  // sorted by their hashes, then in the directory's order
};

ZipIndex::ZipIndex(ZipReader& archive) {
    std::string folded;
    auto step = archive.First();
    for (; step == ZipReader::Step::Entry; step = archive.Next())
        m_entries.push_back({HashOf(archive.Name(), folded), archive.Place()});
    m_isWhole = step == ZipReader::Step::End;
    std::stable_sort(m_entries.begin(), m_entries.end(),
                     [](const Entry& a, const Entry& b) { return a.hash < b.hash; });
}

bool ZipIndex::Find(ZipReader& archive, std::string_view name) const {
    std::string folded;
    const std::size_t hash = HashOf(name, folded);
    auto entry = std::lower_bound(m_entries.begin(), m_entries.end(), hash,
                                  [](const Entry& a, std::size_t wanted) { return a.hash < wanted; });
    for (; entry != m_entries.end() && entry->hash == hash; ++entry) {
        if (archive.GoTo(entry->place) == ZipReader::Step::Entry && SameName(archive.Name(), name))
            return true;
    }
    return false;
}

// ---------------------------------------------------------------------------------------------------------
// The archive that was read last

struct LastArchive {
    os::FileStamp stamp;
    std::shared_ptr<const ZipIndex> index;  ///< null after the first reading
    /// With the index, while nobody reads from it: opening an archive takes longer than reading many an
    /// entry. Its file is closed.
    std::unique_ptr<ZipReader> archive;
};

using LastArchiveCache = ProcessCache<LastArchive>;

/// Remembers which archive is read; true if it is the last one again. `index` is that one's, if there is one.
bool IsReadAgain(const os::FileStamp& stamp, std::shared_ptr<const ZipIndex>& index) {
    return LastArchiveCache::With([&](LastArchive& last) {
        const bool again = last.stamp == stamp;
        if (!again) last = {stamp, nullptr, nullptr};
        index = last.index;
        return again;
    });
}

void Keep(const os::FileStamp& stamp, const std::shared_ptr<const ZipIndex>& index) {
    LastArchiveCache::With([&](LastArchive& last) {
        if (last.stamp == stamp) last.index = index;
    });
}

/// The index of an archive that is read again; null if it should be walked.
std::shared_ptr<const ZipIndex> IndexOf(ZipReader& archive, const char* path) {
    const os::FileStamp stamp = archive.Stamp();
    std::shared_ptr<const ZipIndex> index;
    if (!os::IsSettled(stamp) || !IsReadAgain(stamp, index)) return nullptr;
    const bool isNew = !index;
    if (isNew) index = std::make_shared<const ZipIndex>(archive);
    if (!index->IsWhole()) return nullptr;  // what is missing may only have been unreadable for a moment
    os::FileStamp now;
    if (!os::StampOfFile(path, now) || now != stamp) return nullptr;  // who knows which of both is open
    if (isNew) Keep(stamp, index);
    return index;
}

/// The archive that was kept, if the path still leads to that version of it; `index` is its index.
std::unique_ptr<ZipReader> TakeKept(const char* path, std::shared_ptr<const ZipIndex>& index) {
    auto archive = LastArchiveCache::With([&](LastArchive& last) -> std::unique_ptr<ZipReader> {
        if (!last.archive || !last.archive->IsAt(path)) return nullptr;
        index = last.index;
        return std::move(last.archive);
    });
    // Opened before its version is looked at: what is there then is what was opened.
    os::FileStamp now;
    const bool good =
        archive && archive->Resume(path) && os::StampOfFile(path, now) && now == archive->Stamp();
    if (!good) index = nullptr;
    return good ? std::move(archive) : nullptr;
}

}  // namespace

std::unique_ptr<ZipReader> FindZipEntry(const char* path, std::string_view name) {
    std::shared_ptr<const ZipIndex> index;
    std::unique_ptr<ZipReader> archive = TakeKept(path, index);
    if (!archive) {
        archive = std::make_unique<ZipReader>(path);
        index = IndexOf(*archive, path);
    }
    bool found = false;
    if (index) {
        found = index->Find(*archive, name);
    } else {
        auto step = archive->First();
        while (step == ZipReader::Step::Entry && !SameName(archive->Name(), name))
            step = archive->Next();
        found = step == ZipReader::Step::Entry;
    }
    if (!found) KeepZipArchive(std::exchange(archive, nullptr));
    return archive;
}

void KeepZipArchive(std::unique_ptr<ZipReader> archive) {
    archive->Pause();
    LastArchiveCache::With([&](LastArchive& last) {
        if (last.index && last.stamp == archive->Stamp()) std::swap(last.archive, archive);
    });
}

}  // namespace brenta
