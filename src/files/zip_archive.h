// Reading archives, as the functions for reading and those for adding need it.
#pragma once

#include <minizip/unzip.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "os/data_files.h"

namespace brenta {

/// The file of an archive that minizip writes. Where minizip finds no memory it may forget to close it; the
/// end of this object does not.
struct ZipStream {
    ZipStream() = default;
    ~ZipStream() {
        if (file) std::fclose(file);
    }
    ZipStream(const ZipStream&) = delete;
    ZipStream& operator=(const ZipStream&) = delete;

    std::FILE* file = nullptr;
};

/// The file functions for minizip: paths in either form, regular files only, nothing inherited by other
/// programs. The stream is to live longer than the archive.
zlib_filefunc64_def ZipFileFunctions(ZipStream& stream);

/// What an entry says in its additional field, where the numbers in its head have no room.
struct LargeForm {
    bool hasSize = false;
    std::uint64_t shift = 0;  ///< from the largest place that the head can tell to where the entry begins
};

/// An archive that is open for reading, standing at one of its entries.
class ZipReader {
 public:
    enum class Step { Entry, End, Damaged };

    explicit ZipReader(const char* path);
    ZipReader(const ZipReader&) = delete;
    ZipReader& operator=(const ZipReader&) = delete;

    /// Closes the file, and opens it again later: what is known of the archive stays meanwhile. False if it
    /// cannot be opened; whoever resumes looks whether it is the same version.
    void Pause() { m_pFile.reset(); }
    bool Resume(const char* path);

    /// Whether the file is an archive. One without entries may be open or not.
    bool IsArchive() const { return m_archive || m_isEmpty; }
    /// Whether the archive ends as it should: its comment is not cut, and one that counts no entries has
    /// nothing else in it either.
    bool IsWhole() const;
    /// Whether it was opened by this path.
    bool IsAt(const char* path) const { return path && m_path == path; }
    /// The version of the file, as it was before it was opened.
    const os::FileStamp& Stamp() const { return m_stamp; }

    /// The steps through the directory. Name and Info then tell of the entry.
    Step First();
    Step Next();
    /// Back to an entry that Place was asked for, which no other step may follow.
    Step GoTo(const unz64_file_pos& place);
    unz64_file_pos Place() const;
    std::string_view Name() const { return m_name; }
    const unz_file_info64& Info() const { return m_info; }

    /// Whether the entry's sizes are possible, so that memory may be asked for, and it can be unpacked.
    bool IsReadable() const;
    /// Unpacks the whole entry; how much of it is in `data` then is returned in `count`. False if it is
    /// damaged.
    bool Read(unsigned char* data, std::uint64_t& count);

 private:
    struct Closer {
        void operator()(void* archive) const { unzClose(archive); }
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    static ZipReader& Of(void* reader) { return *static_cast<ZipReader*>(reader); }
    zlib_filefunc64_def FileFunctions();

    Step ReadEntry();
    void ReadLargeForm(std::string_view additional);
    bool ReadData(unsigned char* data, std::uint64_t& count);

    std::string m_path;
    std::uint64_t m_shift = 0;  // of all places that minizip goes to
    std::unique_ptr<std::FILE, Closer> m_pFile;
    std::unique_ptr<void, Closer> m_archive;  // goes before the file
    os::FileStamp m_stamp;
    bool m_isEmpty = false;
    std::uint64_t m_fileSize = 0;
    std::uint64_t m_passed = 0;
    unz_file_info64 m_info{};
    LargeForm m_large;
    std::vector<char> m_nameBuffer;
    std::string_view m_name;
};

/// The archive at a path, standing at its first entry of a name, in any case; null if there is none.
std::unique_ptr<ZipReader> FindZipEntry(const char* path, std::string_view name);

/// Keeps an archive whose entry was read for the next one, without its file being open.
void KeepZipArchive(std::unique_ptr<ZipReader> archive);

}  // namespace brenta
