// The seam on Windows: devices, files that replace others, and where its folders are.
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "os/os.h"
#include "os/programs.h"
#include "test_support.h"

namespace brenta::os {
namespace {

TEST(Os, ReadsNothingButRegularFiles) {
    std::string content = "old";
    for (const char* path : {"NUL", "CON", "a?b", "*"})
        EXPECT_EQ(ReadWholeFile(path, content), FileStatus::CannotOpen) << path;
    EXPECT_EQ(content, "old");
}

TEST(Os, ReplacesWhatOthersRead) {
    const test::Scratch scratch;
    const std::string path = scratch / "file";
    for (const char* text : {"first", "second"}) {
        FileReader reader;
        char bytes[8];
        EXPECT_EQ(reader.Open(path.c_str()), *text == 's');
        EXPECT_TRUE(ReplaceWholeFile(path.c_str(), text));
        EXPECT_EQ(test::ReadFile(path), text);
        if (*text == 's') {
            EXPECT_EQ(reader.Read(bytes, sizeof bytes), 5)
                << "the old one is still there for those who read it";
        }
    }
    Replacement replacement;
    ASSERT_TRUE(replacement.Create(path.c_str()) && WriteWholeFile(replacement.NewPath().c_str(), "third"));
    EXPECT_FALSE(replacement.CommitAsNew());
    EXPECT_TRUE(replacement.Commit());
    EXPECT_EQ(test::ReadFile(path), "third");
    // What others hold or the user has protected stays as it is.
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(ReplaceWholeFile(path.c_str(), "fourth") || Replacement().Create(path.c_str()));
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_HIDDEN);
    EXPECT_TRUE(WriteWholeFile(path.c_str(), "third"));
    EXPECT_NE(GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_HIDDEN, 0u);
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    const HANDLE held = CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_FALSE(ReplaceWholeFile(path.c_str(), "fourth"));
    CloseHandle(held);
    EXPECT_EQ(test::ReadFile(path), "third");
}

TEST(Os, FindsTheApplicationDataFolder) {
    const std::pair<const char*, const char*> rows[] = {{"C:\\own", "C:\\own"},
                                                        {"C:\\own\\", "C:\\own"},
                                                        {"C:\\", "C:\\"},
                                                        {"", "C:\\ProgramData"},
                                                        {nullptr, "C:\\ProgramData"}};
    for (const auto& [own, folder] : rows) {
        test::SetVariable("BRENTA_APPDATA", own);
        EXPECT_EQ(ApplicationDataFolder(), folder);
    }
}

TEST(Os, LeavesBatchFilesNothingToRun) {
    const test::Scratch scratch;
    const std::string batch = scratch / "a.bat", evil = "x\" & copy nul evil";
    WriteWholeFile(batch.c_str(), "exit 0\r\n");
    for (const char* program : {batch.c_str(), "a.CMD", "a.bat. "}) {
        const char* const words[] = {program, evil.c_str()};
        int error = 0;
        EXPECT_FALSE(StartProgram(words, 2, error)) << program;
        EXPECT_EQ(error, kErrorBadArgument) << program;
    }
    // A line is started as it stands, without quotes around a name with blanks, too.
    const char* const words[] = {"a", "b.bat", "x&y"};
    int error = 0;
    EXPECT_FALSE(StartProgram(words, 3, error, "a b.bat x&y"));
    EXPECT_TRUE(StartProgram(words, 1, error, "cmd /c exit 0")) << error;
}

}  // namespace
}  // namespace brenta::os
