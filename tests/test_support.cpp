#include "test_support.h"

namespace brenta::test {

CrashRecorder::CrashRecorder() {
    SetForcedCrashHandler(&CrashRecorder::Record, this);
}

CrashRecorder::~CrashRecorder() {
    SetForcedCrashHandler(nullptr, nullptr);
}

void CrashRecorder::Record(const ForcedCrashRecord& record, void* context) {
    auto* recorder = static_cast<CrashRecorder*>(context);
    recorder->m_messages.emplace_back(record.Message());
    recorder->m_last = record;
}

}  // namespace brenta::test
