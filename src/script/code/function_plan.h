// What a call of a function needs: nothing is looked up by name while scripts run.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "script/code/instruction.h"
#include "script/symbol_access.h"

namespace brenta {

struct FunctionPlan {
    struct Parameter {
        NameCell* cell;
        ScriptSymbol* symbol;
    };

    const NameCells* cells;  // the engine's whose function it is
    bool isReflect = false;
    std::vector<Parameter> parameters;

    // --- the register code, made when the function is called first
    std::uint64_t epoch = 0;  ///< the code is good while this is the machine's
    std::int32_t parameterCount = 0;
    bool runsAsTree = false;  ///< there is no code
    const Instruction* entry = nullptr;
    std::int64_t frameBytes = 0;
    std::unique_ptr<FunctionCode> code;
};

}  // namespace brenta
