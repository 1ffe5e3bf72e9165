#include <fstream>
#include <iterator>

#include "brenta/registry.h"
#include "brenta/settings.h"
#include "data_folder.h"
#include "platform/ini_text.h"

namespace brenta::test {
namespace {

using std::string_view;
using namespace std::string_view_literals;

TEST(IniText, Finds) {
    // File, section, key, value; "-" if there is none.
    const std::tuple<string_view, string_view, string_view, string_view> rows[] = {
        {"[S]\nk=v\n", "S", "k", "v"},
        {"[S]\r\nk=v\r\n", "s", "K", "v"},
        {"\xEF\xBB\xBF[S]\nk=v", "S", "k", "v"},
        {" [ S x ] tail\n\t k \t=\t v w \t\n", "S x", "k", "v w"},
        {"[S]\nk=1\nK=2\n[T]\n[s]\nk=3\nother=4", "S", "k", "1"},
        {"[S]\nk=1\n[T]\n[s]\nother=4", "S", "other", "-"},
        {"[S]\nk=\"v\"", "S", "k", "v"},
        {"[S]\nk=' v '", "S", "k", " v "},
        {"[S]\nk=\"\"a\"\"", "S", "k", "\"a\""},
        {"[S]\nk=\"", "S", "k", "\""},
        {"[S]\nk=\"a'", "S", "k", "\"a'"},
        {"[S]\nk=v1 ; tail", "S", "k", "v1 ; tail"},
        {"[S]\n#k=v", "S", "#k", "v"},
        {"[S]\n;k=v", "S", ";k", "-"},
        {"[S]\nk=a=b", "S", "k", "a=b"},
        {"[S]\nk=", "S", "k", ""},
        {"[S]\nk\n", "S", "k", "-"},
        {"[S\nk=v", "S", "k", "-"},
        {"[S\nk=v", "", "k", "v"},
        {"[a]b]\nk=v", "a]b", "k", "v"},
        {"k=v\n[S]\n", "", "k", "v"},
        {"[S]\nk=v", "T", "k", "-"},
        {"", "S", "k", "-"}};
    for (const auto& [file, section, key, expected] : rows) {
        string_view value = "-";
        const IniText text{std::string(file)};
        EXPECT_EQ(text.Find(section, key, value), expected != "-") << file;
        EXPECT_EQ(value, expected) << file;
        EXPECT_EQ(text.Content(), file);
    }
}

TEST(IniText, ChangesOneLine) {
    // File, section, key, value or "-" to remove; file.
    const std::tuple<string_view, string_view, string_view, string_view, string_view> rows[] = {
        {"", "S", "k", "v", "[S]\nk=v\n"},
        {"\xEF\xBB\xBF", "S", "k", "v", "\xEF\xBB\xBF[S]\nk=v\n"},
        {"[S]\n Key =  old\t\n;k=1\n", "s", "KEY", " new ", "[S]\n Key =  new\t\n;k=1\n"},
        {"[S]\r\nk=\r\n[T]\r\n", "S", "k", "v", "[S]\r\nk=v\r\n[T]\r\n"},
        {"[S]\r\na=1\r\n\r\n[T]\r\n", "S", "b", "2", "[S]\r\na=1\r\nb=2\r\n\r\n[T]\r\n"},
        {"[S]\na=\"1\"", "S", "b", "2", "[S]\na=\"1\"\nb=2\n"},
        {"[S]\na=\"1\"", "S", "a", "", "[S]\na="},
        {"junk\0 ]\n\n"sv, "S", "k", "v", "junk\0 ]\n\n[S]\nk=v\n"sv},
        {"[S]\nk=1\nx\nK=2\n[S]\nk=3\n", "S", "k", "-", "[S]\nx\n[S]\nk=3\n"},
        {"[S]\nk=1\nK=2\n[S]\nk=3\n", "S", "k", "4", "[S]\nk=4\nK=2\n[S]\nk=3\n"},
        {"[S]\n", "T", "k", "-", "[S]\n"}};
    for (const auto& [file, section, key, value, expected] : rows) {
        IniText text{std::string(file)};
        if (value == "-")
            text.Remove(section, key);
        else
            text.Set(section, key, value);
        EXPECT_EQ(text.Content(), expected);
    }
}

TEST(AppValues, ReadBackOrRefused) {
    DataFolder folder;
    CoreString text = "former";
    int number = 7;
    EXPECT_FALSE(GetAppValue("S", "k", text) || GetAppValue("S", "k", number));
    EXPECT_EQ(text, "");
    EXPECT_EQ(number, 0);
    EXPECT_TRUE(SetAppValue("S", "none", static_cast<const char*>(nullptr)));
    EXPECT_FALSE(std::filesystem::exists(folder / ""));

    const std::string longText(300, 'x');
    // Value; what is read as text, as number, and whether.
    const std::tuple<const char*, std::string, int, bool> rows[] = {
        {"text", "text", 0, true},
        {"0", "0", 0, true},
        {"-12x", "-12x", -12, true},
        {" padded ", "padded", 0, true},
        {"' q '", " q ", 0, true},
        {"", "", 0, false},
        {longText.c_str(), longText.substr(0, 259), 0, true}};
    for (const auto& [value, asText, asNumber, found] : rows) {
        EXPECT_TRUE(SetAppValue("S", "k", value));
        text = "s";  // may be argument and result at once
        EXPECT_EQ(GetAppValue(text, "K", text), found) << value;
        EXPECT_EQ(text, asText.c_str());
        EXPECT_EQ(GetAppValue("S", "k", number), found);
        EXPECT_EQ(number, asNumber);
    }
    EXPECT_TRUE(SetAppValue("S", "min", INT_MIN) && GetAppValue("S", "min", number));
    EXPECT_EQ(number, INT_MIN);
    const std::tuple<const char*, const char*, const char*> refused[] = {
        {"S", "k", "a\nb"}, {"S", "k", "a\rb"},  {"S\n", "k", "v"},  {"S", "k\n", "v"},
        {"S", "a=b", "v"},  {"", "k", "v"},      {"S", " ", "v"},    {"S", ";k", "v"},
        {"S", "[k]", "v"},  {nullptr, "k", "v"}, {"S", nullptr, "v"}};
    for (const auto& [section, key, value] : refused)
        EXPECT_FALSE(SetAppValue(section, key, value)) << value;
    TOrderedList<CoreString> names;
    EXPECT_TRUE(GetAppNames("S", names));
    EXPECT_EQ(Texts(names.begin(), names.end()), (Texts{"k", "min"}));
    EXPECT_TRUE(GetAppNames(nullptr, names));
    EXPECT_EQ(Texts(names.begin(), names.end()), Texts{"S"});
    EXPECT_TRUE(IsForUserAlone(folder / "tool") && IsForUserAlone(folder / "tool/tool.ini"));
    // A folder in the file's place is not touched, and without a place there are no settings.
    std::filesystem::remove(folder / "tool/tool.ini");
    std::filesystem::create_directory(folder / "tool/tool.ini");
    EXPECT_FALSE(SetAppValue("S", "k", "v"));
    folder.Forget();
    EXPECT_FALSE(SetAppValue("S", "k", "v") || GetAppValue("S", "k", text));
}

const ChildWork kReadsOnly("AppValues.ReadsOnly", [](const Texts& words) {
    const DataFolder folder(Scratch::Known{words[0]});
    int number = 0;
    return folder.MakeReadOnly("tool/tool.ini") && !SetAppValue("S", "k", 2) &&
           GetAppValue("S", "k", number) && number == 1;
});

TEST(AppValues, AFileThatMayNotBeWritten) {
    const DataFolder folder;
    ASSERT_TRUE(SetAppValue("S", "k", 1));
    const std::string before = ReadFile(folder / "tool/tool.ini");
    EXPECT_TRUE(kReadsOnly.Start({folder.ScratchPath()}).Succeeds());
    EXPECT_EQ(ReadFile(folder / "tool/tool.ini"), before);
}

TEST(AppValues, FollowTheFile) {
    const DataFolder folder;
    int number = 0;
    ASSERT_TRUE(SetAppValue("S", "k", 1000));
    for (int i = 1001; i < 1100; ++i) {
        std::ofstream(folder / "tool/tool.ini") << "[S]\nk=" << i;
        EXPECT_TRUE(GetAppValue("S", "k", number));
        EXPECT_EQ(number, i);
    }
}

constexpr int kWrites = 25;
const ChildWork kWritesOften("AppValues.WritesOften", [](const Texts& words) {
    const DataFolder folder(Scratch::Known{words[0]});
    bool good = true;
    for (int i = 0; i < kWrites; ++i)
        good &= SetAppValue("S", (words[1] + "," + std::to_string(i)).c_str(), i);
    return good;
});

TEST(AppValues, ProcessesWriteAtOnce) {
    const DataFolder folder;
    EXPECT_TRUE(kWritesOften.SucceedsInFour({folder.ScratchPath()}));
    TOrderedList<CoreString> names;
    EXPECT_TRUE(GetAppNames("S", names));
    EXPECT_EQ(names.GetCount(), 4 * kWrites);
}

TEST(RegValues, AreTheHostsOrInTheRegistry) {
    const DataFolder folder;
    CoreString text;
    int number = 7;
    EXPECT_FALSE(GetRegValue("S", "k", text) || GetRegValue("S", "k", number));
    EXPECT_EQ(number, 0);
    EXPECT_TRUE(SetRegValue("S", "k", 0) && GetRegValue("S", "k", number));
    EXPECT_TRUE(SetRegValue("S", "long", CoreString(std::string(3000, 'x').c_str())));
    EXPECT_TRUE(GetRegValue("S", "long", text));
    EXPECT_EQ(text.GetLength(), 3000);
    CCoreRegistry registry(HKEY_CURRENT_USER);
    EXPECT_TRUE(registry.SetKey("Software\\Orvane Works\\Brenta V4\\Settings\\S", false));
    EXPECT_EQ(registry.ReadString("k", ""), "0");
    EXPECT_TRUE(SetRegValue("S", "k", static_cast<const char*>(nullptr)));
    EXPECT_FALSE(registry.ValueExists("k") || SetRegValue("", "k", 1) || SetRegValue("S", nullptr, 1));

    HostServices services = GetHostServices();
    services.readProfile = [](void*, const char* section, const char* key, CoreString& value) {
        value = CoreString(section) + key;
        return *key != '!';
    };
    services.writeProfile = [](void*, const char*, const char*, const char* value) {
        return CoreString(value) == "12";
    };
    SetHostServices(services);
    EXPECT_TRUE(GetRegValue("4", "2x", number) && SetRegValue("S", "k", 12));
    EXPECT_EQ(number, 42);
    EXPECT_FALSE(GetRegValue("S", "!", text) || SetRegValue("S", "k", "13"));
}

}  // namespace
}  // namespace brenta::test
