/// @file
/// The platform seam: what the library asks of the operating system, as plain functions. linux/ and windows/
/// implement them; nothing else in the library includes a header of one platform.
///
/// Paths are terminated 8-bit texts with "\" or "/" between their parts; every function here brings them into
/// the platform's form first. A null path counts as "". Everything may be called from any thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <string_view>

#include "brenta/failure.h"
#include "os/lock.h"

namespace brenta::os {

// ---------------------------------------------------------------------------------------------------------
// Files

enum class FileStatus {
    Ok,
    CannotOpen,  ///< absent, not permitted, or not a regular file
    CannotRead,  ///< read error, larger than the limit, or no memory
};

/// Reads a whole regular file; pipes, devices and folders cannot be opened. `content` is replaced on Ok and
/// left as it was otherwise. A file of more than `limit` bytes is not read.
FileStatus ReadWholeFile(const char* path, std::string& content,
                         std::size_t limit = std::numeric_limits<std::size_t>::max());

/// Creates or replaces a file; false if that fails, and the file may then hold a part of the content.
bool WriteWholeFile(const char* path, std::string_view content);

/// Creates or replaces a file as a whole; if that fails, be it that the disk is full, the old file is as it
/// was. The content is written beside the old file, brought to the disk, and put in its place, with its
/// access rights. A symbolic link stays, and what it leads to is replaced. A file that may be written in a
/// folder that may not is overwritten once its room is reserved. A device or pipe is written to directly.
bool ReplaceWholeFile(const char* path, std::string_view content);

enum class PathKind { Absent, File, Directory };

/// What a path leads to; everything that is there and no folder counts as a file, except that on Windows a
/// file marked offline counts as absent.
PathKind KindOfPath(const char* path);

/// Whether there is certainly nothing: false also when the system cannot tell, for example because a disk has
/// failed. For decisions to write something new.
bool IsAbsent(const char* path);

/// A regular file that is read from its start to its end. What is open is closed by the destructor.
class FileReader {
 public:
    FileReader() = default;
    ~FileReader();
    FileReader(const FileReader&) = delete;
    FileReader& operator=(const FileReader&) = delete;

    /// Once per object. False if there is no such file, or it is a pipe, a device or a folder.
    bool Open(const char* path);
    /// The size in bytes that the open file had at first.
    std::uint64_t Size() const { return m_size; }
    /// Reads up to `size` bytes and returns how many these were: 0 at the end, -1 after an error.
    std::ptrdiff_t Read(char* buffer, std::size_t size);

 private:
    std::intptr_t m_handle = -1;
    std::uint64_t m_size = 0;
};

/// A text file that is written from its start to its end, with the platform's line ends for its line feeds.
/// What is open is closed by the destructor. There is no buffer: write large pieces.
class TextFileWriter {
 public:
    TextFileWriter() = default;
    ~TextFileWriter() { Close(); }
    TextFileWriter(const TextFileWriter&) = delete;
    TextFileWriter& operator=(const TextFileWriter&) = delete;

    /// Creates the file or empties it, letting others read and write it meanwhile; not while one is open.
    bool Open(const char* path);
    bool IsOpen() const { return m_handle != -1; }
    /// False if the piece could not be written in full; a part of it may be in the file.
    bool Write(std::string_view text);
    /// False if the system reports an earlier error only now.
    bool Close();

 private:
    std::intptr_t m_handle = -1;
};

/// A file that is written beside another and takes its place when it is whole, with the other's access
/// rights. Unless Commit succeeds, the other file is as it was and the new one goes with the object.
class Replacement {
 public:
    Replacement() = default;
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    /// Creates the new file, empty; once per object. False if that fails, or `path` leads to something that
    /// is no regular file or may not be written. A symbolic link stays, and what it leads to is replaced.
    bool Create(const char* path);
    /// The new file's path, in the platform's form.
    const std::string& NewPath() const { return m_newPath; }
    /// Brings the content to the disk and puts the new file in place. Nothing may have it open for writing
    /// then.
    bool Commit();
    /// As Commit, but false, and nothing is replaced, if there is something of that path by now.
    bool CommitAsNew();

 private:
    bool PutInPlace(bool (*rename)(const char* from, const char* to));

