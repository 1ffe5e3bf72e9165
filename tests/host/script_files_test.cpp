// Runs every script under tests/scripts through the console host and compares with the expectations in its
// comments:
//
//     print(x);        // expect: 5            the next line of standard output
//     y = 1;           // error: text          the next message, "<file>(<this line>): text"
//     // message: text                         the next message, exactly this text; {folder}: the script's
//     // warning: text                         as for an error, "<file>(<this line>): warning: text"
//     // command: check                        the host's command and options (default: run)
//     // arguments: Main a b                   words behind the file name
//
// Scripts run in a folder of their own, where they may leave files. The exit status must be 1 if errors or
// messages are expected, else 0. Code blocks of the documents marked as scripts are run in the same way, with
// a block of output behind them as further expectations.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "host_process.h"

namespace brenta::test {
namespace {

struct Expectations {
    std::vector<std::string> output;
    std::vector<std::string> errors;
    std::vector<std::string> command = {"run"};
    std::vector<std::string> arguments;
    bool fails = false;
};

std::vector<std::string> SplitWords(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

void ReadLine(const std::string& file, std::size_t number, const std::string& line, Expectations& expected) {
    const auto after = [&line](const std::string& key) -> std::string {
        const std::size_t at = line.find("// " + key + ":");
        if (at == std::string::npos) return "\n";  // absent: no line of a file holds a line end
        const std::string text = line.substr(at + key.size() + 4);
        return text.starts_with(' ') ? text.substr(1) : text;
    };
    const std::string position = file + "(" + std::to_string(number) + "): ";
    if (const std::string text = after("expect"); text != "\n") expected.output.push_back(text);
    if (const std::string text = after("error"); text != "\n") {
        expected.errors.push_back(position + text);
        expected.fails = true;
    }
    if (std::string text = after("message"); text != "\n") {
        const std::string folder = fs::path(file).parent_path().generic_string();
        for (std::size_t at; (at = text.find("{folder}")) != std::string::npos;)
            text.replace(at, 8, folder);
        expected.errors.push_back(text);
        expected.fails = true;
    }
    if (const std::string text = after("warning"); text != "\n")
        expected.errors.push_back(position + "warning: " + text);
    if (const std::string text = after("command"); text != "\n") expected.command = SplitWords(text);
    if (const std::string text = after("arguments"); text != "\n") expected.arguments = SplitWords(text);
}

void CheckScript(const std::string& file) {
    Expectations expected;
    const std::vector<std::string> lines = SplitLines(ReadText(file));
    for (std::size_t i = 0; i < lines.size(); ++i)
        ReadLine(file, i + 1, lines[i], expected);
    std::vector<std::string> words = expected.command;
    words.push_back(file);
    words.insert(words.end(), expected.arguments.begin(), expected.arguments.end());
    const HostResult result = RunHost(words);
    std::vector<std::string> output = result.output;
    if (expected.command.front() == "check" && !expected.fails && !output.empty())
        output.pop_back();  // the summary
    EXPECT_EQ(output, expected.output);
    EXPECT_EQ(result.errors, expected.errors);
    EXPECT_EQ(result.status, expected.fails ? 1 : 0);
}

class ScriptFile : public testing::Test {
 public:
    explicit ScriptFile(std::string file) : m_file(std::move(file)) {}
    void TestBody() override { CheckScript(m_file); }

 private:
    std::string m_file;
};

void RegisterScript(const char* suite, const std::string& name, const std::string& file) {
    testing::RegisterTest(suite, name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                          [file]() -> testing::Test* { return new ScriptFile(file); });
}

void RegisterScriptFolder() {
    const fs::path folder = BRENTA_SCRIPT_FOLDER;
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const bool isPart = entry.path().stem().string().starts_with("_");  // included by other scripts
        if (entry.path().extension() == ".scr" && !isPart) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files)
        RegisterScript("Scripts", fs::relative(file, folder).generic_string(), file.generic_string());
}

/// Writes each block between "```brenta" and "```" of a document to a file of its own, and what a "```output"
/// directly behind it says as expectations at its end.
void RegisterDocument(const fs::path& document) {
    std::istringstream lines(ReadText(document.string()));
    std::ofstream block;
    const char* prefix = nullptr;  // within a block: what its lines begin with in the file
    int count = 0;
    for (std::string line; std::getline(lines, line);) {
        if (prefix != nullptr) {
            if (line == "```")
                prefix = nullptr;
            else
                block << prefix << line << std::endl;
        } else if (line == "```brenta") {
            const std::string name = document.stem().string() + "_" + std::to_string(++count) + ".scr";
            block = std::ofstream(ScratchFolder() / name, std::ios::binary);
            RegisterScript("Documents", name, (ScratchFolder() / name).generic_string());
            prefix = "";
        } else if (line == "```output") {
            prefix = "// expect: ";
        } else if (!line.empty()) {
            block.close();
        }
    }
}

}  // namespace
}  // namespace brenta::test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    brenta::test::RegisterScriptFolder();
    for (const auto& entry : std::filesystem::directory_iterator(BRENTA_DOCS_FOLDER)) {
        if (entry.path().extension() == ".md") brenta::test::RegisterDocument(entry.path());
    }
    brenta::test::RegisterDocument(BRENTA_DOCS_FOLDER "/../README.md");
    return RUN_ALL_TESTS();
}
