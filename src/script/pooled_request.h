// What a request to a host object is made of.
#pragma once

#include <span>

#include "brenta/scriptable.h"
#include "script/executor.h"
#include "script/var_access.h"

namespace brenta {

/// Lists of arguments and answers cost more to make than most requests do, so an executor keeps a set for
/// each level at which requests are nested, and uses their nodes again. An object may do with its lists what
/// it likes as long as the request lasts.
struct Executor::RequestParts {
    TOrderedList<Var> none;
    TOrderedList<Var> arguments;
    Var answer;
    bool hasArguments = false;
};

class Executor::PooledRequest {
 public:
    explicit PooledRequest(Executor& executor) : m_executor(executor), m_parts(executor.TakeRequest()) {}
    /// Nothing large is kept for the next request, and nothing that the object has left in an empty list.
    ~PooledRequest() {
        VarAccess::Reset(m_parts.answer);
        if (!m_parts.none.IsEmpty()) m_parts.none.RemoveAll();
        for (const Var& argument : Arguments()) {
            if (argument.GetKind() != VarKind::List) continue;
            m_parts.arguments.RemoveAll();
            break;
        }
        m_parts.hasArguments = false;
        --m_executor.m_requestDepth;
    }
    PooledRequest(const PooledRequest&) = delete;
    PooledRequest& operator=(const PooledRequest&) = delete;

    /// Converts the arguments. False after a message.
    bool SetArguments(std::span<const Value> values) {
        TIter<Var> at(m_parts.arguments);
        for (const Value& value : values) {
            if (at.Get() == nullptr) AddNode(at);
            if (!Convert(value, *at.Get())) return false;
            at.Next();
        }
        while (at.Get() != nullptr)
            m_parts.arguments.Remove(at);
        m_parts.hasArguments = true;
        return true;
    }

    TOrderedList<Var>& Arguments() { return m_parts.hasArguments ? m_parts.arguments : m_parts.none; }
    Var& Answer() { return m_parts.answer; }

 private:
    /// Adds a node behind the others, on which the iterator then stands.
    void AddNode(TIter<Var>& at) {
        m_parts.arguments.Add(Var());
        at = TIter<Var>(m_parts.arguments);
        while (at.Get() != nullptr && at.m_pPos->m_pNext != nullptr)
            at.Next();
        if (at.Get() == nullptr) throw std::bad_alloc();
    }

    bool Convert(const Value& value, Var& out) {
        switch (value.GetTag()) {
            case Tag::Int:
                VarAccess::ResetToNumber(out, VarKind::Int, static_cast<double>(value.Int()));
                return true;
            case Tag::Float:
                VarAccess::ResetToNumber(out, VarKind::Float, value.Float());
                return true;
            default:
                return m_executor.ToHost(value, out);
        }
    }

    Executor& m_executor;
    RequestParts& m_parts;
};

}  // namespace brenta