    std::string m_path;
    std::string m_newPath;
};

/// Opens a regular file for random access, "rb" or "r+b"; null for whatever is none. It is not inherited by
/// other programs.
std::FILE* OpenStream(const char* path, const char* mode);

/// The path in the platform's form: on Linux with "/" for every "\", on Windows unchanged.
std::string NativePath(const char* path);

// ---------------------------------------------------------------------------------------------------------
// Folders and environment. Results are in the platform's form; "" means unknown.

/// Full path of the running executable.
std::string ExecutablePath();

/// Folder for application data, without a separator at its end; it need not exist. The environment's
/// BRENTA_APPDATA if it is set; else on Linux $XDG_DATA_HOME (when absolute) or ~/.local/share, on Windows
/// the common application-data folder.
std::string ApplicationDataFolder();

/// An environment variable; false, and `value` as it was, if it is not set.
bool GetEnvironment(const char* name, std::string& value);

// ---------------------------------------------------------------------------------------------------------
// Terminal

/// Writes to standard error at once, in one piece as far as the system allows.
void WriteError(std::string_view text);

/// Whether both a person's input and standard error are a terminal, so that a question can be asked.
bool HasTerminal();

/// Reads one line from standard input, without its line end; false at the end of the input.
bool ReadTerminalLine(std::string& line);

// ---------------------------------------------------------------------------------------------------------
// Process and threads

/// What a forced crash does without a handler of the host. Linux: writes the four values to standard error
/// and ends the process by SIGABRT. Windows: raises the structured exception; returns if a handler resumes.
void RaiseForcedCrash(const ForcedCrashRecord& record);

/// Fetches and drops the system's text for the calling thread's last error, where the system has such a text
/// service.
void FetchLastErrorText();

bool DebuggerAttached();

/// Stops in the debugger. Without one the process ends, so ask DebuggerAttached first.
void BreakIntoDebugger();

/// The lowest address that the calling thread's stack can safely grow to, some reserve for called functions
/// left aside; 0 if unknown. Cheap after a thread's first call.
std::uintptr_t StackLimit();

/// Says that memory not yet touched, of several megabytes, will be used all over and in no order: the system
/// may then provide it in large pieces, of which fewer are missed. It may also take no notice.
void PreferLargePages(void* memory, std::size_t size);

/// How many bytes a block of std::malloc has room for: as many as were asked for, or more.
std::size_t BlockSize(const void* block);

/// Calls work(context) on a thread with a stack of so many bytes and waits for it to return; false, and no
/// call, if there can be no such thread. `work` must not throw.
bool RunOnStack(std::size_t stackSize, void (*work)(void* context), void* context);

/// A value per thread that is handed to a function when its thread ends.
class ThreadEndHook {
 public:
    constexpr ThreadEndHook() = default;
    ThreadEndHook(const ThreadEndHook&) = delete;
    ThreadEndHook& operator=(const ThreadEndHook&) = delete;

    /// Prepares the hook; false if the system has no room for it. Threads that end before are not noticed.
    bool Open(void (*atThreadEnd)(void* value));
    /// Sets the calling thread's value; null asks for no call.
    void Set(void* value);
    /// Ends the hook. Some systems call the function now for the values that are still set, others never.
    void Close();

 private:
    std::atomic<bool> m_open{false};  // other threads may go on while the process ends
    std::uintptr_t m_key = 0;
};

/// Whether the library is leaving a process that lives on. At the end of the process this stays false, so
/// that everything can stay as it is: the system takes it back by itself, and other threads and the host's
/// own static objects may still use it.
bool LibraryIsUnloading();

/// Keeps the library loaded to the end of the process, where a thread that runs its code cannot be waited for
/// while it is unloaded: Windows runs the ends of threads and of libraries one at a time.
void KeepLoaded();

/// Calls `before` on a thread that is about to fork the process, and `after` when it has, in both processes.
/// Ends with the library. False if the system has no room for it. Where processes do not fork nothing is
/// called.
bool WatchForks(void (*before)(), void (*after)());

/// Makes sure that the end of the process is told from unloading. For moments at which the process is
/// certainly past its start; cheap to call again.
void WatchProcessEnd();

}  // namespace brenta::os
