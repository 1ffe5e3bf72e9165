#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <utility>

#include "brenta/zip.h"
#include "files/zip_archive.h"
#include "foundation/lack_of_memory.h"
#include "os/os.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Files

namespace {

voidpf OpenForZip(voidpf stream, const void* path, int mode) {
    const bool changes = (mode & ZLIB_FILEFUNC_MODE_READWRITEFILTER) != ZLIB_FILEFUNC_MODE_READ;
    std::FILE*& file = static_cast<ZipStream*>(stream)->file;
    return file = os::OpenStream(static_cast<const char*>(path), changes ? "r+b" : "rb");
}

/// minizip does not always look whether it had the memory for what it wants to read.
uLong ReadForZip(voidpf, voidpf file, void* buffer, uLong size) {
    return buffer ? static_cast<uLong>(std::fread(buffer, 1, size, static_cast<std::FILE*>(file))) : 0;
}

/// An error of a write that was kept back for a while shows here at the latest.
int CloseForZip(voidpf stream, voidpf) {
    std::FILE* const file = std::exchange(static_cast<ZipStream*>(stream)->file, nullptr);
    const bool failed = std::ferror(file) != 0;
    return std::fclose(file) != 0 || failed ? EOF : 0;
}

/// minizip takes what it reads behind the end of a cut file for zeros unless the end counts as an error.
int ErrorForZip(voidpf, voidpf stream) {
    auto* const file = static_cast<std::FILE*>(stream);
    return !file || std::ferror(file) != 0 || std::feof(file) != 0 ? 1 : 0;
}

/// minizip's own ways to go to a place in a file of any size, and to tell it.
zlib_filefunc64_def PlainFunctions() {
    zlib_filefunc64_def functions;
    fill_fopen64_filefunc(&functions);
    return functions;
}

long SeekInFile(std::FILE* file, ZPOS64_T offset, int origin) {
    static const zlib_filefunc64_def kPlain = PlainFunctions();
    return kPlain.zseek64_file(nullptr, file, offset, origin);
}

ZPOS64_T TellInFile(std::FILE* file) {
    static const zlib_filefunc64_def kPlain = PlainFunctions();
    return kPlain.ztell64_file(nullptr, file);
}

/// Whether a file is the end record of an archive without entries and nothing else: minizip writes such
/// archives and does not open them.
bool IsEmptyArchive(const char* path, std::uint64_t size) {
    constexpr std::size_t kEndRecordSize = 22;
    constexpr unsigned char kEmptyEnd[kEndRecordSize - 2] = {'P', 'K', 5, 6};
    if (size < kEndRecordSize) return false;
    os::FileReader file;
    unsigned char end[kEndRecordSize];
    if (!file.Open(path) || file.Read(reinterpret_cast<char*>(end), sizeof end) != sizeof end) return false;
    const std::size_t commentSize = end[20] + std::size_t{256} * end[21];
    return std::memcmp(end, kEmptyEnd, sizeof kEmptyEnd) == 0 && kEndRecordSize + commentSize == size;
}

}  // namespace

zlib_filefunc64_def ZipFileFunctions(ZipStream& stream) {
    zlib_filefunc64_def functions = PlainFunctions();
    functions.zopen64_file = &OpenForZip;
    functions.zread_file = &ReadForZip;
    functions.zclose_file = &CloseForZip;
    functions.zerror_file = &ErrorForZip;
    functions.opaque = &stream;
    return functions;
}

// ---------------------------------------------------------------------------------------------------------
// One archive

/// The stream is the reader itself: its file may be closed, and another in its place, while minizip knows
/// nothing of it.
zlib_filefunc64_def ZipReader::FileFunctions() {
    zlib_filefunc64_def functions{};
    functions.opaque = this;
    functions.zopen64_file = [](voidpf self, const void* path, int) -> voidpf {
        return Of(self).Resume(static_cast<const char*>(path)) ? self : nullptr;
    };
    functions.zread_file = [](voidpf self, voidpf, void* bytes, uLong size) -> uLong {
        return ReadForZip(nullptr, Of(self).m_pFile.get(), bytes, size);
    };
    functions.ztell64_file = [](voidpf self, voidpf) -> ZPOS64_T {
        return TellInFile(Of(self).m_pFile.get());
    };
    functions.zseek64_file = [](voidpf self, voidpf, ZPOS64_T offset, int origin) -> long {
        const ZipReader& reader = Of(self);
        if (origin == ZLIB_FILEFUNC_SEEK_SET) offset += reader.m_shift;
        return SeekInFile(reader.m_pFile.get(), offset, origin);
    };
    functions.zclose_file = [](voidpf self, voidpf) -> int {
        Of(self).Pause();
        return 0;
    };
    functions.zerror_file = [](voidpf self, voidpf) -> int {
        return ErrorForZip(nullptr, Of(self).m_pFile.get());
    };
    return functions;
}

