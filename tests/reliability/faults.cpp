#include "reliability/fault_plan.h"

#include <cerrno>
#include <utility>

namespace brenta::test {

constinit thread_local FaultPlan t_plan;

bool Strikes(FaultOf kind) {
    if (t_plan.kind != kind || t_plan.left-- > 0 || (t_plan.left < -1 && !t_plan.lasts)) return false;
    t_plan.hasStruck = true;
    return true;
}

bool FailsFile() {
    if (t_plan.error == 0 || !Strikes(FaultOf::File)) return false;
    errno = t_plan.error;
    return true;
}

std::size_t Part(std::size_t size) {
    return size > 1 && t_plan.error == 0 && Strikes(FaultOf::File) ? size / 2 : size;
}

Fault::Fault(FaultOf kind, long succeeding, bool lasts, int error) {
    t_plan = {kind, succeeding, lasts, false, error};
}

Fault::~Fault() {
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
