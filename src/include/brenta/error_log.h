/// @file
/// The error log: warnings and errors with the places they belong to, shown as a small HTML report.
///
/// Use it where a person's own files are read and everything wrong with them is to be said at once: set the
/// place as reading goes on, report what is found, and show the log at the end.
///
///     CErrorLog log;
///     log.SetCurrentFileName("panel.scr");
///     log.SetCurrentLineNumber(12);
///     log.Warning("GND has one pin.");                   // "panel.scr(12) : warning: GND has one pin."
///     log.ShowLog("report.html", "Checking the panel");  // written and opened: something was reported
///
/// A report that was written is opened through the host's `shellOpen` (brenta/host.h): by default in the
/// program that the person chose for such files, in the background. Where there is no such program the report
/// is only written.
///
/// All texts are data, never formats, and may be of any length; a null one counts as "". A log owns its
/// messages and grows by their lengths. One log must not be used by two threads at once.
#pragma once

#include "brenta/containers.h"
#include "brenta/detail/class_name.h"
#include "brenta/export.h"
#include "brenta/heap.h"
#include "brenta/string.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// The log

/// Collects messages in the order in which they are reported, and counts them. Copies are deep.
class BRENTA_API CErrorLog {
 public:
    /// Empty, without a place.
    CErrorLog();
    CErrorLog(const CErrorLog&) = default;
    CErrorLog& operator=(const CErrorLog&) = default;

    /// The size of the object in bytes, without the messages.
    virtual std::size_t SizeOf() const;
    /// "CErrorLog"
    virtual const char* GetClassName() const;
    /// "none"
    virtual const char* GetBaseClassName() const;
    virtual ~CErrorLog();

    BRENTA_HEAP_OPERATORS

    /// The place of the messages to come. Without a file name, or with line 0, messages have none; the column
    /// is kept and shown nowhere. The name is copied.
    void SetCurrentFileName(const char* fileName);
    void SetCurrentLineNumber(int line);
    void SetCurrentColumnNumber(int column);

    /// Adds a message: "file(line) : warning: text", or "file(line) : error: text", or the text alone where
    /// there is no place; and counts it. Without memory it is counted all the same.
    void Warning(const char* text);
    void Error(const char* text);

    /// Whether anything was reported since the start or the last ResetLog.
    bool AnyWarningsOrErrors() const;

    /// Forgets the messages, the counts and the place.
    void ResetLog();

    /// Writes the messages with EmitLogFile, without a link; does nothing if nothing was reported.
    void ShowLog(const char* reportFile, const char* title);

 private:
    void Report(const char* kind, const char* text);

    TOrderedList<CoreString> m_messages;
    CoreString m_fileName;
    int m_line = 0;
    int m_column = 0;
    int m_warnings = 0;
    int m_errors = 0;
};

// ---------------------------------------------------------------------------------------------------------
// The report

/// Writes `lines` as an HTML page, replacing `reportFile`, and opens it: a banner with the title, then one
/// row per line in its order, blue if it contains "warning", else red if it contains "error" (in any case),
/// else black; and at the foot a link, if both its text and its address are not null.
///
/// Nothing is escaped, so a line may bring its own tags - and a line that quotes somebody's file should be
/// escaped by the caller. Line ends are the platform's. If the file cannot be created nothing is written,
/// opened or said.
BRENTA_API void EmitLogFile(const char* reportFile, const char* title, TOrderedList<CoreString>& lines,
                            const char* linkText, const char* linkUrl);

}  // namespace brenta
