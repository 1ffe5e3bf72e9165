// Packs texts into a zip archive, lists it and takes one of them out again.
#include <brenta/containers.h>
#include <brenta/zip.h>

#include <cstdio>
#include <cstring>
#include <memory>

constexpr const char* kArchive = "zip_project.zip";

bool Pack(const char* name, const char* text) {
    // The record wants bytes that may be changed, as it is used for reading, too.
    const std::size_t size = std::strlen(text);
    const auto bytes = std::make_unique<unsigned char[]>(size);
    std::memcpy(bytes.get(), text, size);
    brenta::ZipFileInfo entry;
    entry.name = name;
    entry.size = static_cast<std::uint32_t>(size);
    entry.data = bytes.get();
    return brenta::ZipFile(kArchive, entry);
}

bool List() {
    brenta::TOrderedList<brenta::ZipFileInfo> entries;
    if (!brenta::GetZipDirectory(kArchive, entries)) return false;
    for (const brenta::ZipFileInfo& entry : entries)
        std::printf("%5u  %s\n", static_cast<unsigned>(entry.size), entry.name());
    return true;
}

bool Print(const char* name) {
    brenta::ZipFileInfo entry;
    entry.name = name;
    const bool isGood = brenta::UnzipFile(kArchive, entry);
    const std::unique_ptr<unsigned char[]> data(entry.data);  // ours from now on
    if (isGood) std::fwrite(entry.data, 1, entry.size, stdout);
    return isGood;
}

int main() {
    std::remove(kArchive);
    const bool isGood = Pack("boards/main.brd", "a board\n") && Pack("readme.txt", "Two files in one.\n") &&
                        List() && Print("README.TXT");  // case does not matter
    std::remove(kArchive);
    return isGood ? 0 : 1;
}
