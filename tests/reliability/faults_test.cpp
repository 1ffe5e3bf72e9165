// Each request to the system fails in turn: nothing crashes, nothing is lost, and the next attempt succeeds.
#include "reliability/faults.h"

#include <algorithm>
#include <filesystem>

#include "reliability/operations.h"

namespace brenta::test {
namespace {

/// Without sockets, which the server closes when it finds the time, be it while this counts.
long OpenFiles() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::count_if(begin(files), end(files), [](const auto& file) {
        std::error_code error;
        const std::string target = std::filesystem::read_symlink(file.path(), error).string();
        return !error && !target.starts_with("socket:");
    });
}

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
    const long open = OpenFiles();
    bool good = false, hasStruck = false, hasThrown = false;
    {
        const Fault fault(row.kind, count, row.lasts, row.error);
        try {
            good = operation.run();
        } catch (const std::bad_alloc&) {
            hasThrown = true;
        }
        hasStruck = fault.HasStruck();
    }
    EXPECT_FALSE(hasThrown);
    const std::string state = operation.state();
    const bool isOld = state == before, isNew = state == after;
    if (operation.promise == Operation::Untold)
        EXPECT_TRUE(isOld || isNew);
    else
        EXPECT_TRUE(good ? isNew : isOld || operation.promise == Operation::PartWhenFalse) << good;
    EXPECT_TRUE(isNew || !row.isHarmless);
    if (isNew) operation.reset();
    EXPECT_TRUE(operation.run() && operation.state() == after) << "the second attempt";
    EXPECT_LE(OpenFiles(), open);
    return hasStruck;
}

long CheckEach(const Operation& operation, const FaultRow& row) {
    operation.reset();
    const std::string before = operation.state();
    EXPECT_TRUE(operation.run());
    const std::string after = operation.state();
    EXPECT_NE(before, after);
    long count = 0;
    while (!testing::Test::HasFailure() && StrikesAfter(count, operation, row, before, after))
        ++count;
    return count;
}

TEST(Faults, LoseNothing) {
    setenv("TEST_TMPDIR", "/dev/shm", 0);  // thousands of changes, each waiting for the disk otherwise
    Operations operations;
    long count = 0;
    for (const auto* list : {&operations.changes, &operations.reads})
        for (const Operation& operation : *list)
            for (const FaultRow& row : kFaults) {
                SCOPED_TRACE(operation.name + (" " + std::to_string(&row - kFaults)));
                count += CheckEach(operation, row);
            }
    RecordProperty("faults", static_cast<int>(count));
    EXPECT_GT(count, 3000);
}

}  // namespace
}  // namespace brenta::test
