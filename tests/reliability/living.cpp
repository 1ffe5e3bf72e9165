#include "reliability/living.h"

#include <ostream>

#include "foundation/heap_core.h"
#include "os/footprint.h"
#include "script/statement_count.h"

namespace brenta::test {

Living Living::Now() {
    return {g_pGlobalCore.load()->CountLive(), CountStatements(), CountOpenFiles()};
}

void PrintTo(const Living& living, std::ostream* out) {
    *out << living.blocks.count << " blocks of " << living.blocks.bytes << " bytes, " << living.statements
         << " statements, " << living.files << " files";
}

}  // namespace brenta::test
