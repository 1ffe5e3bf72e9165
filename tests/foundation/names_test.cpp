#include "brenta/names.h"

#include <map>
#include <unordered_map>

#include "foundation/intern.h"
#include "foundation/name_index.h"
#include "test_support.h"

namespace brenta::test {
namespace {

TEST(Names, EqualTextsHaveOneIdentifierThroughEveryEntry) {
    for (unsigned int length = 1; length < 200; ++length) {
        // In blocks of just their size, so that a sanitizer sees every byte read beyond them.
        std::vector<char> counted(length);
        for (unsigned int i = 0; i < length; ++i)
            counted[i] = static_cast<char>(1 + (i * 7 + length) % 255);
        std::vector<char> terminated(counted);
        terminated.push_back('\0');
        terminated.shrink_to_fit();
        const char* const text = terminated.data();
        const STRID name = StrId(counted.data(), length);
        EXPECT_STREQ(StrPtr(name), text);
        EXPECT_TRUE(StrPresent(text) && StrId(text) == name && StrId(text, length + 100) == name) << length;
    }
    EXPECT_EQ(StrId("abcdef", 3), StrId("abc"));
    EXPECT_EQ(InternName({"abc\0never interned", 18}), StrId("abc"));
    for (STRID none :
         {StrId(nullptr), StrId(""), StrId(nullptr, 3), StrId("abc", 0), StrId("\0a", 2), InternName({})})
        EXPECT_EQ(none, kNoName);
    EXPECT_FALSE(StrPresent(nullptr) || StrPresent(""));
    EXPECT_STREQ(StrPtr(kNoName), "");
    EXPECT_STREQ(StrPtr(static_cast<STRID>(~std::uintptr_t{0})), "");
}

/// The names of a table, among them texts longer than its page, agree with a map's.
void CompareWithMap(int pageSize, int steps) {
    CStringTable table("growing", pageSize);
    std::unordered_map<std::string, STRID> known;
    std::mt19937 random(1);
    for (int step = 0; step < steps; ++step) {
        const std::string text = RandomText(random, "ab01\xE9", 19) + "ab01\xE9"[random() % 5];
        ASSERT_EQ(table.IsId(text.c_str()), known.contains(text)) << text;
        const STRID name = table.StrId(text.c_str());
        ASSERT_EQ(known.emplace(text, name).first->second, name) << text;
    }
    EXPECT_EQ(table.GetNameCount(), known.size());
    for (const auto& [text, name] : known)
        ASSERT_EQ(StrPtr(name), text);
}

TEST(Names, TableAgreesWithAMapWhileItGrows) {
    CompareWithMap(5000, 60000);
    CompareWithMap(30, 1200);          // each name has a page of its own
    CompareWithMap(200000000, 60000);  // nodes are farther apart
}

// A text that is longer than the index can note distances in a page: what follows it has a new page.
TEST(Names, AVeryLongTextHarmsNoOther) {
    CStringTable table("long", 5000);
    const std::string text(40000000, 'x');
    const STRID name = table.StrId(text.c_str());
    for (int i = 0; i < 100; ++i) {
        const std::string other = "after " + std::to_string(i);
        EXPECT_EQ(table.StrId(other.c_str()), table.StrId(other.c_str()));
    }
    EXPECT_TRUE(table.StrId(text.c_str()) == name && table.GetNameCount() == 101);
}

TEST(Names, PagesAreCarvedAndOpenedByTheRule) {
    // Page size, text lengths, pages in the end. A text of 7 bytes takes 24, one of 8 takes 32.
    const std::tuple<int, std::vector<unsigned int>, int> rows[] = {
        {100, {}, 0},
        {49, {7, 7}, 1},
        {48, {7, 7}, 2},
        {24, {7, 7}, 2},
        // Oversize pages have 100 bytes more; 96 of them fit, then 4 are left.
        {24, {8, 75}, 1},
        {24, {8, 75, 1}, 2},
        {-1, {7, 7, 7, 7, 7, 7}, 2},
        {1024000, {2000000, 7, 2000000}, 2}};
    for (const auto& [pageSize, lengths, pages] : rows) {
        CStringTable table(std::string(300, 'n').c_str(), pageSize);
        EXPECT_EQ(table.GetName(), std::string(259, 'n'));
        for (unsigned int length : lengths) {
            const std::string text(length, static_cast<char>('A' + table.GetNameCount()));
            EXPECT_EQ(StrPtr(table.StrId(text.c_str())), text);
        }
        EXPECT_EQ(table.GetPageCount(), pages) << pageSize << " " << lengths.size();
    }
}

TEST(Names, ExhaustionLeavesTheTableIntact) {
    static CStringTable table(nullptr, 0);
    static std::string report;
    const auto nameOf = [](int i) {
        return table.StrId((std::to_string(i) + std::string(200, '.')).c_str());
    };
    std::map<int, STRID> names;
    for (int i = 0; i < 1500; ++i)
        names[i] = nameOf(i);
    const auto handler = [](const ForcedCrashRecord& crash, void*) {
        report = std::to_string(crash.SiteCode()) + " " + crash.File() + " " + crash.Message();
        // Another thread can use the table meanwhile: its lock is free.
        std::thread([] { table.StrId("meanwhile"); }).join();
    };
    SetForcedCrashHandler(handler, nullptr);
    EXPECT_EQ(nameOf(1500), kNoName);
    SetForcedCrashHandler(nullptr, nullptr);
    EXPECT_EQ(report, std::to_string(0x0504C003) + " StringTable Forced crash! \"String space exhausted.\"");
    EXPECT_TRUE(table.IsId("meanwhile"));  // fits what the last page has left
    EXPECT_EQ(table.GetPageCount(), 1500);
    for (const auto& [i, name] : names)
        ASSERT_EQ(nameOf(i), name);
}

TEST(Names, KeysAreSumsThatNeverChange) {
    EXPECT_EQ(StringKey(nullptr) | StringKey("") | StringKey(nullptr, 4) | StringKey("abc", 0), 0);
    EXPECT_NE(StringKey("a\0c", 3), StringKey("ac", 2));
    EXPECT_EQ(StringKey("GND\x80\xFF"), 1055905290);
    EXPECT_EQ(StringKey("GND\x80\xFF", 5), 1091578446);
}

TEST(Names, ComparisonAndUpperCase) {
    EXPECT_EQ(StrIdICmp(StrId("net_A\xE9"), StrId("NET_a\xE9")), 0);
    EXPECT_LT(StrIdICmp(kNoName, StrId("_")), 0);
    EXPECT_LT(StrIdICmp(StrId("_"), StrId("A")), 0);
    EXPECT_TRUE(IsStrIdUpper(kNoName) && IsStrIdUpper(StrId("NET_12\xE9")));
    EXPECT_FALSE(IsStrIdUpper(StrId("a")) || IsStrIdUpper(StrId("+5Vz")));
}

}  // namespace
}  // namespace brenta::test
