// A file for the inputs of a target, or for what it writes.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "brenta/framework.h"
#include "os/data_files.h"
#include "os/os.h"

namespace brenta::fuzz {

/// A file of this process's own, in memory where there is such a folder; removed with the object.
class ScratchFile {
 public:
    explicit ScratchFile(const char* name) {
        namespace fs = std::filesystem;
        const fs::path memory = "/dev/shm";
        const fs::path folder = fs::is_directory(memory) ? memory : fs::temp_directory_path();
        m_path = (folder / (std::string("brenta_") + name + "_" + std::to_string(os::ProcessId()))).string();
    }
    ~ScratchFile() { Remove(); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const char* Path() const { return m_path.c_str(); }
    /// Gives it this content; its path.
    CString Hold(const std::uint8_t* data, std::size_t size) const {
        if (!os::WriteWholeFile(Path(), std::string_view(reinterpret_cast<const char*>(data), size)))
            std::abort();
        return Path();
    }
    void Remove() const {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }

 private:
    std::string m_path;
};

}  // namespace brenta::fuzz
