/// @file
/// The sinks for what scripts print and for the errors they cause.
///
/// An engine passes every text that a script prints, and every error it finds, to one CScriptMsgStream. A
/// host derives from it and shows the texts where they belong; the base drops them.
///
///     class Console : public brenta::CScriptMsgStream {
///         void OutputPrintStream(const char* text) override { std::fputs(text, stdout); }
///         void OutputErrStream(const char* text) override { std::fprintf(stderr, "%s\n", text); }
///     };
///     Console console;
///     brenta::CCoreScriptEngine engine(environment, &console);
///
/// Printed texts come as the script printed them: a line end is there when the script wrote one. Error texts
/// have none; they begin with the place, "board.scr(12): ", or with the operation, "RunScript:".
///
/// Lifetime. A stream must outlive the engines that use it. The texts passed to the outputs are good during
/// the call only. An output may print to its own stream, run scripts on other engines, or stop its engine
/// (CCoreScriptEngine::RequestStop).
///
/// Threads. A stream is used by one thread at a time, so engines on different threads need different streams.
#pragma once

#include "brenta/export.h"
#include "brenta/names.h"

namespace brenta {

/// Where in the source text an error was found.
struct ScriptPosition {
    STRID file = kNoName;  ///< the source's name as it was loaded or injected, such as "board.scr" or "cmd:"
    int line = 0;          ///< from 1; 0 when the error has no position
};

/// The base sink; drops everything. Copyable.
class BRENTA_API CScriptMsgStream {
 public:
    CScriptMsgStream() = default;
    CScriptMsgStream(const CScriptMsgStream&) = default;
    CScriptMsgStream& operator=(const CScriptMsgStream&) = default;
    virtual ~CScriptMsgStream();

    /// Receive a text, never null; the base does nothing with it. A text is data, not a format.
    virtual void OutputPrintStream(const char* text);
    virtual void OutputErrStream(const char* text);

    /// Formats a text (CoreString::Format says how) and passes it to OutputPrintStream. What is longer than
    /// 60,000 characters is cut there.
    void Print(const char* format, ...) __attribute__((format(printf, 2, 3)));

    /// Formats a message in the same way, puts `location` (null counts as "") directly in front of it, and
    /// passes both to OutputErrStream.
    void Error(const char* location, const char* format, ...) __attribute__((format(printf, 3, 4)));

    /// The same with the place as data: the location is "<file>(<line>): ".
    void Error(const ScriptPosition& position, const char* format, ...) __attribute__((format(printf, 3, 4)));

    /// The position of the error that is being, or was last, passed to OutputErrStream, for hosts that want
    /// to jump to it; line 0 if it had none.
    const ScriptPosition& GetErrorPosition() const { return m_position; }

 private:
    ScriptPosition m_position;
};

/// Shows every text in the host's message box, with an OK button (brenta/host.h). For the thread that may
/// open one: that of the user interface.
class BRENTA_API CScriptMsgBoxStream : public CScriptMsgStream {
 public:
    void OutputPrintStream(const char* text) override;
    void OutputErrStream(const char* text) override;
};

}  // namespace brenta
