/// @file
/// Part of the Windows platform seam: an open file that closes itself, and where files are.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace brenta::os {

class FileHandle {
 public:
    static constexpr std::size_t kLargestPiece = std::size_t{1} << 30;  ///< read or written at once

    FileHandle() = default;
    explicit FileHandle(void* handle) : m_handle(handle) {}
    FileHandle(FileHandle&& other) noexcept : m_handle(other.Release()) {}
    FileHandle& operator=(FileHandle&&) = delete;
    ~FileHandle() { Close(); }

    bool IsOpen() const;
    void* Get() const { return m_handle; }
    /// Closes now; false if the system reports a late error.
    bool Close();
    /// Hands the handle over to the caller.
    void* Release();

    /// False if not all could be written; a part of it may be in the file.
    bool WriteAll(std::string_view content) const { return WriteAll(m_handle, content); }
    static bool WriteAll(void* handle, std::string_view content);

 private:
    static void* Closed();

    void* m_handle = Closed();
};

/// CreateFile with the system's numbers. A program behind a pipe learns who is asking, but may not act in
/// that name.
FileHandle OpenFile(const char* nativePath, unsigned long access, unsigned long sharing,
                    unsigned long creation, unsigned long flags = 0);

/// The path from the drive on; "" if there is none.
std::string FullPath(const char* path);

}  // namespace brenta::os
