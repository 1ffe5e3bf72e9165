// What a request to a host object is made of.
#pragma once

#include <memory>
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
    std::unique_ptr<RequestParts> deeper;  ///< made when it is asked for
};

class Executor::PooledRequest {
 public:
    explicit PooledRequest(Executor& executor)
        : m_executor(executor), m_place(*executor.m_pRequests), m_parts(PartsAt(m_place)) {
        executor.m_pRequests = &m_parts.deeper;
    }
    /// Nothing large is kept for the next request, and nothing that the object has left in an empty list.
    ~PooledRequest() {
        VarAccess::Reset(m_parts.answer);
        if (!m_parts.none.IsEmpty()) m_parts.none.RemoveAll();
        if (m_hasArguments) DropLists();
        m_executor.m_pRequests = &m_place;
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
        m_hasArguments = true;
        return true;
    }

    TOrderedList<Var>& Arguments() { return m_hasArguments ? m_parts.arguments : m_parts.none; }
    Var& Answer() { return m_parts.answer; }

 private:
    static RequestParts& PartsAt(std::unique_ptr<RequestParts>& place) {
        if (place == nullptr) [[unlikely]]
            place = std::make_unique<RequestParts>();
        return *place;
    }

    void DropLists() {
        for (const Var& argument : m_parts.arguments) {
            if (argument.GetKind() != VarKind::List) continue;
            m_parts.arguments.RemoveAll();
            break;
        }
    }

    /// Adds a node behind the others, on which the iterator then stands.
    void AddNode(TIter<Var>& at) {
        const TNode<Var>* const last = at.m_pPrev;
        m_parts.arguments.Add(Var());
        at = TIter<Var>(m_parts.arguments);
        while (at.Get() != nullptr && at.m_pPos->m_pNext != nullptr)
            at.Next();
        if (at.m_pPos == last) throw std::bad_alloc();  // nothing was added
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
    std::unique_ptr<RequestParts>& m_place;
    RequestParts& m_parts;
    bool m_hasArguments = false;
};

}  // namespace brenta
