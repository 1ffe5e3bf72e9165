#include "brenta/message_stream.h"

#include "brenta/dump.h"
#include "script/script_test_support.h"

namespace brenta::test {
namespace {

TEST(MessageStream, FormatsAndPutsThePlaceInFront) {
    RecordingStream stream;
    stream.Print("%d %s", 5, "mm");
    EXPECT_EQ(stream.prints, "5 mm");
    stream.Error(ScriptPosition{StrId("a%sb.scr"), 12}, "Bad '%s'.", "%n%d");
    EXPECT_EQ(stream.TakeErrors(), "a%sb.scr(12): Bad '%n%d'.\n");
    EXPECT_EQ(stream.GetErrorPosition().line, 12);
    EXPECT_EQ(stream.GetErrorPosition().file, StrId("a%sb.scr"));
    stream.Error("RunScript:", "function '%s' not defined.", "f");
    EXPECT_EQ(stream.TakeErrors(), "RunScript:function 'f' not defined.\n");
    EXPECT_EQ(stream.GetErrorPosition().line, 0);
    stream.Error(ScriptPosition{}, "Lost.");
    stream.Error(static_cast<const char*>(nullptr), "None.");
    EXPECT_EQ(stream.TakeErrors(), "(0): Lost.\nNone.\n");
    CScriptMsgStream().Error("base", " drops everything");
}

TEST(MessageStream, CutsAt60000Characters) {
    const std::string exact = Repeat("x", 60000);
    RecordingStream stream;
    stream.Print("%s", exact.c_str());
    stream.Error("place:", "%sy", exact.c_str());
    EXPECT_EQ(stream.prints, exact);
    EXPECT_EQ(stream.TakeErrors(), "place:" + exact + "\n");
}

TEST(MessageStream, MayPrintWhileItPrints) {
    struct Echo : RecordingStream {
        void OutputPrintStream(const char* text) override {
            if (*text == 'x') Print("[%s]", text + 1);
            prints += text;
        }
    };
    Echo stream;
    stream.Print("%s", "xxab");
    EXPECT_EQ(stream.prints, "[xab]xxab");
}

TEST(MessageStream, MessageBoxesShowEveryText) {
    const RecordingHost host;
    CScriptMsgBoxStream stream;
    stream.Print("%s", "100%s");
    stream.Error("f(1): ", "bad");
    EXPECT_EQ(host.shown, (Texts{"100%s|0", "f(1): bad|0"}));
}

TEST(DumpFormatter, BuildsIndentedText) {
    DumpFormatter out;
    CoreString text;
    out += "a";
    out.Push();
    out += "b\n  c\n   d";
    out += StrId(" e");
    out += kNoName;
    out.Push();
    out.Pop();
    out.Pop();
    out += "end";
    out.GetString(text);
    EXPECT_STREQ(text, "a {\n    b\n      c\n    d e {\n        \n    }\n    \n}\nend");
    const DumpFormatter copy(out);
    out.Dump(false);
    out.Pop();
    out.Dump(true);
    out += "x";
    out.GetString(text);
    EXPECT_STREQ(text, "x");
    copy.GetString(text);
    EXPECT_EQ(text.Find("end"), text.GetLength() - 3);
}

}  // namespace
}  // namespace brenta::test
