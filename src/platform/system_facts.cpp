#include <exception>
#include <string>

#include "brenta/system.h"
#include "os/system.h"

namespace brenta {

namespace {

/// One of the facts about the memory; 0 also where there is no memory to ask with.
std::uint64_t MemoryFact(std::uint64_t os::MemoryFacts::*fact) try {
    return os::QueryMemory().*fact;
} catch (const std::exception&) {
    return 0;
}

CoreString Text(std::string (*fact)()) try {
    return CoreString(std::string_view(fact()));
} catch (const std::exception&) {
    return CoreString();
}

}  // namespace

std::uint64_t SysGetTotalPhysicalMemory() {
    return MemoryFact(&os::MemoryFacts::physicalTotal);
}

std::uint64_t SysGetFreePhysicalMemory() {
    return MemoryFact(&os::MemoryFacts::physicalFree);
}

std::uint64_t SysGetTotalSwapMemory() {
    return MemoryFact(&os::MemoryFacts::swapTotal);
}

std::uint64_t SysGetFreeSwapMemory() {
    return MemoryFact(&os::MemoryFacts::swapFree);
}

std::uint64_t SysGetProcessMemory() {
    return MemoryFact(&os::MemoryFacts::processUsed);
}

std::uint64_t SysGetProcessPeakMemory() {
    return MemoryFact(&os::MemoryFacts::processPeak);
}

bool SysIsWinXP() {
    return os::WindowsRelease() == 501 || os::WindowsRelease() == 502;
}

bool SysIsWinVista() {
    return os::WindowsRelease() == 600;
}

bool SysIsWin7() {
    return os::WindowsRelease() == 601;
}

bool SysIsWin8() {
    return os::WindowsRelease() == 602 || os::WindowsRelease() == 603;
}

bool SysIsWin10() {
    return os::WindowsRelease() == 1000;
}

bool SysIsWindows() {
    return os::WindowsRelease() != 0;
}

CoreString SysGetSystemName() {
    return Text(&os::SystemName);
}

CoreString SysGetSystemVersion() {
    return Text(&os::SystemVersion);
}

int SysGetProcessorCount() {
    return os::ProcessorCount();
}

bool SysIsAdministrator() {
    return os::IsAdministrator();
}

bool SysIsRemoteSession() try { return os::IsRemoteSession(); } catch (const std::exception&) {
    return false;
}

}  // namespace brenta
