// Any bytes as an archive: every entry is listed and read, and after adding one the archive holds one more,
// or the same bytes as before.
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "brenta/zip.h"
#include "os/os.h"
#include "scratch_file.h"

namespace {

using namespace brenta;

constexpr std::uint64_t kMostUnpacked = 1 << 24;  // of one input, so that honest bombs take no time

void Require(bool holds) {
    if (!holds) std::abort();
}

void ReadAll(const char* path, const TOrderedList<ZipFileInfo>& entries) {
    std::uint64_t unpacked = 0;
    for (const ZipFileInfo& entry : entries) {
        if ((unpacked += entry.size) > kMostUnpacked) break;
        ZipFileInfo info;
        info.name = entry.name;
        const bool good = UnzipFile(path, info);
        const std::unique_ptr<unsigned char[]> data(info.data);
        Require(!good || data);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::ScratchFile file("zip");
    const char* const path = file.Path();
    const std::string before(reinterpret_cast<const char*>(data), size);
    Require(os::WriteWholeFile(path, before));
    TOrderedList<ZipFileInfo> entries, more;
    const bool listed = GetZipDirectory(path, entries);
    Require(!listed || IsZipFile(path));
    ReadAll(path, entries);

    unsigned char content[] = {'n', 'e', 'w'};
    ZipFileInfo added{"\x01new entry", 0, sizeof content, content};
    std::string after;
    if (ZipFile(path, added)) {
        Require(GetZipDirectory(path, more) && more.GetCount() == entries.GetCount() + 1);
    } else {
        Require(os::ReadWholeFile(path, after) == os::FileStatus::Ok && after == before);
    }
    file.Remove();
    return 0;
}
