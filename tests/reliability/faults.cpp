#include "reliability/fault_plan.h"

#include <atomic>
#include <cerrno>
#include <utility>

namespace brenta::test {
namespace {

#if defined(BRENTA_ADDRESS_SANITIZER)
constexpr bool kThreadsNeedMemory = true;  // the sanitizer's own start of a thread
#else
constexpr bool kThreadsNeedMemory = false;
#endif

constinit thread_local FaultPlan t_plan;
constinit std::atomic<FaultPlan*> g_pPlanOfAll{nullptr};

}  // namespace

FaultPlan& CurrentPlan() {
    FaultPlan* const ofAll = g_pPlanOfAll.load(std::memory_order_relaxed);
    return ofAll ? *ofAll : t_plan;
}

bool Strikes(FaultOf kind) {
    FaultPlan& plan = CurrentPlan();
    if (plan.kind != kind || plan.left-- > 0 || (plan.left < -1 && !plan.lasts)) return false;
    plan.hasStruck = true;
    return true;
}

bool FailsFile() {
    const int error = CurrentPlan().error;
    if (error == 0 || !Strikes(FaultOf::File)) return false;
    errno = error;
    return true;
}

std::size_t Part(std::size_t size) {
    return size > 1 && CurrentPlan().error == 0 && Strikes(FaultOf::File) ? size / 2 : size;
}

Fault::Fault(Of threads, FaultOf kind, long succeeding, bool lasts, int error) {
    t_plan = {kind, succeeding, lasts, false, error};
    if (threads == AllThreads && !kThreadsNeedMemory) g_pPlanOfAll = &t_plan;
}

Fault::~Fault() {
    g_pPlanOfAll = nullptr;
    t_plan = {};
}

bool Fault::HasStruck() const {
    return t_plan.hasStruck;
}

Calm::Calm() : m_kind(std::exchange(t_plan.kind, FaultOf::Nothing)) {}

Calm::~Calm() {
    t_plan.kind = m_kind;
}

}  // namespace brenta::test
