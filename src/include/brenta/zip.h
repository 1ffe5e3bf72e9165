/// @file
/// Zip archives: test them, list them, read and write their entries.
///
/// For packing a project's files and for reading what others packed. Entries are stored with deflate at its
/// default level and stamped with the current local time; archives and entries beyond 4 GB are written in the
/// larger form.
///
///     TOrderedList<CoreString> files;
///     files.Add("boards\\main.brd");
///     ZipFiles("project.zip", files, true);                  // adds main.brd
///     ZipFileInfo part;
///     part.name = "MAIN.BRD";                                // names compare without regard to case
///     if (UnzipFile("project.zip", part)) Read(part.data, part.size);
///     delete[] part.data;
///
/// All functions return false on any failure, say nothing and throw nothing; a null path counts as "". They
/// may be called from any thread. Writers of one archive, in other processes, too, wait for each other for up
/// to a minute, after which adding fails; readers wait for nobody, and find the archive as it was before or
/// as it is after. Where the file system knows no locks, and when another program has changed the archive,
/// adding starts anew, and fails if that does not help; only what such a program writes while the archive is
/// being replaced is lost.
///
/// What is added never harms what is there. The archive is read through first, and what is damaged is not
/// added to; the new entries then go into a copy beside the archive, which takes its place when it is whole
/// on the disk. So adding takes room for the archive once more, and time in proportion to it: add many files
/// with one call of ZipFiles. The folder must be writable.
///
/// Archives of others may be hostile. Sizes they state are held against the sizes of their files before
/// memory is asked for; entries that are cut, have a wrong checksum, are encrypted or packed by another
/// method than deflate are refused. Names are returned as they stand, "../x", "/x" and "C:\x" among them:
/// check a name before using it as a path. Nothing here writes to such a path.
#pragma once

#include <cstdint>

#include "brenta/containers.h"
#include "brenta/export.h"
#include "brenta/string.h"

namespace brenta {

/// One entry of an archive. It is a plain record: copies share `data`, and nobody releases it but who asked
/// for it.
struct ZipFileInfo {
    CoreString name;             ///< as in the archive; a name that holds a zero byte ends there
    std::uint32_t reserved = 0;  ///< set to 0 by GetZipDirectory; not read
    std::uint32_t size = 0;      ///< of the data, in bytes; 0xFFFFFFFF in the directory for what has more
    unsigned char* data = nullptr;
};

// ---------------------------------------------------------------------------------------------------------
// Reading

/// Whether a file is an archive, an empty one included. Only its end is looked at.
BRENTA_API bool IsZipFile(const char* path);

/// Appends one record for each entry to `entries`, in the archive's order, with null data. The list is not
/// cleared. False also for an archive without entries, and where the directory is damaged in the middle: what
/// stands before stays in the list.
BRENTA_API bool GetZipDirectory(const char* path, TOrderedList<ZipFileInfo>& entries);

/// Reads the first entry named `info.name`, the letters A to Z taken for a to z. The directory is searched
/// from its start, but for an archive that is read again and again indexed once: unpacking all entries takes
/// time in proportion to them.
///
/// With `info.data` null a buffer is made, and `info.size` set to the entry's size; the caller releases it
/// with `delete[]`, also after a failure, which leaves zeros for what was not read. An entry of 4 GB or more
/// has no room in `info.size` and is refused. A buffer of the caller's is used as it is, and `info.size`
/// neither read nor set: since names that differ only in case lead to one entry, pass null unless the archive
/// is your own.
BRENTA_API bool UnzipFile(const char* path, ZipFileInfo& info);

// ---------------------------------------------------------------------------------------------------------
// Writing. An archive that exists grows; entries are never replaced, and UnzipFile finds the first of those
// with one name. The archive's own comment is dropped. An empty file counts as an empty archive. After a
// failure the archive is as it was, but for what ZipFiles says.

/// Adds one entry: `info.size` bytes from `info.data`, which may be null for size 0. Names have up to 65,535
/// bytes.
BRENTA_API bool ZipFile(const char* path, ZipFileInfo& info);

/// Adds files, in their order, each named by its file name with extension if `namesOnly`, else by its path
/// without the drive ("C:\work\a.txt" gives "\work\a.txt"). A file that cannot be read, or is the archive
/// itself, ends the work with false; the files before it stay in the archive. An empty list creates the
/// archive, if there is none.
BRENTA_API bool ZipFiles(const char* path, TOrderedList<CoreString>& files, bool namesOnly);

}  // namespace brenta
