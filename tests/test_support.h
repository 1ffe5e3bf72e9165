// Helpers shared by the unit tests.
#pragma once

#include <string>
#include <vector>

#include "brenta/failure.h"

namespace brenta::test {

/// Records every forced crash while it lives and resumes after each, so that a test can check both the record
/// and the state that the failing operation leaves behind.
class CrashRecorder {
 public:
    CrashRecorder();
    ~CrashRecorder();
    CrashRecorder(const CrashRecorder&) = delete;
    CrashRecorder& operator=(const CrashRecorder&) = delete;

    /// The messages so far, oldest first.
    const std::vector<std::string>& Messages() const { return m_messages; }
    /// The last record; only valid after at least one crash.
    const ForcedCrashRecord& Last() const { return m_last; }

 private:
    static void Record(const ForcedCrashRecord& record, void* context);

    std::vector<std::string> m_messages;
    ForcedCrashRecord m_last{};
};

}  // namespace brenta::test
