// Each request to the system fails in turn: nothing crashes, nothing is lost, and the next attempt succeeds.
#include "reliability/faults.h"

#include <cstdlib>
#include <filesystem>

#include "reliability/living.h"
#include "reliability/operations.h"

namespace brenta::test {
namespace {

struct FaultRow {
    FaultOf kind;
    bool lasts;
    int error;
    bool isHarmless;  ///< the operation succeeds all the same
};

const FaultRow kFaults[] = {
    {FaultOf::Memory, false, 0, false},    {FaultOf::Memory, true, 0, false},
    {FaultOf::Heap, false, 0, false},      {FaultOf::Heap, true, 0, false},
    {FaultOf::File, false, 0, true},       {FaultOf::File, true, 0, true},
    {FaultOf::File, false, EINTR, false},  {FaultOf::File, false, EIO, false},
    {FaultOf::File, true, EIO, false},     {FaultOf::File, true, ENOSPC, false},
    {FaultOf::File, true, EACCES, false},  {FaultOf::File, false, ENOENT, false},
    {FaultOf::File, false, EMFILE, false},
};

/// Runs the operation with a fault after so many requests; false if there were fewer.
bool StrikesAfter(long count, const Operation& operation, const FaultRow& row, const std::string& before,
                  const std::string& after) {
    if (operation.state() != before) operation.reset();
    EXPECT_EQ(operation.state(), before);
    const Living living = Living::Now();
    bool good = false, hasStruck = false, hasThrown = false;
    {
        const Fault fault(operation.threads, row.kind, count, row.lasts, row.error);
        try {
            good = operation.run();
        } catch (const std::bad_alloc&) {
            hasThrown = true;
        }
        hasStruck = fault.HasStruck();
    }
    EXPECT_FALSE(hasThrown);
    Living left = Living::Now();
    EXPECT_LE(left.files, living.files);
    left.files = living.files;  // the registry may have closed its database
    EXPECT_EQ(left, living);
    const std::string state = operation.state();
    const bool isOld = state == before, isNew = state == after;
    if (operation.promise == Operation::Untold)
        EXPECT_TRUE(isOld || isNew);
    else
        EXPECT_TRUE(good ? isNew : isOld || operation.promise == Operation::PartWhenFalse) << good;
    EXPECT_TRUE(isNew || !row.isHarmless);
    if (isNew) operation.reset();
    EXPECT_TRUE(operation.run() && operation.state() == after) << "the second attempt";
    return hasStruck;
}

long CheckEach(const Operation& operation, const FaultRow& row) {
    operation.reset();
    const std::string before = operation.state();
    EXPECT_TRUE(operation.run());
    const std::string after = operation.state();
    EXPECT_NE(before, after);
    long count = 0;
    // A change of a file takes long where another system is made up.
    for (long at = 0; !testing::Test::HasFailure() && StrikesAfter(at, operation, row, before, after);
         at += kIsWindows && at > 40 ? 16 : 1)
        ++count;
    return count;
}

TEST(Faults, LoseNothing) {
    // Thousands of changes would each wait for the disk.
    if (!std::getenv("TEST_TMPDIR") && std::filesystem::exists("/dev/shm"))
        SetVariable("TEST_TMPDIR", "/dev/shm");
    Operations operations;
    long count = 0;
    for (const auto* list : {&operations.changes, &operations.reads})
        for (const Operation& operation : *list)
            for (const FaultRow& row : kFaults) {
                SCOPED_TRACE(operation.name + (" " + std::to_string(&row - kFaults)));
                count += CheckEach(operation, row);
            }
    RecordProperty("faults", static_cast<int>(count));
    EXPECT_GT(count, kIsWindows ? 2500 : 3000);
}

}  // namespace
}  // namespace brenta::test
