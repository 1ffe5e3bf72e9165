// Archives beside minizip, called directly.
#include <minizip/unzip.h>
#include <minizip/zip.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "brenta/zip.h"
#include "families.h"
#include "input_files.h"
#include "workload.h"

namespace brenta::bench {
namespace {

constexpr int kFiles = 2000;
constexpr std::size_t kFileSize = 100000;
constexpr int kRow = 400;

/// Drawings: rows of pads, each at a place of its own, so that they shrink to about a sixth.
std::string MakeDrawing(int number) {
    std::string text = "G04 drawing " + std::to_string(number) + "*\n";
    for (int i = 0; text.size() < kFileSize; ++i) {
        const int row = i / kRow;
        text += "X" + std::to_string(100000 + i % kRow * 1270) + "Y" +
                std::to_string(200000 + row * 2540 + row * (number + 7) % 61) + "D03*\n";
    }
    text.resize(kFileSize);
    return text;
}

const std::vector<std::string>& Drawings() {
    static const auto* const paths = [] {
        auto* const made = new std::vector<std::string>;
        for (int i = 0; i < kFiles; ++i)
            made->push_back(InputFile("d" + std::to_string(i) + ".gbr", [i] { return MakeDrawing(i); }));
        return made;
    }();
    return *paths;
}

std::string NameOf(const std::string& path) {
    return std::filesystem::path(path).filename();
}

// ---------------------------------------------------------------------------------------------------------
// Writing

void WriteOurs(const std::string& path) {
    std::filesystem::remove(path);
    TOrderedList<CoreString> files;
    for (const std::string& drawing : Drawings())
        files.Add(CoreString(drawing.c_str()));
    ZipFiles(path.c_str(), files, true);
}

void WriteTheirs(const std::string& path) {
    const zipFile archive = zipOpen64(path.c_str(), APPEND_STATUS_CREATE);
    for (const std::string& drawing : Drawings()) {
        const std::string data = ReadInput(drawing);
        const zip_fileinfo info{};
        zipOpenNewFileInZip64(archive, NameOf(drawing).c_str(), &info, nullptr, 0, nullptr, 0, nullptr,
                              Z_DEFLATED, Z_DEFAULT_COMPRESSION, 0);
        zipWriteInFileInZip(archive, data.data(), static_cast<unsigned int>(data.size()));
        zipCloseFileInZip(archive);
    }
    zipClose(archive, nullptr);
}

// ---------------------------------------------------------------------------------------------------------
// Reading: the sum of all bytes

std::uint64_t SumOf(const unsigned char* data, std::size_t size) {
    std::uint64_t sum = size;
    for (std::size_t i = 0; i < size; i += 64)
        sum = sum * 31 + data[i];
    return sum;
}

std::string ReadOurs(const std::string& path) {
    TOrderedList<ZipFileInfo> entries;
    GetZipDirectory(path.c_str(), entries);
    std::uint64_t sum = 0;
    for (ZipFileInfo& entry : entries) {
        if (!UnzipFile(path.c_str(), entry)) return "an entry that cannot be read";
        sum += SumOf(entry.data, entry.size);
        delete[] entry.data;
    }
    return std::to_string(sum);
}

std::string ReadTheirs(const std::string& path) {
    const unzFile archive = unzOpen64(path.c_str());
    std::uint64_t sum = 0;
    for (int result = unzGoToFirstFile(archive); result == UNZ_OK; result = unzGoToNextFile(archive)) {
        unz_file_info64 info{};
        unzGetCurrentFileInfo64(archive, &info, nullptr, 0, nullptr, 0, nullptr, 0);
        std::unique_ptr<unsigned char[]> data(new unsigned char[info.uncompressed_size]);
        unzOpenCurrentFile(archive);
        unzReadCurrentFile(archive, data.get(), static_cast<unsigned int>(info.uncompressed_size));
        unzCloseCurrentFile(archive);
        sum += SumOf(data.get(), info.uncompressed_size);
    }
    unzClose(archive);
    return std::to_string(sum);
}

// ---------------------------------------------------------------------------------------------------------

ContenderMaker Writing(void (*write)(const std::string& path), const char* name) {
    return [=] {
        Drawings();
        const std::string path = PathOfInput(name);
        return Checked([=] { write(path); },
                       [=] {
                           write(path);
                           return ReadTheirs(path);
                       })();
    };
}

ContenderMaker Reading(std::string (*read)(const std::string& path)) {
    return [read] {
        const std::string path = PathOfInput("read.zip");
        if (!std::filesystem::exists(path)) WriteTheirs(path);
        return Checked([=] { read(path); }, [=] { return read(path); })();
    };
}

}  // namespace

void AddArchiveWorkloads() {
    Workloads().push_back({"archives", "write 2,000 entries of 100 KB", "minizip", 1.05,
                           Writing(WriteOurs, "ours.zip"), Writing(WriteTheirs, "theirs.zip")});
    Workloads().push_back({"archives", "read 2,000 entries of 100 KB", "minizip", 1.05, Reading(ReadOurs),
                           Reading(ReadTheirs)});
}

}  // namespace brenta::bench
