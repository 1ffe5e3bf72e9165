// An engine with a recording message stream, for the tests of the parser and of what runs.
#pragma once

#include "brenta/dump.h"
#include "brenta/script.h"
#include "test_support.h"

namespace brenta::test {

/// Collects what a script prints and the errors it causes, one per line.
class RecordingStream : public CScriptMsgStream {
 public:
    void OutputPrintStream(const char* text) override { prints += text; }
    void OutputErrStream(const char* text) override { (errors += text) += '\n'; }

    /// The errors so far, which are forgotten.
    std::string TakeErrors() { return std::exchange(errors, {}); }

    std::string prints;
    std::string errors;
};

/// The dump of a symbol or a statement.
template <typename T>
std::string DumpOf(T& dumped) {
    DumpFormatter out;
    CoreString text;
    dumped.Dump(out);
    out.GetString(text);
    return text();
}

/// Engines leave their standard library object to the library; in tests it goes with the engine.
inline void DeleteStdLib(const CCoreScriptEngine& engine) {
    const auto* const env = dynamic_cast<ScriptSymbol*>(engine.GetSymbol(StrId("Env"), false));
    const Var* const object = env != nullptr ? env->GetValue().GetMember(StrId("StdLib")) : nullptr;
    if (object != nullptr) delete static_cast<CCoreScriptable*>(object->GetRef());
}

/// A fresh engine that parses texts.
struct ParserFixture {
    RecordingStream messages;
    CCoreScriptEngine engine{TOrderedList<Var>(), &messages};

    ~ParserFixture() { DeleteStdLib(engine); }

    /// Scans a text into an empty token list, as the source "t".
    TIter<ScriptToken*> Scan(const std::string& text) {
        engine.FlushTokens();
        engine.InjectScriptText("t", text.c_str(), true);
        return engine.GetFirstToken();
    }

    /// Parses a module; its errors, "" if there were none.
    std::string ParseModule(const std::string& text) {
        Scan(text);
        const bool parsed = engine.ParseScript();
        return parsed == messages.errors.empty() ? messages.TakeErrors() : "result and messages disagree";
    }
};

}  // namespace brenta::test
