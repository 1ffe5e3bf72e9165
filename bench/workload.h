// A workload: the same work done by this library and by a peer, with a result that must be equal.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace brenta::bench {

/// One side of a workload. Made before the clock runs; Run is what is measured, and returns its result as
/// text.
class Contender {
 public:
    virtual ~Contender() = default;
    virtual std::string Run() = 0;
    /// The result that must be equal on both sides, where Run does not have it for nothing.
    virtual std::string Check() { return Run(); }
};

using ContenderMaker = std::function<std::unique_ptr<Contender>()>;

/// What is compared: the processor's time, which other programs on the machine do not lengthen much; where
/// threads wait for each other, that of the clock on the wall; or no time, but the most memory that a process
/// of its own takes for it, a nanosecond standing for a byte.
enum class Clock { Processor, Wall, Memory };

struct Workload {
    std::string family;  ///< what './dev bench FAMILY' selects
    std::string name;
    std::string peer;
    double limit;  ///< the ratio ours / peer that is aimed at
    ContenderMaker ours;
    ContenderMaker theirs;
    Clock clock = Clock::Processor;

    std::string Label() const { return family + "/" + name; }
};

/// All workloads of the program, in the order added.
std::vector<Workload>& Workloads();

/// Runs both sides once; "" when their results agree, else what differs.
std::string CompareResults(const Workload& workload);

/// A contender that calls `work()`, which returns a number.
template <class Work>
class FunctionContender : public Contender {
 public:
    explicit FunctionContender(Work work) : m_work(std::move(work)) {}
    std::string Run() override { return std::to_string(m_work()); }

 private:
    Work m_work;
};

/// A contender that calls `work()`, which returns nothing, and `check()` for the result.
template <class Work, class Checking>
class CheckedContender : public Contender {
 public:
    CheckedContender(Work work, Checking check) : m_work(std::move(work)), m_check(std::move(check)) {}
    std::string Run() override {
        m_work();
        return {};
    }
    std::string Check() override { return m_check(); }

 private:
    Work m_work;
    Checking m_check;
};

/// Makes contenders that call `work()` when they are measured, and `check()`, which returns the result as
/// text, when the sides are compared.
template <class Work, class Checking>
ContenderMaker Checked(Work work, Checking check) {
    return [=] { return std::make_unique<CheckedContender<Work, Checking>>(work, check); };
}

/// Makes contenders of what `prepare()` returns, a function without arguments whose result is a number. What
/// `prepare` itself does is not measured.
template <class Prepare>
ContenderMaker Prepared(Prepare prepare) {
    return [prepare] {
        auto work = prepare();
        return std::make_unique<FunctionContender<decltype(work)>>(std::move(work));
    };
}

/// Makes contenders that call `work()`, which needs no preparation and returns a number.
template <class Work>
ContenderMaker Side(Work work) {
    return Prepared([work] { return work; });
}

}  // namespace brenta::bench
