/// @file
/// How the library joins its host, how it reports a broken invariant, and the exception that hosts throw.
///
/// The library tells three kinds of failure apart:
///
/// - What is expected to fail now and then (a file that is not there, a name that is unknown) is a return
///   value: false, 0, null or an empty string.
/// - What a script does wrong goes to the script engine's message stream (brenta/message_stream.h).
/// - What cannot happen - a broken invariant inside the library, or a call that breaks its contract - is a
///   *forced crash*: one record of four values, raised on the thread that failed. The library shows nothing
///   by itself; the host's handler decides. A handler that returns *resumes*: the operation carries on behind
///   the failed check, every structure stays consistent, and each operation's comment says what it then does.
///
/// A host that writes crash reports and lives on:
///
///     void Report(const brenta::ForcedCrashRecord& crash, void* log) {
///         std::fprintf(static_cast<FILE*>(log), "%s(%d): ", crash.File(), crash.Line());
///         std::fprintf(static_cast<FILE*>(log), "%s\n", crash.Message());
///     }
///     brenta::InitCoreLibrary();
///     brenta::SetForcedCrashHandler(&Report, stderr);
///
/// Without a handler the Linux build writes the four values to standard error and ends the process with
/// SIGABRT; the Windows build raises the structured exception 0xE0BADBAD, continuable, with the four values.
///
/// The library throws no exceptions of its own (the standard library's bad_alloc can pass through it).
/// CoreException is there for the host to throw and report.
#pragma once

#include <cstddef>
#include <cstdint>

#include "brenta/detail/class_name.h"
#include "brenta/export.h"
#include "brenta/framework.h"
#include "brenta/heap.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Joining the library

/// Links the library into the host's chain of modules (brenta/framework.h, CDynLinkLibrary). Call it once at
/// the application's start; calling it again, from any thread, does nothing. The library's foundation works
/// before this call too. Always returns true.
BRENTA_API bool InitCoreLibrary();

// ---------------------------------------------------------------------------------------------------------
// Forced crash

/// The code that marks a forced crash among the exceptions of a process.
inline constexpr std::uint32_t kForcedCrashCode = 0xE0BADBADu;

/// What a forced crash reports. Everything it points to is static and outlives the handler's call.
struct ForcedCrashRecord {
    std::uint32_t code;        ///< always kForcedCrashCode
    std::uint32_t flags;       ///< always 0: the handler may resume
    std::uintptr_t values[4];  ///< site code, source name, line, message; read them through the accessors

    /// A number of the form 0x05FFFNNN (FFF: source file, NNN: site in it); 0 for sites without a number,
    /// which are all assertions and most others.
    std::uintptr_t SiteCode() const { return values[0]; }
    /// Short name of the source without path and extension, such as "Heap".
    const char* File() const { return reinterpret_cast<const char*>(values[1]); }
    /// Line in that source, from 1.
    int Line() const { return static_cast<int>(values[2]); }
    /// "Assertion failed! <expression>", "Forced crash! \"<reason>\"" or "Range Error! <reason>".
    const char* Message() const { return reinterpret_cast<const char*>(values[3]); }
};

/// A host's handler; `context` is what SetForcedCrashHandler was given. It runs on the thread that failed,
/// while the library holds none of its locks: it may call the library, throw a C++ exception, end the thread
/// or the process, or return to resume.
using ForcedCrashHandler = void (*)(const ForcedCrashRecord& record, void* context);

/// Replaces the handler; null restores the default of the platform. Safe from any thread at any time. Another
/// thread that is failing right now may still be inside the former handler, so keep its context alive as long
/// as other threads use the library.
BRENTA_API void SetForcedCrashHandler(ForcedCrashHandler handler, void* context);

/// Raises a forced crash and returns if the handler resumes. `file` and `message` must be static texts. A
/// crash raised while the same thread is inside the handler goes to the platform's default instead, so a
/// failing handler cannot call itself for ever.
BRENTA_API void ForcedCrash(std::uintptr_t siteCode, const char* file, int line, const char* message);

/// A place for a breakpoint: does nothing, is never optimised away, and may be called wherever a caller meets
/// a failure that it can live with.
BRENTA_API void SoftError();

/// Fetches the system's text for the calling thread's last error and drops it; shows, logs and returns
/// nothing. `context` is not used and may be null.
BRENTA_API void ReportLastError(const char* context);

// ---------------------------------------------------------------------------------------------------------
// CoreException

/// An error code and a context text, for hosts to throw and to report.
///
/// Codes 1 to 8 have a built-in message; any other code is the host's own and is reported through a string
/// resource. A copy keeps the code but not the text: reports made from a copied exception show the built-in
/// message with an empty context. Catch by reference to keep the context:
///
///     try {
///         CString part("R17");
///         throw CoreException(part, 5);
///     } catch (CoreException& error) {
///         error.ReportError(MB_OK, 0);    // a message box "R17: Internal error - Object not found"
///     }
///
/// Made with `new` it lives on the library's global heap. One exception is used by one thread at a time.
class BRENTA_API CoreException : public CException {
 public:
    /// Keeps a copy of `text`; any `code` is allowed.
    CoreException(CString& text, int code);
    /// Copies the code; the new exception's text is empty.
    CoreException(const CoreException& other);
    /// Copies the code; this exception's text stays as it is.
    CoreException& operator=(CoreException& other);
    CoreException& operator=(const CoreException& other);
    ~CoreException() override;

    /// Writes "<text>: <built-in message>" into `buffer`, cut to size-1 characters and always terminated, and
    /// returns true; `helpContext` is not written. A null buffer or size 0 takes no text and is no failure.
    /// For a code without built-in message: what CException's function answers (false and an empty text).
    bool GetErrorMessage(char* buffer, unsigned int size, unsigned int* helpContext = nullptr) override;

    /// The same without the ": ": "<text><built-in message>". The two forms differ on purpose.
    bool GetErrorMessage(char* buffer, unsigned int size, unsigned int* helpContext = nullptr) const override;

    /// Shows the message (at most 255 characters of it) in a message box of the given MB_ type, or, for a
    /// code without built-in message, the string resource `messageId`. Returns the message box's answer.
    int ReportError(unsigned int type = MB_OK, unsigned int messageId = 0) override;

    /// The size of the object in bytes.
    virtual std::size_t SizeOf() const;
    /// "CoreException"
    virtual const char* GetClassName() const;
    /// "CException"
    virtual const char* GetBaseClassName() const;

    BRENTA_HEAP_OPERATORS

 protected:
    /// The built-in message of a code; null outside 1 to 8.
    const char* GetErrorMessage(int code) const;

 private:
    int m_code;
    CString m_text;
};

}  // namespace brenta