bool ZipReader::Resume(const char* path) {
    m_pFile.reset(os::OpenStream(path, "rb"));
    return m_pFile != nullptr;
}

ZipReader::ZipReader(const char* path) : m_path(path ? path : "") {
    os::FileReader file;
    if (!os::StampOfFile(path, m_stamp) || !file.Open(path)) return;
    m_fileSize = file.Size();
    m_isEmpty = IsEmptyArchive(path, m_fileSize);
    zlib_filefunc64_def functions = FileFunctions();
    if (!m_isEmpty) m_archive.reset(unzOpen2_64(path, &functions));
}

bool ZipReader::IsWhole() const {
    unz_global_info64 archive{};
    if (!m_archive || unzGetGlobalInfo64(m_archive.get(), &archive) != UNZ_OK) return m_isEmpty;
    std::vector<char> comment(archive.size_comment + 1);
    const int size = unzGetGlobalComment(m_archive.get(), comment.data(), archive.size_comment);
    return archive.number_entry != 0 && size >= 0 && static_cast<uLong>(size) == archive.size_comment;
}

ZipReader::Step ZipReader::First() {
    unz_global_info64 archive{};
    if (m_isEmpty) return Step::End;
    if (!m_archive || unzGetGlobalInfo64(m_archive.get(), &archive) != UNZ_OK) return Step::Damaged;
    if (archive.number_entry == 0) return Step::End;
    m_passed = 0;
    return unzGoToFirstFile(m_archive.get()) == UNZ_OK ? ReadEntry() : Step::Damaged;
}

ZipReader::Step ZipReader::Next() {
    // minizip takes this count for "as many as there are", since old writers let it overflow, and then comes
    // to the directory's end without noticing it.
    constexpr std::uint64_t kUncounted = 0xFFFF;
    const int result = unzGoToNextFile(m_archive.get());
    if (result == UNZ_OK) return ReadEntry();
    return result == UNZ_END_OF_LIST_OF_FILE || m_passed == kUncounted ? Step::End : Step::Damaged;
}

ZipReader::Step ZipReader::GoTo(const unz64_file_pos& place) {
    return unzGoToFilePos64(m_archive.get(), &place) == UNZ_OK ? ReadEntry() : Step::Damaged;
}

unz64_file_pos ZipReader::Place() const {
    unz64_file_pos place{};
    unzGetFilePos64(m_archive.get(), &place);
    return place;
}

ZipReader::Step ZipReader::ReadEntry() {
    constexpr std::size_t kLongest = 0xFFFF;  // of a name, and of the additional field
    m_nameBuffer.resize(2 * kLongest);
    char* const additional = m_nameBuffer.data() + kLongest;
    if (unzGetCurrentFileInfo64(m_archive.get(), &m_info, m_nameBuffer.data(), kLongest, additional, kLongest,
                                nullptr, 0) != UNZ_OK)
        return Step::Damaged;
    ++m_passed;
    const std::string_view whole(m_nameBuffer.data(), std::min<std::size_t>(m_info.size_filename, kLongest));
    m_name = whole.substr(0, whole.find('\0'));
    ReadLargeForm({additional, std::min<std::size_t>(m_info.size_file_extra, kLongest)});
    return Step::Entry;
}

std::uint64_t NumberAt(std::string_view bytes, std::size_t at, int size) {
    std::uint64_t number = 0;
    while (size-- > 0)
        number = number << 8 | static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(size)]);
    return number;
}

/// Not every release of minizip understands the larger form where `long` has 64 bits: it then takes the marks
/// in the entry's head for the numbers themselves. So they are read here, and an entry that begins behind 4
/// GB is reached by shifting the places that minizip goes to.
void ZipReader::ReadLargeForm(std::string_view additional) {
    constexpr std::uint64_t kMark = 0xFFFFFFFF, kLargeFormId = 1;
    constexpr std::size_t kHead = 4, kNumber = 8;
    m_large = {};
    std::size_t size = 0;
    for (; additional.size() >= kHead; additional.remove_prefix(size)) {
        size = std::min<std::size_t>(kHead + NumberAt(additional, 2, 2), additional.size());
        if (NumberAt(additional, 0, 2) != kLargeFormId) continue;
        std::string_view numbers = additional.substr(kHead, size - kHead);
        const auto take = [&](std::uint64_t otherwise) {
            if (numbers.size() < kNumber) return otherwise;
            const std::uint64_t number = NumberAt(numbers, 0, kNumber);
            numbers.remove_prefix(kNumber);
            return number;
        };
        m_large.hasSize = m_info.uncompressed_size == kMark;
        if (m_large.hasSize) m_info.uncompressed_size = take(kMark);
        if (m_info.compressed_size == kMark) m_info.compressed_size = take(kMark);
        m_large.shift = take(kMark) - kMark;
    }
}

