// Formatting goes through CoreString, which has its own: the same on all platforms and deaf to the locale.
#include "brenta/message_stream.h"

#include <cstdarg>

#include "brenta/framework.h"
#include "brenta/string.h"
#include "script/value_limits.h"

namespace brenta {

namespace {

/// Each message has a text of its own, not a buffer per thread: what it is passed to may print in turn.
[[gnu::format(printf, 1, 0)]] CoreString FormatMessage(const char* format, std::va_list arguments) {
    CoreString text;
    text.FormatV(format, arguments);
    text.Truncate(static_cast<int>(kMessageLimit));
    return text;
}

}  // namespace

CScriptMsgStream::~CScriptMsgStream() = default;

void CScriptMsgStream::OutputPrintStream(const char*) {}

void CScriptMsgStream::OutputErrStream(const char*) {}

void CScriptMsgStream::Print(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const CoreString text = FormatMessage(format, arguments);
    va_end(arguments);
    OutputPrintStream(text);
}

void CScriptMsgStream::Error(const char* location, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const CoreString text = CoreString(location) + FormatMessage(format, arguments);
    va_end(arguments);
    m_position = ScriptPosition{};
    OutputErrStream(text);
}

void CScriptMsgStream::Error(const ScriptPosition& position, const char* format, ...) {
    CoreString text(StrPtr(position.file));
    text << '(' << position.line << "): ";
    std::va_list arguments;
    va_start(arguments, format);
    text += FormatMessage(format, arguments);
    va_end(arguments);
    // Set before the output and kept after it, so that a host may ask during the call or later.
    m_position = position;
    OutputErrStream(text);
}

void CScriptMsgBoxStream::OutputPrintStream(const char* text) {
    AfxMessageBox(text, MB_OK, 0);
}

void CScriptMsgBoxStream::OutputErrStream(const char* text) {
    AfxMessageBox(text, MB_OK, 0);
}

}  // namespace brenta
