// Adding to archives.
//
// minizip adds by overwriting the archive's directory, which stands at its end, with the new entry, and
// writing the directory again behind it. In between, and for ever after a crash or on a full disk, the old
// entries cannot be found; and an archive whose end is damaged is taken for an empty one. So here the old
// directory is walked first, all changes are made to a copy beside the archive, and that copy is walked, too,
// before it takes the archive's place.
//
// A second writer that copied the same archive would drop what the first has added, so writers hold a lock on
// the archive while they work. Where that is not enough - no archive to lock yet, a file system without
// locks, another program - the archive is found changed when the copy is to take its place, and all is done
// anew.
#include <minizip/zip.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "brenta/files.h"
#include "brenta/host.h"
#include "brenta/zip.h"
#include "files/zip_archive.h"
#include "os/data_files.h"
#include "os/os.h"
#include "os/system.h"

namespace brenta {

namespace {

constexpr std::size_t kChunk = std::size_t{256} * 1024;
constexpr std::uint64_t kLargeForm = 0xFFFFFFFF;  // from this size on an entry needs the larger form
constexpr std::size_t kLongestName = 0xFFFF;
constexpr std::uint64_t kMostEntries = 0xFFFF;  // minizip writes no directory that counts more
constexpr int kLockMilliseconds = 60'000;       // others may be adding much
constexpr int kMostAttempts = 10;

enum class Outcome {
    Added,
    Refused,    ///< the source cannot be opened, or there is no room for its name; the archive is as before
    Broken,     ///< the source failed in the middle and has left a part of itself in the archive
    Failed,     ///< the archive cannot be written
    Overtaken,  ///< somebody else has changed the archive meanwhile
};

// ---------------------------------------------------------------------------------------------------------
// Sources of an entry

class ZipSource {
 public:
    virtual ~ZipSource() = default;
    virtual std::uint64_t Size() const = 0;
    /// The next piece of the data, empty at the end; false if it cannot be read.
    virtual bool Next(std::string_view& piece) = 0;
};

class MemorySource : public ZipSource {
 public:
    explicit MemorySource(const ZipFileInfo& info)
        : m_rest(reinterpret_cast<const char*>(info.data), info.data ? info.size : 0) {}

    std::uint64_t Size() const override { return m_rest.size(); }
    bool Next(std::string_view& piece) override {
        piece = m_rest.substr(0, kChunk);
        m_rest.remove_prefix(piece.size());
        return true;
    }

 private:
    std::string_view m_rest;
};

class FileSource : public ZipSource {
 public:
    bool Open(const char* path) { return m_file.Open(path); }
    std::uint64_t Size() const override { return m_file.Size(); }
    bool Next(std::string_view& piece) override {
        m_buffer.resize(kChunk);
        const std::ptrdiff_t count = m_file.Read(m_buffer.data(), m_buffer.size());
        if (count < 0) return false;
        piece = {m_buffer.data(), static_cast<std::size_t>(count)};
        return true;
    }