bool ZipReader::IsReadable() const {
    // Deflate makes at most this many bytes of one; the rest is for the smallest streams.
    constexpr std::uint64_t kMostExpansion = 1032, kAllowance = 64;
    constexpr uLong kEncrypted = 1;
    const std::uint64_t packed = m_info.compressed_size, unpacked = m_info.uncompressed_size;
    if ((m_info.flag & kEncrypted) != 0 || packed > m_fileSize) return false;
    if (m_info.compression_method == 0) return packed == unpacked;
    return m_info.compression_method == Z_DEFLATED && unpacked <= packed * kMostExpansion + kAllowance;
}

bool ZipReader::Read(unsigned char* data, std::uint64_t& count) {
    count = 0;
    bool good = unzOpenCurrentFile(m_archive.get()) == UNZ_OK;
    if (!good && m_large.shift != 0) {
        m_shift = m_large.shift;
        good = unzOpenCurrentFile(m_archive.get()) == UNZ_OK;
    }
    good = good && ReadData(data, count);
    m_shift = 0;
    return good;
}

bool ZipReader::ReadData(unsigned char* data, std::uint64_t& count) {
    constexpr ZPOS64_T kPiece = ZPOS64_T{1} << 30;  // a count that minizip's type holds
    int result = 1;
    uLong checksum = 0;
    while (result > 0 && count < m_info.uncompressed_size) {
        const auto wanted = static_cast<unsigned int>(std::min(kPiece, m_info.uncompressed_size - count));
        result = unzReadCurrentFile(m_archive.get(), data + count, wanted);
        if (result <= 0) break;
        if (m_large.hasSize) checksum = crc32(checksum, data + count, static_cast<unsigned int>(result));
        count += static_cast<std::uint64_t>(result);
    }
    // Closing compares the checksum, also where the entry goes on behind the size that it states; but not if
    // minizip waits for more than the entry has.
    return unzCloseCurrentFile(m_archive.get()) == UNZ_OK && count == m_info.uncompressed_size &&
           (!m_large.hasSize || checksum == m_info.crc);
}

// ---------------------------------------------------------------------------------------------------------
// The exported functions

namespace {

/// Makes the buffer of an entry that was found; the 100 bytes more are a terminator's room for callers who
/// need one.
bool MakeBuffer(const ZipReader& archive, ZipFileInfo& info) {
    constexpr std::uint64_t kRoomBehind = 100;
    const std::uint64_t size = archive.Info().uncompressed_size;
    if (size > UINT32_MAX) return false;
    info.data = new (std::nothrow) unsigned char[size + kRoomBehind];
    if (!info.data) return false;
    std::memset(info.data + size, 0, kRoomBehind);
    info.size = static_cast<std::uint32_t>(size);
    return true;
}

}  // namespace

bool IsZipFile(const char* path) try { return ZipReader(path).IsArchive(); } catch (const std::exception&) {
    return false;
}

bool GetZipDirectory(const char* path, TOrderedList<ZipFileInfo>& entries) try {
    ZipReader archive(path);
    ZipReader::Step step = archive.First();
    if (step != ZipReader::Step::Entry) return false;
    for (; step == ZipReader::Step::Entry; step = archive.Next()) {
        ZipFileInfo entry;
        entry.name = CoreString(archive.Name());
        entry.size =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(archive.Info().uncompressed_size, UINT32_MAX));
        if (entry.name.View() != archive.Name()) return false;  // for lack of memory
        AddOrThrow(entries, entry);
    }
    return step == ZipReader::Step::End;
} catch (const std::exception&) {
    return false;
}

bool UnzipFile(const char* path, ZipFileInfo& info) try {
    std::unique_ptr<ZipReader> archive = FindZipEntry(path, info.name.View());
    if (!archive || !archive->IsReadable()) return false;
    const bool ownBuffer = !info.data;
    if (ownBuffer && !MakeBuffer(*archive, info)) return false;
    std::uint64_t count = 0;
    const bool good = archive->Read(info.data, count);
    if (ownBuffer) std::memset(info.data + count, 0, info.size - count);
    if (good) KeepZipArchive(std::move(archive));
    return good;
} catch (const std::exception&) {
    return false;
}

}  // namespace brenta
