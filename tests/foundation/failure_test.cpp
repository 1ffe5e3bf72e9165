// Forced crashes, CoreException, the host's services and the modules.
#include "brenta/failure.h"

#include "brenta/host.h"
#include "test_support.h"

namespace brenta::test {
namespace {

void Crash() {
    ForcedCrash(0x0501B001, "Heap", 17, "Forced crash! \"x\"");
}

TEST(ForcedCrash, CarriesItsFourValuesAndResumes) {
    CrashRecorder crashes;
    Crash();
    const ForcedCrashRecord& record = crashes.Last();
    EXPECT_TRUE(record.code == 0xE0BADBADu && record.flags == 0 && record.SiteCode() == 0x0501B001u);
    EXPECT_TRUE(record.File() == std::string("Heap") && record.Line() == 17);
    EXPECT_EQ(crashes.Messages(), Texts{"Forced crash! \"x\""});
}

TEST(CoreException, Messages) {
    const std::pair<int, const char*> kRows[] = {
        {1, "Attempting to write an unknown field type"},
        {2, "Internal error - Invalid atomic action type"},
        {3, "Internal error - unexpected NULL pointer"},
        {4, "Internal error - Attempting to add an invalid object type"},
        {5, "Internal error - Object not found"},
        {6, "Out of space.  Library is too large"},
        {7, "Internal error - unrecognized object class"},
        {8, "Internal error - duplicate reference designators"},
        {0, nullptr},  // none built in
        {9, nullptr},
        {-1, nullptr},
    };
    for (const auto& [code, message] : kRows) {
        for (const unsigned int size : {0u, 1u, 10u, 256u}) {
            CString text("L%s");
            CoreException error(text, code);
            const bool known = message != nullptr;
            const auto expected = [&](const std::string& start) {
                return size == 0 ? "~" : known ? (start + message).substr(0, size - 1) : "";
            };
            char changeable[256] = "~", constant[256] = "~";
            unsigned int help = 5;
            EXPECT_EQ(error.GetErrorMessage(changeable, size, &help), known);
            EXPECT_EQ(std::as_const(error).GetErrorMessage(constant, size), known);
            EXPECT_EQ(error.GetErrorMessage(nullptr, size), known);
            EXPECT_EQ(changeable, expected("L%s: "));
            EXPECT_EQ(constant, expected("L%s"));
            EXPECT_EQ(help, known ? 5u : 0u);
        }
    }
}

TEST(CoreException, CopiesKeepTheCodeAlone) {
    CString x("X"), y("Y");
    CoreException original(x, 3), assigned(y, 1);
    CoreException copy(original);
    assigned = original;
    char texts[2][64];
    EXPECT_TRUE(copy.GetErrorMessage(texts[0], 64) && assigned.GetErrorMessage(texts[1], 64));
    EXPECT_STREQ(texts[0], ": Internal error - unexpected NULL pointer");
    EXPECT_STREQ(texts[1], "Y: Internal error - unexpected NULL pointer");
}

TEST(CoreException, ReportsThroughTheMessageBox) {
    RecordingHost host;
    CString text(std::string(300, 'x').c_str());
    CoreException known(text, 5), unknown(text, 9);
    CException& caught = known;
    EXPECT_EQ(caught.ReportError(MB_YESNO, 7), 42);
    EXPECT_EQ(unknown.ReportError(MB_OK, 7), 42);
    unknown.ReportError(MB_OK, 8);
    EXPECT_EQ(host.shown, (Texts{std::string(255, 'x') + "|4", "resource|0", "|0"}));
    EXPECT_TRUE(known.IsKindOf(&CException::kRuntimeClass) && known.IsKindOf(&CObject::kRuntimeClass));
    auto* onHeap = new CoreException(text, 1);
    EXPECT_TRUE(IsValidHeapPtr(onHeap));
    delete onHeap;
}

int CountLinks() {
    int count = 0;
    for (auto* link = CDynLinkLibrary::GetFirst(); link; link = link->GetNext())
        ++count;
    return count;
}

TEST(Failure, TheLibraryIsLinkedOnce) {
    EXPECT_TRUE(InitCoreLibrary() && InitCoreLibrary());
    EXPECT_EQ(CountLinks(), 1);
    CExtensionModule module;
    EXPECT_TRUE(AfxInitExtensionModule(module));
    EXPECT_FALSE(AfxInitExtensionModule(module));
    new CDynLinkLibrary(module);
    CDynLinkLibrary* second = new CDynLinkLibrary(module);
    EXPECT_EQ(CDynLinkLibrary::GetFirst(), second);
    AfxTermExtensionModule(module);
    EXPECT_EQ(CountLinks(), 1);
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
    EXPECT_TRUE(kept.context == &context && kept.showMessage && !kept.executablePath);
    EXPECT_EQ(kept.size, sizeof(HostServices));
    EXPECT_EQ(GetHostServices().showMessage, nullptr);
}

}  // namespace
}  // namespace brenta::test
