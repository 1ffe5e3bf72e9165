// Every program has the same story in both tiers, and in registers with all names in cells.
#include <cstdlib>

#include "script/engine_state.h"
#include "script/random_program.h"
#include "script/run_script.h"

namespace brenta::test {

namespace {

/// All that can be seen of a program.
std::string StoryOf(const std::string& module, bool asTree, bool withLocalsInCells = false) {
    ScriptRun run;
    run.engine.State().useRegisterTier = !asTree;
    run.engine.State().useRegisterLocals = !withLocalsInCells;
    std::string story = run.Load(module);
    story += "\nMain: " + run.RunScript("Main", {}) + '\n';
    for (const char* global : {"g0", "g1", "gt", "gl", "1 + 1"})
        story += std::string(global) + ' ' + run.Execute(global) + '\n';
    return story + run.probe.requests + "\nscopes " + std::to_string(run.engine.GetScopeDepth());
}

/// A number from the environment, for long runs: BRENTA_PROGRAMS, the first seed BRENTA_SEED.
std::uint32_t Setting(const char* name, std::uint32_t otherwise) {
    const char* text = std::getenv(name);
    return text != nullptr ? static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10)) : otherwise;
}

}  // namespace

TEST(Tiers, AgreeOnRandomPrograms) {
    const std::uint32_t first = Setting("BRENTA_SEED", 1);
    // Fewer with the thread sanitizer, which makes an engine a matter of milliseconds.
    const std::uint32_t count = Setting("BRENTA_PROGRAMS", kStacksMayBeDeep ? 3000 : 300);
    std::uint32_t completed = 0;
    for (std::uint32_t seed = first; seed < first + count; ++seed) {
        const std::string module = RandomProgram(seed).Write();
        const std::string story = StoryOf(module, true);
        ASSERT_EQ(StoryOf(module, false), story) << "seed " << seed << "\n" << module;
        ASSERT_EQ(StoryOf(module, false, true), story) << "cells, seed " << seed << "\n" << module;
        completed +=
            story.find("Main: ") != std::string::npos && story.find("failed\ng0") == std::string::npos;
    }
    // Programs that all end early would compare nothing.
    EXPECT_GT(completed, count / 2);
}

}  // namespace brenta::test
