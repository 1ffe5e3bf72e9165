// What others may see while they are called.
#pragma once

#include "script/code/machine.h"
#include "script/executor.h"

namespace brenta {

/// Around a call of a host: locals that it has looked at are put back where the functions expect them.
class Executor::ShowMark {
 public:
    explicit ShowMark(const Executor& executor)
        : m_machine(*executor.m_machine), m_mark(m_machine.ShowMark()) {}
    ~ShowMark() { m_machine.HideTo(m_mark); }
    ShowMark(const ShowMark&) = delete;
    ShowMark& operator=(const ShowMark&) = delete;

 private:
    Machine& m_machine;
    const std::size_t m_mark;
};

}  // namespace brenta
