/// @file
/// The sinks for what scripts print and for the errors they cause.
#pragma once

#include "brenta/export.h"
#include "brenta/names.h"

namespace brenta {

/// Where in the source text an error was found. `line` is 1 or more; 0 when the error has no position.
struct ScriptPosition {
    STRID file = kNoName;
    int line = 0;
};

class BRENTA_API CScriptMsgStream {
   public:
    CScriptMsgStream() = default;
    CScriptMsgStream(const CScriptMsgStream&) = default;
    CScriptMsgStream& operator=(const CScriptMsgStream&) = default;
    virtual ~CScriptMsgStream();
    virtual void OutputPrintStream(const char* text);
    virtual void OutputErrStream(const char* text);

    void Print(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void Error(const char* location, const char* format, ...) __attribute__((format(printf, 3, 4)));
    /// The same with the position as data: the location text is "file(line): ".
    void Error(const ScriptPosition& position, const char* format, ...) __attribute__((format(printf, 3, 4)));

    /// The position of the message that is being, or was last, passed to OutputErrStream; line 0 if it had none.
    const ScriptPosition& GetErrorPosition() const { return m_position; }

   private:
    ScriptPosition m_position;
};

/// Shows every text in the host's message box.
class BRENTA_API CScriptMsgBoxStream : public CScriptMsgStream {
   public:
    void OutputPrintStream(const char* text) override;
    void OutputErrStream(const char* text) override;
};

}  // namespace brenta