 private:
    os::FileReader m_file;
    std::vector<char> m_buffer;
};

// ---------------------------------------------------------------------------------------------------------
// An entry's head

zip_fileinfo TimeStamp() {
    const HostServices services = GetHostServices();
    const os::LocalDate now =
        os::LocalDateOf(services.currentTime ? services.currentTime(services.context) : os::CurrentTime());
    zip_fileinfo info{};
    info.tmz_date = {static_cast<uInt>(now.second), static_cast<uInt>(now.minute),
                     static_cast<uInt>(now.hour),   static_cast<uInt>(now.day),
                     static_cast<uInt>(now.month),  static_cast<uInt>(now.year)};
    return info;
}

/// The number of bytes that a UTF-8 sequence has behind its first byte; -1 if it cannot be a first byte.
int FollowingBytes(unsigned char first) {
    if (first < 0x80) return 0;
    if (first >= 0xC2 && first < 0xE0) return 1;
    if (first >= 0xE0 && first < 0xF0) return 2;
    return first >= 0xF0 && first < 0xF5 ? 3 : -1;
}

/// Whether other programs must be told that a name is UTF-8; without it they take it for an old code page.
bool NeedsUtf8Mark(std::string_view name) {
    bool beyondAscii = false;
    int due = 0;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        const bool follows = (byte & 0xC0) == 0x80;
        if (follows != (due > 0)) return false;
        due = follows ? due - 1 : FollowingBytes(byte);
        if (due < 0) return false;
        beyondAscii = beyondAscii || byte >= 0x80;
    }
    return beyondAscii && due == 0;
}

// ---------------------------------------------------------------------------------------------------------
// A changed archive

/// The entries of an archive, by walking; false if its directory or its end is damaged.
bool CountEntries(const char* path, std::uint64_t& count) {
    ZipReader archive(path);
    count = 0;
    ZipReader::Step step = archive.First();
    for (; step == ZipReader::Step::Entry; step = archive.Next())
        ++count;
    return step == ZipReader::Step::End && archive.IsWhole();
}

/// Appends a file's content to another file.
bool CopyFile(const char* from, const char* to) {
    FileSource source;
    ZipStream copy;
    if (source.Open(from)) copy.file = os::OpenStream(to, "r+b");
    if (!copy.file) return false;
    std::string_view piece;
    bool good;
    do
        good = source.Next(piece) && std::fwrite(piece.data(), 1, piece.size(), copy.file) == piece.size();
    while (good && !piece.empty());
    return std::fclose(std::exchange(copy.file, nullptr)) == 0 && good;
}

/// An archive with what is added to it, still beside the old one.
class ChangedArchive {
 public:
    /// False if the old archive is damaged, somebody else keeps changing it, or nothing can be written beside
    /// it.
    bool Open(const char* path);
    Outcome Add(const CoreString& name, ZipSource& source);
    /// Puts the changed archive in the place of the old one: Added, Failed or Overtaken.
    Outcome Commit();

 private:
    struct Closer {
        void operator()(void* archive) const { zipClose(archive, nullptr); }
    };

    bool PutInPlace();

