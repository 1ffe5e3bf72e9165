// Forced crashes, CoreException, the host's services and the modules.
#include "brenta/failure.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstring>

#include "brenta/host.h"
#include "brenta/string.h"
#include "test_support.h"

namespace brenta::test {
namespace {

/// A host that shows messages by keeping them.
class RecordingHost {
 public:
    RecordingHost() {
        HostServices services;
        services.context = this;
        services.showMessage = [](void* self, const char* text, unsigned int type) {
            static_cast<RecordingHost*>(self)->shown.push_back(text + std::string("|") +
                                                               std::to_string(type));
            return 42;
        };
        services.loadString = [](void*, unsigned int id, CoreString& text) {
            text = "resource";
            return id == 7;
        };
        SetHostServices(services);
    }
    ~RecordingHost() { SetHostServices({}); }

    std::vector<std::string> shown;
};

TEST(ForcedCrash, CarriesItsFourValuesAndResumes) {
    CrashRecorder crashes;
    ForcedCrash(0x0501B001, "Heap", 17, "Forced crash! \"x\"");
    const ForcedCrashRecord& record = crashes.Last();
    EXPECT_EQ(record.code, 0xE0BADBADu);
    EXPECT_EQ(record.flags, 0u);
    EXPECT_EQ(record.SiteCode(), 0x0501B001u);
    EXPECT_STREQ(record.File(), "Heap");
    EXPECT_EQ(record.Line(), 17);
    EXPECT_STREQ(record.Message(), "Forced crash! \"x\"");
}

TEST(ForcedCrashDeathTest, EndsTheProcessByDefault) {
    const char* const kReport = "0x0501B001 in Heap, line 17: Forced crash! \"x\"";
    const auto crash = [] { ForcedCrash(0x0501B001, "Heap", 17, "Forced crash! \"x\""); };
    EXPECT_EXIT(crash(), testing::KilledBySignal(SIGABRT), kReport);
    EXPECT_EXIT(
        {
            std::signal(SIGABRT, SIG_IGN);
            crash();
        },
        testing::KilledBySignal(SIGABRT), kReport);
    EXPECT_EXIT(
        {
            // A crash inside the handler must not call the handler again.
            SetForcedCrashHandler([](const ForcedCrashRecord&, void*) { CoreFree(nullptr); }, nullptr);
            crash();
        },
        testing::KilledBySignal(SIGABRT), "Attempting to free a NULL ptr");
}

TEST(ForcedCrash, AHandlerMayThrowAgainAndAgain) {
    SetForcedCrashHandler([](const ForcedCrashRecord& record, void*) { throw record; }, nullptr);
    for (int i = 0; i < 2; ++i)
        EXPECT_THROW(ForcedCrash(0, "Templ", 1, "x"), ForcedCrashRecord);
    SetForcedCrashHandler(nullptr, nullptr);
}

struct MessageCase {
    int code;
    const char* text;
    unsigned int size;
    const char* plain;     // from the form for changeable objects
    const char* constant;  // from the form for constant ones
    bool known;
};

TEST(CoreException, Messages) {
    const MessageCase kCases[] = {
        {1, "T", 256, "T: Attempting to write an unknown field type",
         "TAttempting to write an unknown field type", true},
        {2, "T", 256, "T: Internal error - Invalid atomic action type",
         "TInternal error - Invalid atomic action type", true},
        {3, "", 256, ": Internal error - unexpected NULL pointer", "Internal error - unexpected NULL pointer",
         true},
        {4, "%s", 256, "%s: Internal error - Attempting to add an invalid object type",
         "%sInternal error - Attempting to add an invalid object type", true},
        {5, "T", 256, "T: Internal error - Object not found", "TInternal error - Object not found", true},
        {6, "Lib", 256, "Lib: Out of space.  Library is too large", "LibOut of space.  Library is too large",
         true},
        {7, "T", 256, "T: Internal error - unrecognized object class",
         "TInternal error - unrecognized object class", true},
        {8, "T", 256, "T: Internal error - duplicate reference designators",
         "TInternal error - duplicate reference designators", true},
        {6, "Lib", 10, "Lib: Out ", "LibOut of", true},
        {6, "Lib", 1, "", "", true},
        {6, "Lib", 0, "~", "~", true},
        {0, "Lib", 256, "", "", false},
        {9, "Lib", 256, "", "", false},
        {-1, "Lib", 0, "~", "~", false},
    };
    for (const MessageCase& row : kCases) {
        SCOPED_TRACE(row.code);
        CString text(row.text);
        CoreException error(text, row.code);
        char buffer[256] = "~";
        unsigned int help = 5;
        EXPECT_EQ(error.GetErrorMessage(buffer, row.size, &help), row.known);
        EXPECT_STREQ(buffer, row.plain);
        EXPECT_EQ(help, row.known ? 5u : 0u);
        std::strcpy(buffer, "~");
        EXPECT_EQ(std::as_const(error).GetErrorMessage(buffer, row.size), row.known);
        EXPECT_STREQ(buffer, row.constant);
        EXPECT_EQ(error.GetErrorMessage(nullptr, 10), row.known);
    }
}

TEST(CoreException, CopiesKeepTheCodeAlone) {
    CString x("X"), y("Y");
    CoreException original(x, 3), assigned(y, 1);
    CoreException copy(original);
    assigned = original;
    char buffer[64];
    copy.GetErrorMessage(buffer, sizeof buffer);
    EXPECT_STREQ(buffer, ": Internal error - unexpected NULL pointer");
    assigned.GetErrorMessage(buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "Y: Internal error - unexpected NULL pointer");
}

TEST(CoreException, ReportsThroughTheMessageBox) {
    RecordingHost host;
    CString text(std::string(300, 'x').c_str());
    CoreException known(text, 5), unknown(text, 9);
    CException& caught = known;
    EXPECT_EQ(caught.ReportError(MB_YESNO, 7), 42);
    EXPECT_EQ(unknown.ReportError(MB_OK, 7), 42);
    unknown.ReportError(MB_OK, 8);
    EXPECT_EQ(host.shown, (std::vector<std::string>{std::string(255, 'x') + "|4", "resource|0", "|0"}));
    EXPECT_EQ(known.SizeOf(), sizeof(CoreException));
    EXPECT_STREQ(known.GetClassName(), "CoreException");
    EXPECT_STREQ(known.GetBaseClassName(), "CException");
    EXPECT_TRUE(known.IsKindOf(&CException::kRuntimeClass) && known.IsKindOf(&CObject::kRuntimeClass));
    auto* onHeap = new CoreException(text, 1);
    EXPECT_TRUE(IsValidHeapPtr(onHeap));
    delete onHeap;
}

TEST(Failure, QuietFunctionsShowNothing) {
    RecordingHost host;
    CrashRecorder crashes;
    ReportLastError("context");
    ReportLastError(nullptr);
    SoftError();
    EXPECT_TRUE(host.shown.empty());
    EXPECT_TRUE(crashes.Messages().empty());
}

TEST(Failure, TheLibraryIsLinkedOnce) {
    const auto links = [] {
        int count = 0;
        for (auto* link = CDynLinkLibrary::GetFirst(); link; link = link->GetNext())
            ++count;
        return count;
    };
    EXPECT_EQ(links(), 0);
    EXPECT_TRUE(InitCoreLibrary());
    EXPECT_TRUE(InitCoreLibrary());
    EXPECT_EQ(links(), 1);
    CExtensionModule module;
    EXPECT_TRUE(AfxInitExtensionModule(module));
    EXPECT_FALSE(AfxInitExtensionModule(module));
    new CDynLinkLibrary(module);
    CDynLinkLibrary* second = new CDynLinkLibrary(module);
    EXPECT_EQ(CDynLinkLibrary::GetFirst(), second);
    AfxTermExtensionModule(module);
    EXPECT_EQ(links(), 1);
}

TEST(HostServices, DefaultsSuitAConsole) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(AfxMessageBox("100%s"), IDOK);
    EXPECT_EQ(AfxMessageBox(static_cast<const char*>(nullptr)), IDOK);
    EXPECT_EQ(AfxMessageBox(7u), IDOK);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "100%s\n\n\n");
}

