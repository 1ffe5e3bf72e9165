/// @file
/// Part of the platform seam (os.h): the clock and what the system tells of itself.
#pragma once

#include <cstdint>
#include <string>

namespace brenta::os {

// ---------------------------------------------------------------------------------------------------------------------
// Clocks

/// Seconds since 1970, UTC.
long long CurrentTime();

/// A moment in the calendar at this place.
struct LocalDate {
    int second = -1;
    int minute = -1;
    int hour = -1;
    int day = -1;    ///< from 1
    int month = -1;  ///< from 0
    int year = -1;   ///< in full
};

/// The local date of a moment; all fields are -1 if there is none.
LocalDate LocalDateOf(long long secondsSince1970);

/// A steady clock in nanoseconds, and the processor time that this process has used.
std::int64_t SteadyNanoseconds();
std::int64_t ProcessorNanoseconds();

/// Seconds since the last input of the person at this session: on Linux at any of the session's terminals.
/// Below 0 if unknown.
long long IdleSeconds();

// ---------------------------------------------------------------------------------------------------------------------
// The machine and its system

/// Bytes; 0 where the system does not tell.
struct MemoryFacts {
    std::uint64_t physicalTotal = 0;
    std::uint64_t physicalFree = 0;  ///< could be had without moving anything to the disk
    std::uint64_t virtualTotal = 0;  ///< address space of a process
    std::uint64_t swapTotal = 0;
    std::uint64_t swapFree = 0;
    std::uint64_t processUsed = 0;  ///< of the physical memory, by this process
    std::uint64_t processPeak = 0;
};
MemoryFacts QueryMemory();

/// Processors that this process may run on; at least 1.
int ProcessorCount();

/// The system's name for a person ("Debian GNU/Linux 12 (bookworm)") and the number of its version or kernel
/// ("6.1.0-18"); "" if unknown.
std::string SystemName();
std::string SystemVersion();

/// Names of the machine and of the person; "" if unknown.
std::string MachineName();
std::string UserName();

/// Whether the person may administer the machine.
bool IsAdministrator();

/// Whether this is a session on a remote machine.
bool IsRemoteSession();

/// The version text of a program or library file; false where files of this kind carry none.
bool FileVersion(const char* path, std::string& version);

}  // namespace brenta::os
