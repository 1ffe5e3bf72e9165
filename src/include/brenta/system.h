/// @file
/// The system around the application: versions of modules, timers, memory, the operating system, and other
/// programs.
///
///     CoreVersion offered, own;
///     if (GetVersionFromString("4.1", offered) && GetModuleVersion(own) &&
///         CompareVersions(offered, own) > 0) {
///         Offer(GetVersionString(offered));                                 // 4.1.0.0
///     }
///     CoreTimer timer;
///     Route(board);
///     Report(timer.GetSeconds(), SysGetProcessMemory() >> 20);              // seconds, megabytes
///
/// Functions may be called from any thread; an object must not be used by two at once. Texts are new strings,
/// and a null argument counts as "". What a system does not tell is 0, "" or false, as each function says.
#pragma once

#include <cstdint>

#include "brenta/containers.h"
#include "brenta/detail/class_name.h"
#include "brenta/export.h"
#include "brenta/heap.h"
#include "brenta/string.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Versions

/// The version of a module: four numbers of 0 to 65,535, the first the most important.
struct CoreVersion {
    int majorNumber = 0;
    int minorNumber = 0;
    int build = 0;
    int revision = 0;
};

/// Reads one to four numbers with "." or "," between them, such as "4", "4.0.1" or "4, 0, 1, 2"; what is
/// missing is 0. Space around the numbers does not matter. For any other text false, and `version` stays as
/// it was.
BRENTA_API bool GetVersionFromString(const char* text, CoreVersion& version);

/// The four numbers with "." between them: "4.0.1.0".
BRENTA_API CoreString GetVersionString(const CoreVersion& version);

/// Below 0, 0 or above 0 as the first version is older than, the same as or newer than the second.
BRENTA_API int CompareVersions(const CoreVersion& first, const CoreVersion& second);

/// The version of this library. Never false.
BRENTA_API bool GetModuleVersion(CoreVersion& version);

/// The version of a program or library file; false, and `version` as it was, if there is no such file or it
/// carries none. Windows: the version in its resources. Linux: what follows ".so." in the name of a library,
/// once links are followed (libpart.so leads to libpart.so.4.0.1).
BRENTA_API bool GetModuleVersion(const char* path, CoreVersion& version);

// ---------------------------------------------------------------------------------------------------------
// Timers

/// A stopwatch that nobody's change of the clock disturbs. It is as fine as the system's best clock.
class BRENTA_API CoreTimer {
 public:
    /// Runs from now on.
    CoreTimer();
    /// Goes back to 0 and runs.
    void Restart();
    /// Stops; the time so far stays. Stopping again does nothing.
    void Stop();
    /// Runs on from the time so far. Does nothing while it runs.
    void Resume();
    bool IsRunning() const { return m_running; }
    /// The time while it ran.
    double GetSeconds() const;
    double GetMilliseconds() const { return 1000 * GetSeconds(); }

 private:
    std::int64_t m_start;  // nanoseconds of the steady clock, minus what had passed before
    std::int64_t m_passed = 0;
    bool m_running = true;
};

/// The time that a long job takes, for a person who waits: how long it runs, how much of that it computes,
/// and how long it will go on.
class BRENTA_API CJobTime {
 public:
    /// The job begins now.
    CJobTime();
    CJobTime(const CJobTime&) = default;
    CJobTime& operator=(const CJobTime&) = default;

    /// The size of the object in bytes.
    virtual std::size_t SizeOf() const;
    /// "CJobTime"
    virtual const char* GetClassName() const;
    /// "none"
    virtual const char* GetBaseClassName() const;
    virtual ~CJobTime();

    BRENTA_HEAP_OPERATORS

    /// The job begins anew.
    void Restart();
    /// The job has ended: the times below stay as they are now.
    void Stop();
    /// Seconds from the beginning.
    double GetElapsedSeconds() const;
    /// Seconds of processor time that the whole process has used since, on all its threads.
    double GetProcessorSeconds() const;
    /// Seconds until the end, if the rest goes as fast as the fraction done (0 to 1); -1 while nothing is
    /// done.
    double GetRemainingSeconds(double fractionDone) const;
    /// The time elapsed as "0:01:07": hours, minutes, full seconds.
    CoreString GetText() const;

 private:
    CoreTimer m_timer;
    std::int64_t m_processorStart;
    std::int64_t m_processorUsed = -1;  // below 0 while the job runs
};

// ---------------------------------------------------------------------------------------------------------
// Session and idle time

/// Full seconds since the application was started; 0 if unknown.
BRENTA_API int SysGetSessionSeconds();

/// Full seconds since the person last touched mouse or keyboard; -1 if unknown. Linux: since the last input
/// at the terminal that the application was started from.
BRENTA_API int SysGetIdleSeconds();

// ---------------------------------------------------------------------------------------------------------
// Memory, in bytes; 0 if unknown

BRENTA_API std::uint64_t SysGetTotalPhysicalMemory();
/// What programs could get without anything being moved to the disk.
BRENTA_API std::uint64_t SysGetFreePhysicalMemory();
/// The room for memory on the disk.
BRENTA_API std::uint64_t SysGetTotalSwapMemory();
BRENTA_API std::uint64_t SysGetFreeSwapMemory();
/// The physical memory that this process occupies, and the most that it ever did.
BRENTA_API std::uint64_t SysGetProcessMemory();
BRENTA_API std::uint64_t SysGetProcessPeakMemory();

// ---------------------------------------------------------------------------------------------------------
// The operating system

/// Whether this is exactly that release of Windows; all false on other systems. SysIsWin10 holds for its
/// successors, too, which give the same number.
BRENTA_API bool SysIsWinXP();
BRENTA_API bool SysIsWinVista();
BRENTA_API bool SysIsWin7();
BRENTA_API bool SysIsWin8();
BRENTA_API bool SysIsWin10();
/// Whether this is any release of Windows.
BRENTA_API bool SysIsWindows();

/// The system's name for a person, "" if unknown.
BRENTA_API CoreString SysGetSystemName();
/// The version of the system's kernel as text, "" if unknown.
BRENTA_API CoreString SysGetSystemVersion();

/// The processors that this process may use; at least 1.
BRENTA_API int SysGetProcessorCount();
/// Whether the person may administer the machine.
BRENTA_API bool SysIsAdministrator();
/// Whether the person sits at another machine.
BRENTA_API bool SysIsRemoteSession();

// ---------------------------------------------------------------------------------------------------------
// Other programs. Both go through the host's services (brenta/host.h) and do not wait for the program's end.

/// Starts a program with arguments; no shell reads them, so they may hold any characters. A program without a
/// separator in its name is looked for along the search path. False if it cannot be started; `error` is then
/// the system's error number, else 0. It may be null.
BRENTA_API bool ExecProgram(const char* program, const TOrderedList<CoreString>& arguments,
                            int* error = nullptr);

/// The same for a command line: words separated by blanks, where double quotes keep blanks within a word (and
/// "" is an empty word). There is no other special character; "\" is one of the word.
BRENTA_API bool ExecProgram(const char* commandLine, int* error = nullptr);

/// Opens a file, a folder or a web address as the desktop does on a double click. False if that fails.
BRENTA_API bool ShellExecProgram(const char* target);

}  // namespace brenta
