// The test program; told so, it does the work of a child process instead.
#include "child_process.h"

int main(int count, char** words) {
    const int status = brenta::test::ChildWork::RunWork({words + 1, words + count});
    if (status >= 0) return status;
    testing::InitGoogleTest(&count, words);
    return RUN_ALL_TESTS();
}