    std::string m_path;
    os::FileLock m_lock;
    std::optional<os::FileStamp> m_oldStamp;  // none if there was nothing
    os::Replacement m_replacement;            // goes after the archive is closed
    ZipStream m_stream;
    std::unique_ptr<void, Closer> m_archive;
    std::uint64_t m_oldEntries = 0;
    std::uint64_t m_entries = 0;
};

/// What a path leads to; none if that is nothing.
std::optional<os::FileStamp> StampOf(const char* path) {
    os::FileStamp stamp;
    return os::StampOfFile(path, stamp) ? std::optional(stamp) : std::nullopt;
}

bool ChangedArchive::Open(const char* path) {
    if (!path || !m_lock.AcquireExisting(path, kLockMilliseconds)) return false;
    m_path = path;
    m_oldStamp = StampOf(path);
    if (m_oldStamp) {
        os::FileReader file;
        if (!file.Open(path) || (file.Size() != 0 && !CountEntries(path, m_oldEntries))) return false;
    }
    m_entries = m_oldEntries;
    if (!m_replacement.Create(path)) return false;
    const char* const newPath = m_replacement.NewPath().c_str();
    if (m_entries != 0 && !CopyFile(path, newPath)) return false;
    zlib_filefunc64_def functions = ZipFileFunctions(m_stream);
    m_archive.reset(zipOpen2_64(newPath, m_entries != 0 ? APPEND_STATUS_ADDINZIP : APPEND_STATUS_CREATE,
                                nullptr, &functions));
    return m_archive != nullptr;
}

/// minizip asks for a block for an entry's head and writes to it without looking whether it got one. A block
/// of that size which has just been given back is certainly there.
bool HasRoomForHead(std::string_view name) {
    constexpr std::size_t kHead = 46, kLargeFormRoom = 32;
    auto* const block = static_cast<volatile char*>(std::malloc(kHead + name.size() + kLargeFormRoom));
    if (block) *block = 0;  // else a compiler may leave the two calls out
    std::free(const_cast<char*>(block));
    return block != nullptr;
}

Outcome ChangedArchive::Add(const CoreString& name, ZipSource& source) {
    constexpr uLong kMadeBy = 0, kUtf8Name = uLong{1} << 11;
    if (name.View().size() > kLongestName || m_entries >= kMostEntries) return Outcome::Refused;
    const zip_fileinfo stamp = TimeStamp();
    if (!HasRoomForHead(name.View())) return Outcome::Failed;
    if (zipOpenNewFileInZip4_64(m_archive.get(), name, &stamp, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                                Z_DEFAULT_COMPRESSION, 0, -MAX_WBITS, DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY,
                                nullptr, 0, kMadeBy, NeedsUtf8Mark(name.View()) ? kUtf8Name : 0,
                                source.Size() >= kLargeForm ? 1 : 0) != ZIP_OK)
        return Outcome::Failed;
    for (;;) {
        std::string_view piece;
        if (!source.Next(piece)) return Outcome::Broken;
        if (piece.empty()) break;
        if (zipWriteInFileInZip(m_archive.get(), piece.data(), static_cast<unsigned int>(piece.size())) !=
            ZIP_OK)
            return Outcome::Failed;
    }
    if (zipCloseFileInZip(m_archive.get()) != ZIP_OK) return Outcome::Failed;
    ++m_entries;
    return Outcome::Added;
}

bool ChangedArchive::PutInPlace() {
    if (!m_oldStamp) return m_replacement.CommitAsNew();
    return StampOf(m_path.c_str()) == m_oldStamp && m_replacement.Commit();
}

Outcome ChangedArchive::Commit() {
    if (m_entries == m_oldEntries && m_entries != 0) return Outcome::Added;  // none: the old archive stays
    std::uint64_t written = 0;
    if (zipClose(m_archive.release(), nullptr) != ZIP_OK ||
        !CountEntries(m_replacement.NewPath().c_str(), written) || written != m_entries)
        return Outcome::Failed;
    if (PutInPlace()) return Outcome::Added;
    return StampOf(m_path.c_str()) == m_oldStamp ? Outcome::Failed : Outcome::Overtaken;
}

// ---------------------------------------------------------------------------------------------------------
// Many files

bool IsSameFile(const char* a, const char* b) {
    std::error_code error;
    return std::filesystem::equivalent(os::NativePath(a), os::NativePath(b), error) && !error;
}

Outcome AddFile(ChangedArchive& archive, const char* path, const CoreString& file, bool namesOnly) {
    FileSource source;
    if (IsSameFile(path, file) || !source.Open(file)) return Outcome::Refused;
    return archive.Add(namesOnly ? GetFileName(file, true) : StripDriveName(file), source);
}

/// Adds the first `count` files and puts the archive in place, unless one breaks in the middle. `count` is
/// then the number of those before the one that was not added.
Outcome AddFirst(const char* path, const TOrderedList<CoreString>& files, bool namesOnly,
                 std::size_t& count) {
    ChangedArchive archive;
    if (!archive.Open(path)) return Outcome::Failed;
    std::size_t added = 0;
    Outcome outcome = Outcome::Added;
    for (TIter<CoreString> file(files); file.Get() && added < count; file.Next(), ++added) {
        outcome = AddFile(archive, path, *file.Get(), namesOnly);
        if (outcome != Outcome::Added) break;
    }
    count = added;
    if (outcome == Outcome::Broken || outcome == Outcome::Failed) return outcome;
    const Outcome committed = archive.Commit();
    return committed == Outcome::Added ? outcome : committed;
}

/// Adds with `add`, anew as long as others are faster.
template <class Add>
Outcome AddUntilUndisturbed(const Add& add) {
    Outcome outcome = add();
    for (int attempt = 1; outcome == Outcome::Overtaken && attempt < kMostAttempts; ++attempt)
        outcome = add();
    return outcome;
}

}  // namespace

bool ZipFile(const char* path, ZipFileInfo& info) try {
    if (!info.data && info.size != 0) return false;
    return AddUntilUndisturbed([&] {
               ChangedArchive archive;
               MemorySource source(info);
               if (!archive.Open(path)) return Outcome::Failed;
               const Outcome outcome = archive.Add(info.name, source);
               return outcome == Outcome::Added ? archive.Commit() : outcome;
           }) == Outcome::Added;
} catch (const std::exception&) {
    return false;
}

bool ZipFiles(const char* path, TOrderedList<CoreString>& files, bool namesOnly) try {
    const auto wanted = static_cast<std::size_t>(files.GetCount());
    std::size_t count = wanted;
    Outcome outcome;
    // A part of a file cannot be taken out of the archive again, so those before it are added anew without
    // it.
    do
        outcome = AddUntilUndisturbed([&] { return AddFirst(path, files, namesOnly, count); });
    while (outcome == Outcome::Broken);
    return outcome == Outcome::Added && count == wanted;
} catch (const std::exception&) {
    return false;
}

}  // namespace brenta
