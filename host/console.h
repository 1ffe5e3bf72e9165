// What the host's commands share: message streams on the console, values as text.
#pragma once

#include <string>
#include <vector>

#include "brenta/message_stream.h"
#include "brenta/var.h"
#include "brenta/xml.h"

namespace brenta::host {

/// Script output goes to standard output, one line for each print; messages go to standard error.
class ConsoleStream : public CScriptMsgStream {
 public:
    void OutputPrintStream(const char* text) override;
    void OutputErrStream(const char* text) override;

    /// Complains, unless a message has told already what is wrong: some failures of scripts have none.
    void ComplainUnlessDone(const std::string& text) const;

 private:
    bool m_hasComplained = false;
};

/// One line on standard error: "brenta: text".
void Complain(const std::string& text);

/// Says why a document could not be loaded from a file by the platform's reader.
void ComplainOfFault(const std::string& file, const CCoreXmlDom& document);

/// Whether there is such a file; complains if not.
bool CheckFile(const std::string& file);

/// Writes `text` to standard output and ends the line unless the text already does.
void PrintLine(const std::string& text);

/// Whether a value is a function, which it has instead of a name.
bool IsFunction(const Var& value);

/// Whether a value has a name that can be shown.
bool HasName(const Var& value);

/// A value for a person: scalars in their text form, lists as "{1, 2}", structures as "{x = 1, y = 2}", null
/// as "null", functions as "function Name". A member of a structure that holds a function has lost its name.
std::string TextOf(const Var& value);

/// An element without its children, on one line: tag a="1" b="2" "inner text".
std::string ElementText(const CCoreXmlDomElement& element);

/// Joins lines of script messages into one, without the "cmd:(1): " that says nothing to somebody who typed
/// one line.
std::string JoinMessages(const char* messages);

}  // namespace brenta::host
