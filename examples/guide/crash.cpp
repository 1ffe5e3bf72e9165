// A handler for broken contracts: it writes a report and lets the program live on.
#include <brenta/failure.h>
#include <brenta/units.h>

#include <cstdio>

namespace {

// Called on the thread that failed, with no lock of the library held. To return is to resume.
void Report(const brenta::ForcedCrashRecord& crash, void* log) {
    std::fprintf(static_cast<std::FILE*>(log), "%s: %s\n", crash.File(), crash.Message());
}

}  // namespace

int main() {
    brenta::InitCoreLibrary();
    brenta::SetForcedCrashHandler(&Report, stdout);
    const auto unknown = static_cast<brenta::CoreUnits>(9);  // a setting of some later version, perhaps
    std::printf("units: %s\n", brenta::UnitsToString(unknown));
    std::printf("units: %s\n", brenta::UnitsToString(brenta::kMils));
    return 0;
}
