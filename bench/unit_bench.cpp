// Dimension texts beside muParser, which gets the units as postfix operators.
#include <muParser.h>

#include <cmath>

#include "brenta/units.h"
#include "families.h"
#include "workload.h"

namespace brenta::bench {
namespace {

constexpr int kTimes = 5000;

/// A text that is read and evaluated again each time, as when a user types it.
ContenderMaker Ours(const char* text) {
    return Side([text] {
        long long sum = 0;
        for (int i = 0; i < kTimes; ++i)
            sum += StringToUnit(text, kMils);
        return sum;
    });
}

mu::Parser MakeParser() {
    mu::Parser parser;
    parser.DefinePostfixOprt("in", [](mu::value_type number) { return number * 10000000.0; });
    parser.DefinePostfixOprt("mil", [](mu::value_type number) { return number * 10000.0; });
    parser.DefinePostfixOprt("cm", [](mu::value_type number) { return std::trunc(number * 3937007.874); });
    parser.DefinePostfixOprt("mm", [](mu::value_type number) { return std::trunc(number * 393700.7874); });
    return parser;
}

ContenderMaker MuParser(const char* text) {
    return Prepared([text] {
        return [text, parser = MakeParser()]() mutable {
            long long sum = 0;
            for (int i = 0; i < kTimes; ++i) {
                parser.SetExpr(text);
                sum += static_cast<long long>((parser.Eval() + 5) / 10) * 10;
            }
            return sum;
        };
    });
}

}  // namespace

void AddUnitWorkloads() {
    for (const char* text : {"20mil+5mil", "3mm", "(1in+2mm)/2"})
        Workloads().push_back({"units", text, "muParser", 0.2, Ours(text), MuParser(text)});
}

}  // namespace brenta::bench
