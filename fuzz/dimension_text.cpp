// Any bytes as a dimension text: it evaluates or not, the length is a multiple of 10, and the library's
// engine goes on working. A forced crash aborts by itself.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "brenta/framework.h"
#include "brenta/host.h"
#include "brenta/units.h"
#include "script/library_engine.h"
#include "watchdog.h"

namespace {

constexpr std::size_t kMaxInput = 1024;

void Check(bool holds) {
    if (!holds) std::abort();
}

void CheckText(const char* text, brenta::CoreUnits units) {
    int value = 7;
    brenta::CoreString messages;
    const bool good = brenta::EvaluateUnit(text, units, value, &messages);
    Check(value % 10 == 0);
    Check(good ? messages.IsEmpty() : value == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static brenta::fuzz::Watchdog watchdog;
    brenta::HostServices services;
    services.showMessage = [](void*, const char*, unsigned int) { return brenta::IDNO; };
    brenta::SetHostServices(services);
    if (size > kMaxInput) return 0;
    const std::string text(reinterpret_cast<const char*>(data), size);
    brenta::CCoreScriptEngine& engine = *brenta::LibraryEngine();
    watchdog.Start(engine);
    CheckText(text.c_str(), brenta::kUnitsNone);
    CheckText(text.c_str(), brenta::kMillimeters);
    watchdog.Stop();
    engine.ClearStop();
    Check(brenta::StringToUnit("1+1", brenta::kMils) == 20000);
    Check(engine.GetScopeDepth() == 1);
    return 0;
}
