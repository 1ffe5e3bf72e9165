#include "reliability/living.h"

#include <algorithm>
#include <filesystem>
#include <ostream>

#include "foundation/heap_core.h"
#include "script/statement_count.h"

namespace brenta::test {

Living Living::Now() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    const long count = std::count_if(begin(files), end(files), [](const auto& file) {
        std::error_code error;
        return std::filesystem::read_symlink(file.path(), error).is_absolute();
    });
    return {g_pGlobalCore.load()->CountLive(), CountStatements(), count};
}

void PrintTo(const Living& living, std::ostream* out) {
    *out << living.blocks.count << " blocks of " << living.blocks.bytes << " bytes, " << living.statements
         << " statements, " << living.files << " files";
}

}  // namespace brenta::test
