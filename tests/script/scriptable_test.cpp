#include "brenta/scriptable.h"

#include <atomic>
#include <cstdlib>
#include <deque>
#include <memory>

#include "brenta/framework.h"
#include "script/created_objects.h"
#include "script/operator_rows.h"
#include "test_support.h"

namespace brenta::test {
namespace {

using namespace rows;

/// Counts its living objects; owns another one perhaps, as elements own their children.
class Probe : public CCoreScriptable {
 public:
    explicit Probe(Probe* child = nullptr) : m_pChild(child) { ++alive; }
    ~Probe() override { --alive; }
    std::size_t SizeOf() const override { return sizeof(*this); }
    const char* GetClassName() const override { return "Probe"; }
    const char* GetBaseClassName() const override { return "CCoreScriptable"; }

    static inline std::atomic<int> alive{0};

 private:
    std::unique_ptr<Probe> m_pChild;
};

TEST(Scriptable, TheLatestRegistrationOfANameWins) {
    EXPECT_EQ(CreateScriptableObject(StrId("RegisteredTwice")), nullptr);
    RegisterScriptableClass("RegisteredTwice", []() -> CCoreScriptable* { return nullptr; });
    EXPECT_TRUE(IsScriptableClass(StrId("RegisteredTwice")));
    EXPECT_EQ(CreateScriptableObject(StrId("RegisteredTwice")), nullptr);
    RegisterScriptableClass("RegisteredTwice", []() -> CCoreScriptable* { return new Probe; });
    const std::unique_ptr<CCoreScriptable> object(CreateScriptableObject(StrId("RegisteredTwice")));
    ASSERT_NE(object, nullptr);
    CCoreScriptable::IOB request;
    EXPECT_FALSE(object->ScriptAction(request));
    EXPECT_FALSE(IsScriptableClass(StrId("RegisteredTwic")));
}

struct Prompts : ::testing::Test {
    /// "1 " or "0 " and the result.
    std::string Ask(int action, const char* name, std::initializer_list<Var> values) {
        TOrderedList<Var> arguments(List(values).GetList());
        Var result;
        CCoreScriptable::IOB request;
        request.action = action;
        request.name = StrId(name);
        request.arguments = &arguments;
        request.result = &result;
        const bool succeeded = library->ScriptAction(request);
        return (succeeded ? "1 " : "0 ") + Describe(result);
    }

    std::unique_ptr<CCoreScriptable> library{CreateScriptableObject(StrId("CStdScriptLib"))};
    RecordingHost host;
};

TEST_F(Prompts, OfTheStandardLibrary) {
    using Action = CCoreScriptable::Action;
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(Ask(Action::kCall, "Prompt", {Text("a%s")}), "1 null");
    EXPECT_EQ(Ask(Action::kCall, "Prompt", {Int(5)}), "1 null");
    EXPECT_EQ(Ask(Action::kCall, "Prompt", {}), "1 null");
    host.answer = IDYES;
    EXPECT_EQ(Ask(Action::kCall, "PromptYesNo", {Text("b"), Text("c")}), "1 bool true");
    host.answer = IDNO;
    EXPECT_EQ(Ask(Action::kCall, "PromptYesNo", {}), "1 bool false");
    EXPECT_EQ(host.shown, (Texts{"a%s|0", "|0", "|0", "b|4", "|4"}));
    EXPECT_EQ(Ask(Action::kCall, "prompt", {Text("a")}), "0 null");
    for (const int action : {int{Action::kGet}, int{Action::kSet}, 5})
        EXPECT_EQ(Ask(action, "Prompt", {Int(1)}), "0 null");
    EXPECT_EQ(Ask(Action::kDescribe, "", {}), "1 list {{}\n, {{0}\n, {0}\n}\n}\n");
}

TEST(CreatedObjects, StayInUntilDeletedOrAdopted) {
    const std::size_t before = CreatedCount();
    CCoreScriptable* deleted = TrackCreated(new Probe);
    const std::unique_ptr<CCoreScriptable> adopted(TrackCreated(new Probe));
    EXPECT_EQ(TrackCreated(nullptr), nullptr);
    EXPECT_EQ(TrackCreated(deleted), deleted);
    EXPECT_EQ(CreatedCount(), before + 2);
    std::deque<Probe>(20000).clear();  // untracked
    delete deleted;
    AdoptScriptable(adopted.get());
    AdoptScriptable(nullptr);
    EXPECT_EQ(CreatedCount(), before);
    EXPECT_EQ(Probe::alive, 1);
}

/// What unloading the library does, for a process of its own: other engines' objects go too.
bool DeletesTheRest() {
    Probe* child = new Probe;
    TrackCreated(child);
    AdoptScriptable(child);
    TrackCreated(new Probe(child));
    TrackCreated(new Probe);
    const std::unique_ptr<Probe> untracked(new Probe);
    DisposeOfCreated([](CCoreScriptable* object) { delete object; });
    return CreatedCount() == 0 && Probe::alive == 1;
}

TEST(CreatedObjectsDeathTest, TheRestIsDeletedAtTheEnd) {
    EXPECT_EXIT(std::_Exit(DeletesTheRest() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

TEST(CreatedObjects, ComeAndGoOnAnyThread) {
    const std::size_t before = CreatedCount();
    std::vector<std::unique_ptr<CCoreScriptable>> kept[2];
    OnThreads(2, [&](int thread) {
        for (int i = 0; i < 2000; ++i) {
            kept[thread].emplace_back(TrackCreated(new Probe));
            const Probe untracked;
            if (i % 3 != 0) kept[thread].pop_back();
        }
    });
    EXPECT_EQ(CreatedCount(), before + 2 * 667);
    OnThreads(2, [&](int thread) { kept[1 - thread].clear(); });
    EXPECT_EQ(CreatedCount(), before);
    EXPECT_EQ(Probe::alive, 0);
}

}  // namespace
}  // namespace brenta::test
