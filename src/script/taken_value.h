// A text or list that grows where it is.
#pragma once

#include "script/value.h"

namespace brenta {

/// Takes a variable's value out of the variable, so that it can grow in place, and puts it back whatever
/// happens. `value` is a copy of it; if the variable has got another value since, nothing is taken.
class TakenValue {
 public:
    TakenValue(Value& variable, Value& value) : m_variable(variable), m_value(value) {
        if (!value.IsCounted()) return;
        const bool isTheSame = variable.GetTag() == value.GetTag() && variable.String() == value.String();
        if (!isTheSame) return;
        variable.Clear();
        m_taken = true;
        m_length = value.IsString() ? value.String()->length : 0;
        if (!value.IsUnshared()) PutBack();
    }
    ~TakenValue() { PutBack(); }
    TakenValue(const TakenValue&) = delete;
    TakenValue& operator=(const TakenValue&) = delete;

    bool IsTaken() const { return m_taken; }
    /// Cuts off what has been appended to a text.
    void Undo() {
        if (!m_taken || !m_value.IsString()) return;
        m_value.String()->length = m_length;
        m_value.String()->bytes[m_length] = 0;
    }
    void PutBack() {
        if (m_taken) m_variable = m_value;
        m_taken = false;
    }

 private:
    Value& m_variable;
    Value& m_value;
    bool m_taken = false;
    std::uint32_t m_length = 0;
};

}  // namespace brenta