TEST(HostServices, AnOlderHostKeepsWorking) {
    HostServices services;
    int context = 0;
    services.context = &context;
    services.showMessage = [](void*, const char*, unsigned int) { return 5; };
    services.executablePath = [](void*, CoreString&) { return true; };
    services.size = offsetof(HostServices, loadString);
    SetHostServices(services);
    const HostServices kept = GetHostServices();
    SetHostServices({});
    EXPECT_EQ(kept.context, &context);
    EXPECT_NE(kept.showMessage, nullptr);
    EXPECT_EQ(kept.executablePath, nullptr);
    EXPECT_EQ(kept.size, sizeof(HostServices));
    EXPECT_EQ(GetHostServices().showMessage, nullptr);
}

TEST(Framework, CStringKeepsBytes) {
    CString text("ab\0c", 4);
    text += "d";
    text += text;
    EXPECT_EQ(text.GetLength(), 10);
    EXPECT_EQ(text.GetAt(8), 'c');
    EXPECT_EQ(text.GetAt(10), '\0');
    text.SetAt(2, 'x');
    text.SetAt(-1, 'x');
    EXPECT_TRUE(text == CString("abxcdab\0cd", 10));
    text = static_cast<const char*>(text) + 1;
    EXPECT_TRUE(text == "bxcdab");
    EXPECT_TRUE(CString(static_cast<const char*>(nullptr)).IsEmpty() && CString("x", -1) == nullptr);
}

}  // namespace
}  // namespace brenta::test
