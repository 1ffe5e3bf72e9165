// The script prompt with piped input.
#include <gtest/gtest.h>

#include <fstream>

#include "host_process.h"

namespace brenta::test {
namespace {

TEST(Prompt, TakesCommands) {
    std::ofstream(ScratchFolder() / "twice.scr")
        << "var Count = 2;\nfunction Twice(a)\n{\n    return a * Count;\n}\n";
    const std::tuple<const char*, Lines, Lines> rows[] = {
        {":load twice.scr\nTwice(4)\n", {"8"}, {}},
        {":load none\n:load\n:foo\n:units feet\n",
         {},
         {"brenta: 'none' does not exist", "brenta: :load needs a file",
          "brenta: there is no ':foo'; :help tells what there is",
          "brenta: :units needs in, mil, cm, mm or off"}},
        {":units mm\n1in\n\"a\"\n:units off\n1in\n", {"10000000  (25.4mm)", "a", "10000000"}, {}},
        {"var x = 5;\n:load twice.scr\nTwice(x)\n:reload\nTwice(4)\nx\n",
         {"10", "8"},
         {"cmd:(1): Symbol 'x' not defined."}},
        {":load twice.scr\n:load twice.scr\n",
         {},
         {"brenta: 'twice.scr' is loaded already; :reload loads everything anew"}},
        {"1\n:quit\n2\n", {"1"}, {}},
        {"quit\n", {}, {"cmd:(1): Symbol 'quit' not defined.", "brenta: :help and :quit begin with a colon"}},
        {"\"two\nlines\"\n'\"'\n'\\''\n1 // (\n", {"two", "lines", "34", "39", "1"}, {}},
        {"var s = {1, \"two\"};\nvar d as CCoreXmlDom;\n:load twice.scr\n:env\n",
         {"reflect(value)            function", "Env.StdLib                an object of CStdScriptLib",
          "s                         {1, two}", "d                         an object of CCoreXmlDom",
          "Count                     2", "Twice(a)                  function"},
         {}}};
    for (const auto& [input, output, errors] : rows) {
        const HostResult result = RunHost({"repl"}, input);
        EXPECT_EQ(result.status, 0) << input;
        EXPECT_EQ(result.output, output) << input;
        EXPECT_EQ(result.errors, errors) << input;
    }
    EXPECT_EQ(RunHost({"repl", "twice.scr", "none"}, "1\n").status, 1);
}

}  // namespace
}  // namespace brenta::test
