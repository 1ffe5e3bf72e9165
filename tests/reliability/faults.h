// Makes what the library asks of the system fail when a test says so: allocations, blocks of the library's
// heap, and calls about files. The test program stands before the system's functions for itself and for all
// that it links, so that also the parsers and the database meet the fault.
#pragma once

#include <cerrno>

namespace brenta::test {

/// What fails. Of the kinds with an error number all calls about files count.
enum class FaultOf { Nothing, Memory, Heap, File };

/// While it lives, requests of a kind fail: after so many that succeed one, or all from then on.
class Fault {
 public:
    /// Whose requests: the calling thread's, or those of all threads, which must not ask at the same time.
    enum Of { OneThread, AllThreads };

    /// `error` is what a call about files fails with; 0 lets those that read or write do a part of their work
    /// only.
    Fault(Of threads, FaultOf kind, long succeeding, bool lasts, int error = 0);
    ~Fault();
    Fault(const Fault&) = delete;
    Fault& operator=(const Fault&) = delete;

    /// Whether anything has failed so far.
    bool HasStruck() const;
};

/// While it lives, nothing fails after all: for what a test itself needs.
class Calm {
 public:
    Calm();
    ~Calm();
    Calm(const Calm&) = delete;
    Calm& operator=(const Calm&) = delete;

 private:
    const FaultOf m_kind;
};

}  // namespace brenta::test
