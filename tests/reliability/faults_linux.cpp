#include "reliability/fault_plan.h"

#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

#include "brenta/heap.h"

namespace brenta::test {
namespace {

#if defined(BRENTA_ADDRESS_SANITIZER)
#define REAL(function) __interceptor_##function
std::size_t RoomOf(std::size_t size) {
    return size;
}
#else
#define REAL(function) __libc_##function
std::size_t RoomOf(std::size_t size) {
    return std::max<std::size_t>(24, (size + 23) / 16 * 16 - 8);
}
#endif

bool FailsStream(std::FILE* stream) {
    if (!FailsFile()) return false;
    stream->_flags |= _IO_ERR_SEEN;
    return true;
}

}  // namespace
}  // namespace brenta::test

using namespace brenta::test;

// ---------------------------------------------------------------------------------------------------------
// Memory

// The libraries, too, are to find what follows.
#pragma GCC visibility push(default)

extern "C" {

void* REAL(malloc)(std::size_t size);
void* REAL(calloc)(std::size_t count, std::size_t size);
void* REAL(realloc)(void* block, std::size_t size);
void REAL(free)(void* block);

void* malloc(std::size_t size) noexcept {
    return FailsMemory(RoomOf(size)) ? nullptr : REAL(malloc)(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    return FailsMemory(RoomOf(count * size), true) ? nullptr : REAL(calloc)(count, size);
}

void* realloc(void* block, std::size_t size) noexcept {
    return Strikes(FaultOf::Memory) ? nullptr : REAL(realloc)(block, size);
}

void free(void* block) noexcept {
    if (CurrentPlan().kind == FaultOf::Memory) CurrentPlan().freed = malloc_usable_size(block);
    REAL(free)(block);
}

// What these lose when they find no memory, or cannot write, is beyond our reach.
const char* LeaksOfOthers() asm("__lsan_default_suppressions");
const char* LeaksOfOthers() {
    return "leak:zipOpenNewFileInZip4_64\nleak:unzOpenCurrentFile3\nleak:xmlAllocParserInputBuffer\n";
}
}

// Seen through, these look like a mismatch of the two kinds of allocation.
[[gnu::noinline]] void* operator new(std::size_t size) {
    void* const block = std::malloc(size != 0 ? size : 1);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size != 0 ? size : 1);
}

[[gnu::noinline]] void operator delete(void* block) noexcept {
    std::free(block);
}

[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

// ---------------------------------------------------------------------------------------------------------
// Files

namespace {

template <class... Arguments>
int Call(long number, Arguments... arguments) {
    return FailsFile() ? -1 : static_cast<int>(syscall(number, arguments...));
}

template <class Buffer, class... Arguments>
ssize_t Move(long number, int file, Buffer buffer, std::size_t size, Arguments... arguments) {
    return FailsFile() ? -1 : syscall(number, file, buffer, Part(size), arguments...);
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return Call(SYS_openat, AT_FDCWD, path, flags, mode);
}

int open64(const char* path, int flags, ...) __attribute__((alias("open")));

ssize_t read(int file, void* buffer, std::size_t size) {
    return Move(SYS_read, file, buffer, size);
}
ssize_t write(int file, const void* buffer, std::size_t size) {
    return Move(SYS_write, file, buffer, size);
}
ssize_t pread64(int file, void* buffer, std::size_t size, off64_t at) {
    return Move(SYS_pread64, file, buffer, size, at);
}
ssize_t pwrite64(int file, const void* buffer, std::size_t size, off64_t at) {
    return Move(SYS_pwrite64, file, buffer, size, at);
}
std::size_t fwrite(const void* buffer, std::size_t size, std::size_t count, std::FILE* stream) {
    return FailsStream(stream) ? 0 : fwrite_unlocked(buffer, size, count, stream);
}
std::size_t fread(void* buffer, std::size_t size, std::size_t count, std::FILE* stream) {
    return FailsStream(stream) ? 0 : fread_unlocked(buffer, size, count, stream);
}
int fsync(int file) {
    return Call(SYS_fsync, file);
}
int fdatasync(int file) {
    return Call(SYS_fdatasync, file);
}
int ftruncate(int file, off_t size) noexcept {
    return Call(SYS_ftruncate, file, size);
}
int ftruncate64(int file, off64_t size) noexcept {
    return Call(SYS_ftruncate, file, size);
}
int rename(const char* from, const char* to) noexcept {
    return Call(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0);
}
int stat(const char* path, struct stat* info) noexcept {
    return Call(SYS_newfstatat, AT_FDCWD, path, info, 0);
}
int fstat(int file, struct stat* info) noexcept {
    return Call(SYS_fstat, file, info);
}
int access(const char* path, int wanted) noexcept {
    return Call(SYS_faccessat, AT_FDCWD, path, wanted);
}
int fchmod(int file, mode_t mode) noexcept {
    return Call(SYS_fchmod, file, mode);
}
}

#pragma GCC visibility pop
