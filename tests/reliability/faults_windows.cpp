// The linker's --wrap leads here what the test program, the libraries that are linked into it and the
// compiler's own ask for: memory of the C library, and files of the system.
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <malloc.h>

#include <cstdio>
#include <type_traits>

#include "reliability/fault_plan.h"

using namespace brenta::test;

namespace {

bool FailsFileOfSystem() {
    if (!FailsFile()) return false;
    const int error = CurrentPlan().error;
    SetLastError(error == EACCES   ? ERROR_ACCESS_DENIED
                 : error == ENOENT ? ERROR_FILE_NOT_FOUND
                                   : ERROR_DISK_FULL);
    return true;
}

bool FailsStream(std::FILE* stream) {
    if (!FailsFile()) return false;
    stream->_flag |= _IOERR;
    return true;
}

/// A function that stands before one of the system's.
template <auto pReal, class Result, class... Arguments>
constexpr auto Before(Result (*)(Arguments...)) {
    return [](Arguments... arguments) -> Result {
        if (!FailsFileOfSystem()) return (*pReal)(arguments...);
        if constexpr (std::is_same_v<Result, BOOL>)
            return FALSE;
        else if constexpr (std::is_pointer_v<Result>)
            return INVALID_HANDLE_VALUE;
        else
            return INVALID_FILE_ATTRIBUTES;
    };
}

/// The same for one that reads or writes.
template <auto pReal, class Buffer>
BOOL Move(HANDLE file, Buffer buffer, DWORD size, DWORD* count, OVERLAPPED* overlapped) {
    return !FailsFileOfSystem() && (*pReal)(file, buffer, static_cast<DWORD>(Part(size)), count, overlapped);
}

}  // namespace

extern "C" {

void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
std::size_t __real_fwrite(const void* buffer, std::size_t size, std::size_t count, std::FILE* stream);
std::size_t __real_fread(void* buffer, std::size_t size, std::size_t count, std::FILE* stream);

void* __wrap_malloc(std::size_t size) {
    return FailsMemory(size) ? nullptr : __real_malloc(size);
}
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return FailsMemory(count * size, true) ? nullptr : __real_calloc(count, size);
}
void* __wrap_realloc(void* block, std::size_t size) {
    return Strikes(FaultOf::Memory) ? nullptr : __real_realloc(block, size);
}
void __wrap_free(void* block) {
    if (block && CurrentPlan().kind == FaultOf::Memory) CurrentPlan().freed = _msize(block);
    __real_free(block);
}
std::size_t __wrap_fwrite(const void* buffer, std::size_t size, std::size_t count, std::FILE* stream) {
    return FailsStream(stream) ? 0 : __real_fwrite(buffer, size, count, stream);
}
std::size_t __wrap_fread(void* buffer, std::size_t size, std::size_t count, std::FILE* stream) {
    return FailsStream(stream) ? 0 : __real_fread(buffer, size, count, stream);
}

#define STAND_BEFORE(function, ...)                                             \
    extern decltype(&(function)) Real##function asm("__real___imp_" #function); \
    extern decltype(&(function)) Wrap##function asm("__wrap___imp_" #function); \
    decltype(&(function)) Wrap##function = __VA_ARGS__

STAND_BEFORE(CreateFileA, Before<&RealCreateFileA>(&CreateFileA));
STAND_BEFORE(FlushFileBuffers, Before<&RealFlushFileBuffers>(&FlushFileBuffers));
STAND_BEFORE(GetFileAttributesA, Before<&RealGetFileAttributesA>(&GetFileAttributesA));
STAND_BEFORE(GetFileSizeEx, Before<&RealGetFileSizeEx>(&GetFileSizeEx));
STAND_BEFORE(MoveFileExA, Before<&RealMoveFileExA>(&MoveFileExA));
STAND_BEFORE(ReplaceFileA, Before<&RealReplaceFileA>(&ReplaceFileA));
STAND_BEFORE(SetFileInformationByHandle,
             Before<&RealSetFileInformationByHandle>(&SetFileInformationByHandle));
STAND_BEFORE(ReadFile, Move<&RealReadFile, void*>);
STAND_BEFORE(WriteFile, Move<&RealWriteFile, const void*>);
}
