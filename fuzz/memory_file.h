// Bytes as a file that can be opened by its path.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "brenta/framework.h"

namespace brenta::fuzz {

/// A file in memory, as long as the process lives.
class MemoryFile {
 public:
    CString Hold(const std::uint8_t* data, std::size_t size) {
        if (ftruncate(m_file, 0) != 0 || pwrite(m_file, data, size, 0) != static_cast<ssize_t>(size)) {
            std::abort();
        }
        return ("/proc/self/fd/" + std::to_string(m_file)).c_str();
    }

 private:
    const int m_file = memfd_create("input", 0);
};

}  // namespace brenta::fuzz
