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

// Variables of a thread may themselves need memory: its errno tells the thread that has the plan from others.
constinit FaultPlan g_plan, g_noPlan;
constinit std::atomic<const int*> g_pThread{nullptr};
constinit std::atomic<bool> g_isOfAll{false};

}  // namespace

FaultPlan& CurrentPlan() {
    return g_isOfAll || g_pThread == &errno ? g_plan : g_noPlan;
}

bool Strikes(FaultOf kind) {
    FaultPlan& plan = CurrentPlan();
    if (plan.kind != kind || plan.left-- > 0 || (plan.left < -1 && !plan.lasts)) return false;
    plan.hasStruck = true;
    return true;
}

// A block that was just freed is there for the next request, as in the C library itself: a small one is kept
// for its own size, where calloc does not look; a larger one serves whatever it has room for.
bool FailsMemory(std::size_t room, bool isCalloc) {
    constexpr std::size_t kLargestKept = 1032;
    if (CurrentPlan().kind != FaultOf::Memory) return false;
    const std::size_t freed = std::exchange(CurrentPlan().freed, 0);
    const bool isThere = freed > kLargestKept ? room <= freed : !isCalloc && room == freed;
    if (isThere || !Strikes(FaultOf::Memory)) return false;
    errno = ENOMEM;
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
    g_plan = {kind, succeeding, lasts, false, error};
    g_pThread = &errno;
    g_isOfAll = threads == AllThreads && !kThreadsNeedMemory;
}

Fault::~Fault() {
    g_pThread = nullptr;
    g_isOfAll = false;
}

bool Fault::HasStruck() const {
    return g_plan.hasStruck;
}

Calm::Calm() : m_kind(std::exchange(g_plan.kind, FaultOf::Nothing)) {}

Calm::~Calm() {
    g_plan.kind = m_kind;
}

// The linker's --wrap leads calls of the heap here.
void* RealHeapNew(std::size_t size) noexcept asm("__real_" BRENTA_HEAP_NEW);
void* FailingHeapNew(std::size_t size) noexcept asm("__wrap_" BRENTA_HEAP_NEW);
void* FailingHeapNew(std::size_t size) noexcept {
    return Strikes(FaultOf::Heap) ? nullptr : RealHeapNew(size);
}

}  // namespace brenta::test
