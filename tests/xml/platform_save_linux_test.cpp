// Saving where files have access bits and names lead to other names.
#include <sys/stat.h>

#include <filesystem>

#include "brenta/xml.h"
#include "os/os.h"
#include "test_support.h"

namespace brenta::test {
namespace {

TEST(PlatformSave, KeepsLinksRightsAndDevices) {
    const Scratch scratch;
    const std::string path = scratch / "a.xml", link = scratch / "link.xml";
    ASSERT_TRUE(os::WriteWholeFile(path.c_str(), "old"));
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    std::filesystem::create_symlink("a.xml", link);
    CCoreXmlDom document;
    document.SaveDocument("/dev/null", nullptr, nullptr);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));

    document.SaveDocument(link.c_str(), nullptr, nullptr);
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(ReadFile(path).substr(0, 5), "<?xml");
    struct stat info;
    ASSERT_EQ(stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
}

}  // namespace
}  // namespace brenta::test
