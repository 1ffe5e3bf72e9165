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

/// A steady clock, and the processor time that this process has used, in nanoseconds.
std::int64_t SteadyNanoseconds();
std::int64_t ProcessorNanoseconds();

/// Seconds since this process was started; 0 if unknown.
long long ProcessAge();

/// Seconds since the person's last input; below 0 if unknown.
long long IdleTime();

// ---------------------------------------------------------------------------------------------------------------------
// The machine and its system

/// In bytes; 0 where the system does not tell.
struct MemoryFacts {
    std::uint64_t physicalTotal = 0;
    std::uint64_t physicalFree = 0;  ///< could be had without moving anything to the disk
    std::uint64_t swapTotal = 0;
    std::uint64_t swapFree = 0;
    std::uint64_t processUsed = 0;  ///< of the physical memory
    std::uint64_t processPeak = 0;
};
MemoryFacts QueryMemory();

/// Processors that this process may run on; at least 1.
int ProcessorCount();

/// The system's name for a person and the version of its kernel; "" if unknown.
std::string SystemName();
std::string SystemVersion();

/// The release of Windows as 100 times its first number plus its second, 601 for example; 0 on other systems.
int WindowsRelease();

bool IsAdministrator();
bool IsRemoteSession();

/// The version text of a program or library file; "" if it carries none or does not exist.
std::string FileVersion(const char* path);

}  // namespace brenta::os
