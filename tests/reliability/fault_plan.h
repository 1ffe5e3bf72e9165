// What stands before the system's functions decides by this plan.
#pragma once

#include <cstddef>

#include "reliability/faults.h"

namespace brenta::test {

struct FaultPlan {
    FaultOf kind = FaultOf::Nothing;
    long left = 0;
    bool lasts = false;
    bool hasStruck = false;
    int error = 0;
    std::size_t freed =
        0;  ///< the room of the block that was freed last; to be noted while memory is to fail
};

/// The plan for the calling thread.
FaultPlan& CurrentPlan();

/// Whether this request of a kind fails.
bool Strikes(FaultOf kind);
/// The same for a request that needs a block with so much room.
bool FailsMemory(std::size_t room, bool isCalloc = false);
/// The same for a call about files; errno then says why.
bool FailsFile();
/// How much of a request to read or write is served.
std::size_t Part(std::size_t size);

}  // namespace brenta::test
