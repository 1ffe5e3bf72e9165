#include <algorithm>
#include <cmath>
#include <limits>

#include "brenta/system.h"
#include "os/system.h"

namespace brenta {

namespace {

constexpr double kNanosecond = 1e-9;

int ToInt(long long value) {
    return static_cast<int>(std::min<long long>(value, std::numeric_limits<int>::max()));
}

}  // namespace

CoreTimer::CoreTimer() : m_start(os::SteadyNanoseconds()) {}

void CoreTimer::Restart() {
    *this = CoreTimer();
}

void CoreTimer::Stop() {
    if (m_running) m_passed = os::SteadyNanoseconds() - m_start;
    m_running = false;
}

void CoreTimer::Resume() {
    if (!m_running) m_start = os::SteadyNanoseconds() - m_passed;
    m_running = true;
}

double CoreTimer::GetSeconds() const {
    return static_cast<double>(m_running ? os::SteadyNanoseconds() - m_start : m_passed) * kNanosecond;
}

CJobTime::CJobTime() : m_processorStart(os::ProcessorNanoseconds()) {}
CJobTime::~CJobTime() = default;

std::size_t CJobTime::SizeOf() const {
    return sizeof(*this);
}

const char* CJobTime::GetClassName() const {
    return "CJobTime";
}

const char* CJobTime::GetBaseClassName() const {
    return "none";
}

void CJobTime::Restart() {
    *this = CJobTime();
}

void CJobTime::Stop() {
    if (!m_timer.IsRunning()) return;
    m_timer.Stop();
    m_processorUsed = os::ProcessorNanoseconds() - m_processorStart;
}

double CJobTime::GetElapsedSeconds() const {
    return m_timer.GetSeconds();
}

double CJobTime::GetProcessorSeconds() const {
    const std::int64_t used =
        m_processorUsed >= 0 ? m_processorUsed : os::ProcessorNanoseconds() - m_processorStart;
    return static_cast<double>(used) * kNanosecond;
}

double CJobTime::GetRemainingSeconds(double fractionDone) const {
    if (!(fractionDone > 0)) return -1;
    const double done = std::min(fractionDone, 1.0);
    return GetElapsedSeconds() * (1 - done) / done;
}

CoreString CJobTime::GetText() const {
    const int seconds = ToInt(static_cast<long long>(GetElapsedSeconds()));
    CoreString text;
    text.Format("%d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60);
    return text;
}

int SysGetSessionSeconds() {
    return ToInt(os::ProcessAge());
}

int SysGetIdleSeconds() {
    return ToInt(os::IdleTime());
}

}  // namespace brenta
